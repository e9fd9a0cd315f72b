// LinuxStopRequestClient: reaches the other launcher by signals and through
// /proc. The process id may be any number: one that can be no other process
// is never signalled.
#pragma once

#include "StopRequestClient.h"

class LinuxStopRequestClient final : public StopRequestClient {
public:
    using StopRequestClient::StopRequestClient;

    /// A process that has ended but was not yet waited for by its parent still
    /// counts as running.
    [[nodiscard]] bool isProcessRunning() const override;
    [[nodiscard]] std::vector<std::wstring> getCommandLine() const override;
    /// SIGUSR2 for a fast stop, else SIGUSR1.
    Result sendStopSignal(bool fast) override;
    Result terminateProcess() override;
    [[nodiscard]] std::wstring getWorkingDirectory() const override;

private:
    /// "/proc/4711/status"
    [[nodiscard]] std::wstring procPath(const wchar_t* name) const;
};
