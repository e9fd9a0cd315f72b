#include "CliParser.h"

#include "LauncherCliDefinition.h"
#include "UnitTest.h"

namespace {

using CliParserTest = UnitTest;

CliParseResult parse(const std::wstring& words)
{
    return createLauncherCliDefinition().parse(split(L"/bin/launcher " + words));
}

/// The mode, the switches and the "option:value:value", each behind a blank.
std::wstring describe(const CliParseResult& result)
{
    std::wstring text = result.getModeName();
    for (const std::wstring name :
         {cli_switch::kHelp, cli_switch::kVersion, cli_mode::kStop, cli_switch::kQuiet}) {
        if (result.hasSwitch(name)) text += L" " + name;
    }
    for (const std::wstring name : {L"--jvmopt", L"--pid", L"--pidfile"}) {
        if (result.hasOption(name)) text += L" " + name;
        for (const std::wstring& value : result.getOptionValues(name)) text += L":" + value;
    }
    return text;
}

TEST_F(CliParserTest, ReadsModesSwitchesAndOptionsAndCollectsEveryError)
{
    const std::wstring help = cli_switch::kHelp, version = cli_switch::kVersion;
    const std::wstring twice = L" can not be duplicated, only one occurrence is allowed";
    const struct {
        std::wstring words, result, errors = L"";
    } cases[] = {
        {L"", L"help"},
        {L"help stop", L"help stop"},
        {L"-v -?", L"help " + help + L" " + version},
        {L"-h --help", L"help " + help, help + twice},
        {L"STOP", L"help", L"Unknown mode 'STOP'"},
        {L"stop --pid --fast", L"stop --pid:--fast"},
        {L"start --pidfile=x=y --jvmopt= --quiet", L"start --quiet --jvmopt: --pidfile:x=y"},
        {L"start --jvmopt=b --jvmopt a --jvmopt=b", L"start --jvmopt:b:a:b"},
        {L"stop --pid 1 --pid=2", L"stop --pid:1:2", L"--pid" + twice},
        {L"start -x --quiet --pi=1 --pidfile", L"start --quiet",
         L"Unexpected CLI arguments: -x\nUnexpected CLI arguments: --pi=1\n"
         L"Option --pidfile value is not set"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(describe(parse(c.words)), c.result);
        EXPECT_EQ(parse(c.words).getErrors(), c.errors);
    }
}

TEST_F(CliParserTest, UsageListsCommonParametersFirst)
{
    const CliParser parser = createLauncherCliDefinition();
    const CliMode& help = parser.getMode(L"help");
    const std::wstring usage = parser.renderUsage(help, parse(L"help stop"), L"tool");
    std::size_t place = 0;
    for (const wchar_t* text :
         {L"\n\nCommon parameters:\n\n    --help | -? | -h\n", L"\n\nMode:\n\n    stop\n",
          L"\n\nParameters:\n\n    --fast\n", L"\n    --cerr=/path/to/file\n"}) {
        place = usage.find(text, place);
        ASSERT_NE(place, usage.npos) << text;
    }
    // With a first switch that names no mode, help describes itself.
    EXPECT_EQ(parser.renderUsage(help, parse(L"help -h stop"), L"tool"),
              parser.renderUsage(help, parse(L""), L"tool"));
}

}  // namespace
