// IOsUtilsFactory: the launcher's only way to the operating system.
#pragma once

#include <memory>
#include <string>

class IConsole;
class IFileUtils;
class IProcessUtils;
class ISystemUtils;

class IOsUtilsFactory {
public:
    /// The utilities live as long as the factory, which owns them.
    [[nodiscard]] virtual IFileUtils& getFileUtils() = 0;
    [[nodiscard]] virtual IProcessUtils& getProcessUtils() = 0;
    [[nodiscard]] virtual ISystemUtils& getSystemUtils() = 0;
    /// "\n"
    [[nodiscard]] virtual const std::wstring& getLineEnd() const = 0;
    /// A console on the process's streams, each first redirected to its file
    /// unless the path is empty. `errorText` receives the message when a
    /// redirection fails; the console works all the same.
    [[nodiscard]] virtual std::unique_ptr<IConsole> createConsole(const std::wstring& coutPath,
                                                                  const std::wstring& cerrPath,
                                                                  std::wstring& errorText) = 0;
    virtual ~IOsUtilsFactory() = default;
};

/// The process's one factory, made on first use from any thread. Never
/// destroyed: threads of the JVM may use it while the process ends.
[[nodiscard]] IOsUtilsFactory& getOsUtilsFactory();
