// The ini file of a service.
#include <memory>

#include "FuzzSupport.h"
#include "ServiceInstanceParameters.h"
#include "TextLines.h"

namespace {

constexpr std::wstring_view kHome = L"JAVA_HOME=";
constexpr std::wstring_view kOption = L"JAVA_OPT=";

std::wstring_view trimmed(std::wstring_view text)
{
    const auto isBlank = [](wchar_t c) { return c == L' ' || c == L'\t'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const InputFile file("service");
    file.write(asText(data, size));
    const auto parameters = ServiceInstanceParameters::create(L"service", file.directory() + L"/");
    parameters->logState();

    std::wstring home;
    std::vector<std::wstring> options;
    TextLines lines(asText(data, size));
    while (const auto line = lines.next()) {
        const std::wstring_view entry = trimmed(*line);
        if (entry.starts_with(kHome)) home = trimmed(entry.substr(kHome.size()));
        if (entry.starts_with(kOption)) options.emplace_back(entry.substr(kOption.size()));
    }
    check(parameters->getJavaHome() == home, "the last Java home counts");
    check(parameters->getJvmOptions() == options, "every option counts, in the order of the file");
    return 0;
}
