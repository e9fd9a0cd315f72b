// LocalTimeText: the time as the launcher writes it.
#pragma once

#include <string>

/// Appends the current local time, "2024/03/07-09:05:01.042", milliseconds
/// truncated.
void appendLocalTime(std::string& text);
