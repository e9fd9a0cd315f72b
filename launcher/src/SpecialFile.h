// SpecialFile: tells devices, pipes and sockets from files with a content.
#pragma once

#include <string>

/// True when `path` (UTF-8), links followed, is neither a regular file nor a
/// directory: "/dev/null", say, which the launcher may write to but must never
/// rename or delete. False when nothing is there or it cannot be told.
[[nodiscard]] bool isSpecialFile(const std::string& path);
