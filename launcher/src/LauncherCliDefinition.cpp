#include "LauncherCliDefinition.h"

#include <memory>
#include <span>

#include "CliHelpSwitch.h"
#include "CliSwitch.h"
#include "CliVersionSwitch.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"

namespace {

constexpr bool kCommon = true;
constexpr bool kOfThisMode = false;

struct SwitchRow {
    const wchar_t* name;
    const char* descriptionId;
};

enum class Occurrence { Once, Repeatable };

struct OptionRow {
    const wchar_t* name;
    const wchar_t* placeholder;
    const char* descriptionId;
    Occurrence occurrence = Occurrence::Once;
};

constexpr wchar_t kDirectory[] = L"/path/to/dir";
constexpr wchar_t kFile[] = L"/path/to/file";
constexpr wchar_t kFileMask[] = L"/path/with/wild*cards";

// The modes beside help, so that "help start" shows the usage of start.
constexpr SwitchRow kHelpSwitches[] = {
    {cli_mode::kStart, IDS_CLI_MODE_DESCR_START},
    {cli_mode::kStop, IDS_CLI_MODE_DESCR_STOP},
};

constexpr SwitchRow kStartSwitches[] = {
    {cli_switch::kDaemon, IDS_CLISWITCH_DAEMON},
    {cli_switch::kQuiet, IDS_CLISWITCH_QUIET},
};

constexpr SwitchRow kStopSwitches[] = {
    {cli_switch::kFast, IDS_CLISWITCH_FAST},
};

constexpr OptionRow kOutputOptions[] = {
    {cli_option::kCout, kFile, IDS_CLISWITCH_COUT},
    {cli_option::kCerr, kFile, IDS_CLISWITCH_CERR},
    {cli_option::kCstd, kFile, IDS_CLISWITCH_CSTD},
    {cli_option::kClog, kFile, IDS_CLISWITCH_CLOG},
};

constexpr OptionRow kStartOptions[] = {
    {cli_option::kInstance, kDirectory, IDS_CLISWITCH_INSTANCE},
    {cli_option::kProcName, L"word", IDS_CLISWITCH_PROCNAME},
    {cli_option::kWorkDir, kDirectory, IDS_CLISWITCH_WORKDIR},
    {cli_option::kPidFile, kFile, IDS_CLISWITCH_PIDFILE},
    {cli_option::kServiceName, L"string", IDS_CLISWITCH_SERVICENAME},
    {cli_option::kJavaHome, kDirectory, IDS_CLISWITCH_JHOME},
    {cli_option::kJvmDll, kFile, IDS_CLISWITCH_JVMDLL},
    {cli_option::kJvmOpt, L"word", IDS_CLISWITCH_CLISWITCH_JVMOPT, Occurrence::Repeatable},
    {cli_option::kClassPath, kFileMask, IDS_CLISWITCH_JCLASSPATH},
    {cli_option::kModulePath, kFileMask, IDS_CLISWITCH_JMODULEPATH},
    {cli_option::kInterfaceClass, L"package.class", IDS_CLISWITCH_JIFACECLASS},
    {cli_option::kInterfaceArgument, L"word", IDS_CLISWITCH_JIFACEARG, Occurrence::Repeatable},
};

constexpr OptionRow kStopOptions[] = {
    {cli_option::kPid, L"PID", IDS_CLISWITCH_PID},
    {cli_option::kPidFile, kFile, IDS_CLISWITCH_PIDFILE},
    {cli_option::kTimeout, L"msecs", IDS_CLISWITCH_TIMEOUT},
};

void addSwitches(CliMode& mode, std::span<const SwitchRow> rows)
{
    mode.addSwitch(std::make_unique<CliVersionSwitch>(
        cli_switch::kVersion, getMessage(IDS_CLI_SWITCH_DESCR_VERSION), kCommon));
    mode.addSwitch(std::make_unique<CliHelpSwitch>(cli_switch::kHelp,
                                                   getMessage(IDS_CLI_SWITCH_DESCR_HELP), kCommon));
    for (const SwitchRow& row : rows) {
        mode.addSwitch(
            std::make_unique<CliSwitch>(row.name, getMessage(row.descriptionId), kOfThisMode));
    }
}

void addOptions(CliMode& mode, std::span<const OptionRow> rows)
{
    for (const OptionRow& row : rows) {
        mode.addOption(row.name, row.placeholder, getMessage(row.descriptionId), kOfThisMode,
                       row.occurrence == Occurrence::Repeatable);
    }
}

}  // namespace

CliParser createLauncherCliDefinition()
{
    CliParser parser;
    CliMode& help = parser.setDefaultMode(cli_mode::kHelp, L" help [options] [arguments]",
                                          getMessage(IDS_CLI_MODE_DESCR_HELP));
    addSwitches(help, kHelpSwitches);

    CliMode& start = parser.addMode(cli_mode::kStart, L" start [options] [arguments]",
                                    getMessage(IDS_CLI_MODE_DESCR_START));
    addSwitches(start, kStartSwitches);
    addOptions(start, kStartOptions);
    addOptions(start, kOutputOptions);

    CliMode& stop = parser.addMode(cli_mode::kStop, L" stop [options] [arguments]",
                                   getMessage(IDS_CLI_MODE_DESCR_STOP));
    addSwitches(stop, kStopSwitches);
    addOptions(stop, kStopOptions);
    addOptions(stop, kOutputOptions);
    return parser;
}
