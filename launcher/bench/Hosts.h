// Hosts: what can run the service of the benchmarks, as command lines.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

using Command = std::vector<std::string>;

/// One Java and the options that all hosts give it.
struct Setting {
    int javaVersion;
    std::string library;    ///< its libjvm.so
    std::string collector;  ///< the option that chooses it; empty for the default

    [[nodiscard]] std::string text() const;
    [[nodiscard]] std::string javaHome() const;
};

enum class Service {
    Returns,  ///< at once
    Waits,    ///< until it is stopped
    Map,      ///< returns at once, and takes the property map: the launcher only
};

/// Where the launcher keeps its log and its PID file.
enum class Files {
    NoLog,     ///< the PID file in memory
    InMemory,  ///< what the disk takes to create a file is not the launcher's
    OnDisk,
};

class Hosts final {
public:
    /// The programs, the jar with the services, and the directories for the
    /// launcher's files. `jsvc` may be empty.
    Hosts(std::string launcher, std::string floor, std::string jar, std::string jsvc,
          std::filesystem::path memory, std::filesystem::path disk);

    /// The launcher with these words.
    [[nodiscard]] Command launcherCommand(const Command& words) const;
    [[nodiscard]] Command launcher(const Setting& setting, Service service, Files files) const;
    [[nodiscard]] Command floor(const Setting& setting, Service service) const;
    [[nodiscard]] Command java(const Setting& setting) const;
    /// Never returns by itself.
    [[nodiscard]] Command jsvc(const Setting& setting) const;
    [[nodiscard]] bool hasJsvc() const { return !jsvc_.empty(); }

    /// Where the programs' standard error goes.
    [[nodiscard]] std::string errors() const { return disk_ / "errors"; }
    /// Removes the logs and the PID files of the runs before.
    void tidyUp() const;

private:
    std::string launcher_, floor_, jar_, jsvc_;
    std::filesystem::path memory_, disk_;
};
