// TextLines: how the text files that users and Java installations provide are
// split into lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The lines of `content` (UTF-8) without their ends and without empty ones.
/// LF, CR and CRLF all end a line. The text ends at the first NUL or invalid
/// sequence.
[[nodiscard]] std::vector<std::wstring> splitLines(std::string_view content);
