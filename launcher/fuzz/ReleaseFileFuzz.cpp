// The file "release" of a Java installation, and the lines of text files.
#include "FuzzSupport.h"
#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "ReleaseFileJavaChecker.h"
#include "TextConversion.h"
#include "TextLines.h"

namespace {

void checkLines(std::string_view content)
{
    std::wstring joined;
    TextLines lines(content);
    while (const auto line = lines.next()) {
        check(!line->empty(), "no line is empty");
        joined += *line;
    }
    std::wstring text = toWide(content);
    std::erase_if(text, [](wchar_t c) { return c == L'\r' || c == L'\n'; });
    check(joined == text, "the lines are the text without its line breaks");
}

void checkJava(const std::wstring& javaHome, std::string_view content)
{
    const ReleaseFileJavaChecker checker(getOsUtilsFactory().getFileUtils());
    if (!checker.check(javaHome, 17)) return;
    check(checker.check(javaHome, 8), "who is content with Java 8 takes what suits for 17");
    for (const char* const needed : {"OS_ARCH=", "64", "JAVA_VERSION="}) {
        check(content.find(needed) != std::string_view::npos, needed);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view content = asText(data, size);
    checkLines(content);
    checkJava(inputFile("release", content), content);
    return 0;
}
