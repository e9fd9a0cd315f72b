// The environment variable JVM_OPTS.
#include <cstdlib>
#include <vector>

#include "FuzzParameters.h"
#include "FuzzSupport.h"
#include "TextConversion.h"

namespace {

/// Sets JVM_OPTS. Not by setenv(3), which keeps every value for good.
void setJvmOpts(const std::string& value)
{
    static std::vector<char>& current = *new std::vector<char>;
    const std::string variable = "JVM_OPTS=" + value;
    std::vector<char> next(variable.c_str(), variable.c_str() + variable.size() + 1);
    putenv(next.data());
    current.swap(next);  // and the one before is freed
}

bool isSubsequence(std::wstring_view part, std::wstring_view whole)
{
    for (const wchar_t character : whole) {
        if (part.starts_with(character)) part.remove_prefix(1);
    }
    return part.empty();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const LauncherCliArgs& start =
        *LauncherCliArgs::create({L"launcher", L"start", L"--jvmdll=x", L"--jclasspath=x"})
             .release();
    const std::string value(asText(data, size));
    setJvmOpts(value);
    const LauncherParameters parameters = makeParameters(start);
    parameters.logState();
    check(!parameters.hasErrors(), "no value is an error");

    constexpr wchar_t kBlanks[] = L" \t\r\n";
    std::wstring joined;
    for (const std::wstring& option : parameters.getJvmOptions()) {
        check(option.find_first_not_of(kBlanks) == 0, "no option is empty or begins with a blank");
        check(option.find_last_not_of(kBlanks) == option.size() - 1, "nor ends with one");
        check(option.find(L"--jvmopt") == option.npos, "nor holds the marker");
        joined += option;
    }
    check(isSubsequence(joined, toWide(value)), "the options stand in the value, in their order");
    return 0;
}
