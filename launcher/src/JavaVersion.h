// JavaVersion: feature versions out of Java's version texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// The feature version of a text like the "java.version" property: the number
/// up to the first '.' or '-', behind the "1." of the old numbering. "11.0.2"
/// is 11, "21-ea" 21, "1.8.0_292" 8. Nothing when that is no decimal number,
/// as for any text of one character (required).
[[nodiscard]] std::optional<std::int32_t> parseJavaVersion(std::wstring_view version);
