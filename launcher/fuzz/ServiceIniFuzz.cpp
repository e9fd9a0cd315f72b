// The ini file of a service.
#include <memory>

#include "FuzzSupport.h"
#include "ServiceInstanceParameters.h"
#include "TextLines.h"
#include "TextTrim.h"

namespace {

constexpr std::wstring_view kHome = L"JAVA_HOME=";
constexpr std::wstring_view kOption = L"JAVA_OPT=";
constexpr std::wstring_view kBlanks = L" \t";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::wstring directory = inputFile("service", asText(data, size));
    const auto parameters = ServiceInstanceParameters::create(L"service", directory + L"/");
    parameters->logState();

    std::wstring home;
    std::vector<std::wstring> options;
    TextLines lines(asText(data, size));
    while (const auto line = lines.next()) {
        const std::wstring_view entry = trim(*line, kBlanks);
        if (entry.starts_with(kHome)) home = trim(entry.substr(kHome.size()), kBlanks);
        if (entry.starts_with(kOption)) options.emplace_back(entry.substr(kOption.size()));
    }
    check(parameters->getJavaHome() == home, "the last Java home counts");
    check(parameters->getJvmOptions() == options, "every option counts, in the order of the file");
    return 0;
}
