// LinuxStopRequestClient: reaches the other launcher by signals and through
// /proc. The process id may be any number: one that can be no other process
// is never signalled, nor is a process that gets the id later.
#pragma once

#include "ProcessHandle.h"
#include "StopRequestClient.h"

class LinuxStopRequestClient final : public StopRequestClient {
public:
    explicit LinuxStopRequestClient(std::int32_t pid) : StopRequestClient(pid), process_(pid) {}

    /// A process that has ended but was not yet waited for by its parent still
    /// counts as running.
    [[nodiscard]] bool isProcessRunning() const override;
    [[nodiscard]] std::vector<std::wstring> getCommandLine() const override;
    /// SIGUSR2 for a fast stop, else SIGUSR1.
    Result sendStopSignal(bool fast) override;
    Result terminateProcess() override;
    [[nodiscard]] std::wstring getWorkingDirectory() const override;

private:
    /// "/proc/4711/cmdline"
    [[nodiscard]] std::wstring procPath(const wchar_t* name) const;

    ProcessHandle process_;
};
