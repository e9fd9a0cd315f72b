// LocalTimeText: the time as the launcher writes it.
#pragma once

#include <string>

/// The current local time, "2024/03/07-09:05:01.042", milliseconds truncated.
[[nodiscard]] std::string localTimeText();
