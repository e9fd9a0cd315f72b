#include "TextLines.h"

#include <algorithm>
#include <sstream>

#include "TextConversion.h"

std::vector<std::wstring> splitLines(std::string_view content)
{
    std::string bytes(content);
    std::replace(bytes.begin(), bytes.end(), '\r', '\n');
    std::wistringstream text(toWide(bytes));
    std::vector<std::wstring> lines;
    for (std::wstring line; std::getline(text, line);) {
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}
