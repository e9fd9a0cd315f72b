// LauncherCliDefinition: the launcher's command line: its modes, and the
// switches and options of each.
#pragma once

#include "CliParser.h"

namespace cli_mode {
inline constexpr wchar_t kHelp[] = L"help";
inline constexpr wchar_t kStart[] = L"start";
inline constexpr wchar_t kStop[] = L"stop";
}  // namespace cli_mode

namespace cli_switch {
inline constexpr wchar_t kHelp[] = L"--help | -? | -h";
inline constexpr wchar_t kVersion[] = L"--version | -v";
inline constexpr wchar_t kDaemon[] = L"--daemon";
inline constexpr wchar_t kQuiet[] = L"--quiet";
inline constexpr wchar_t kFast[] = L"--fast";
}  // namespace cli_switch

namespace cli_option {
inline constexpr wchar_t kInstance[] = L"--instance";
inline constexpr wchar_t kProcName[] = L"--procname";
inline constexpr wchar_t kWorkDir[] = L"--workdir";
inline constexpr wchar_t kPidFile[] = L"--pidfile";
inline constexpr wchar_t kCout[] = L"--cout";
inline constexpr wchar_t kCerr[] = L"--cerr";
inline constexpr wchar_t kCstd[] = L"--cstd";
inline constexpr wchar_t kClog[] = L"--clog";
inline constexpr wchar_t kServiceName[] = L"--servicename";
inline constexpr wchar_t kJavaHome[] = L"--javahome";
inline constexpr wchar_t kJvmDll[] = L"--jvmdll";
inline constexpr wchar_t kJvmOpt[] = L"--jvmopt";
inline constexpr wchar_t kClassPath[] = L"--jclasspath";
inline constexpr wchar_t kModulePath[] = L"--jmodulepath";
inline constexpr wchar_t kInterfaceClass[] = L"--jifaceclass";
inline constexpr wchar_t kInterfaceArgument[] = L"--jifacearg";
inline constexpr wchar_t kPid[] = L"--pid";
inline constexpr wchar_t kTimeout[] = L"--timeout";
}  // namespace cli_option

/// The definition, with its descriptions in the active language.
[[nodiscard]] CliParser createLauncherCliDefinition();
