#include "LastErrorText.h"

#include <array>
#include <cerrno>
#include <cstring>

#include "TextConversion.h"

std::wstring lastErrorText()
{
    const int error = errno;
    std::array<char, 256> buffer{};
    // The GNU variant: safe from any thread, it may use a text of its own.
    const char* text = strerror_r(error, buffer.data(), buffer.size());
    std::wstring result = L"(" + toWString(static_cast<long>(error)) + L") " + toWide(text);
    errno = error;
    return result;
}
