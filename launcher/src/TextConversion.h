// TextConversion: wide text inside the launcher, bytes at its borders.
// Wide text is UTF-32 in wchar_t. None of these functions throws for bad
// input or logs; all are safe from any thread and leave errno as it was.
#pragma once

#include <string>
#include <string_view>

/// UTF-8 to wide text, up to the first NUL. An invalid or truncated sequence
/// cuts the text there. A null pointer gives the empty text.
[[nodiscard]] std::wstring toWide(std::string_view text);
[[nodiscard]] std::wstring toWide(const char* text);
/// Appends what toWide() gives of `text` to `wide`; false when that was cut.
bool appendWide(std::string_view text, std::wstring& wide);

/// Wide text to UTF-8, up to the first NUL. A code unit that iconv(3) rejects,
/// such as a surrogate, cuts the text there. A null pointer gives the empty text.
[[nodiscard]] std::string toUtf8(std::wstring_view text);
[[nodiscard]] std::string toUtf8(const wchar_t* text);
/// Appends what toUtf8() gives of `text` to `bytes`.
void appendUtf8(std::wstring_view text, std::string& bytes);

/// Wide text to the modified UTF-8 of the JNI (JNI documentation, "Modified
/// UTF-8 Strings"): U+0000 becomes C0 80, a supplementary character a pair of
/// three-byte surrogates. A code unit that is no code point becomes U+FFFD.
[[nodiscard]] std::string toModifiedUtf8(std::wstring_view text);

/// Modified UTF-8 of the JNI to wide text. A lone surrogate or a malformed
/// byte becomes U+FFFD, and the text behind it is kept. Null gives empty text.
[[nodiscard]] std::wstring fromModifiedUtf8(const char* text);

/// Decimal text of a number; "<format error>" if it cannot be formatted.
[[nodiscard]] std::wstring toWString(long value);
[[nodiscard]] std::wstring toWString(unsigned long value);
[[nodiscard]] std::wstring toWString(long long value);
[[nodiscard]] std::wstring toWString(unsigned long long value);
