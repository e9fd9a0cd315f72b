// ProcCommandLine: the arguments of a process out of the proc file system.
#pragma once

#include <string>
#include <vector>

/// Reads a file such as "/proc/self/cmdline": every zero byte ends an argument,
/// which may be of any length; bytes behind the last one are one more. Raises
/// LauncherOsException IDS_CANNOT_GET_COMMAND_LINE_ARGS (code 20).
[[nodiscard]] std::vector<std::wstring> readCommandLine(const std::wstring& path);
