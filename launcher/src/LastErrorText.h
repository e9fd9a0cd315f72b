// LastErrorText: the current errno for the "Error: %ls" slot of a message.
#pragma once

#include <string>

/// "(2) No such file or directory", in the language of the C library. Leaves
/// errno as it is. To be called right after the call that failed.
[[nodiscard]] std::wstring lastErrorText();
