// ProcessHistory: what the proc file system tells of where a process comes from.
#pragma once

#include <sys/types.h>

#include <string>

/// When the process started, in clock ticks since boot: field 22 of
/// /proc/<pid>/stat, see proc(5). Empty when that cannot be read.
[[nodiscard]] std::string readStartTicks(pid_t pid);

/// Whether the user may send signals to the process, since its real or its saved
/// user is he, see kill(2). False, too, when that cannot be read.
[[nodiscard]] bool belongsTo(uid_t user, pid_t pid);

/// True only when the process certainly did not write the file (UTF-8 path) as a
/// launcher of ours: it started more than ten seconds after the file's last
/// change, and the program that it runs has another file name than this one,
/// "(deleted)" aside. Both are needed: a clock that was set forward makes every
/// process look younger.
[[nodiscard]] bool cannotHaveWritten(pid_t pid, const std::string& path);
