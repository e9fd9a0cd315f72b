#include "ProcessName.h"

#include <sys/prctl.h>

#include <algorithm>

#include "TextConversion.h"

namespace {

constexpr std::size_t kMostBytes = 15;

bool continuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0) == 0x80;
}

}  // namespace

void nameProcess(const std::wstring& name)
{
    std::string text = toUtf8(name);
    if (text.empty()) return;
    std::size_t size = std::min(text.size(), kMostBytes);
    while (size < text.size() && continuesCharacter(text[size])) --size;
    text.resize(size);
    prctl(PR_SET_NAME, text.c_str());
}
