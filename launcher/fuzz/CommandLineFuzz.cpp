// The command line: a word on each line of the input.
#include <algorithm>
#include <memory>
#include <vector>

#include "FuzzSupport.h"
#include "LauncherCliArgs.h"
#include "LauncherCliDefinition.h"
#include "TextConversion.h"

namespace {

using Arguments = std::vector<std::wstring>;

constexpr wchar_t kProgram[] = L"/opt/launcher";

/// NUL, too, ends a word: no argument of a process holds one.
Arguments toArguments(std::string_view input)
{
    Arguments arguments{kProgram};
    while (!input.empty()) {
        const std::string_view word = input.substr(0, input.find_first_of({"\n\0", 2}));
        arguments.push_back(toWide(word));
        input.remove_prefix(std::min(input.size(), word.size() + 1));
    }
    return arguments;
}

/// Whether LauncherCliArgs neither prints for this command line nor creates
/// files, which could be any: fuzzers run with any user's rights, also root's.
bool isHarmless(const CliParseResult& result)
{
    if (result.getModeName() == cli_mode::kHelp) return false;
    for (const wchar_t* const option :
         {cli_option::kCout, cli_option::kCerr, cli_option::kCstd, cli_option::kClog}) {
        if (result.hasOption(option)) return false;
    }
    return true;
}

void checkArgs(const Arguments& arguments, const CliParseResult& result)
{
    const std::unique_ptr<LauncherCliArgs> args = LauncherCliArgs::create(arguments);
    LauncherCliArgs::logRawArgs(arguments);
    args->logState();
    const bool isError = args->getMode() == LauncherCliArgs::Mode::Error;
    check(isError != args->getErrors().empty(), "the mode is Error when there is one");
    if (result.hasErrors()) {
        check(args->getErrors() == result.getErrors(), "the errors of the parser are told");
    }
    check(args->getPid() == -1 || args->getPid() > 0, "a process id is positive");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const CliParser& parser = *new CliParser(createLauncherCliDefinition());
    const Arguments arguments = toArguments(asText(data, size));
    const CliParseResult result = parser.parse(arguments);
    // Only of this mode, since rendering is slow; "help stop" leads to others.
    const CliMode& mode = parser.getMode(result.getModeName());
    check(parser.renderUsage(mode, result, kProgram).find(kProgram) != std::wstring::npos,
          "the usage names the program");
    if (isHarmless(result)) checkArgs(arguments, result);
    return 0;
}
