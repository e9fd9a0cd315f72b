// VariableExpansion: the variables in the values of launcher.yml.
#pragma once

#include <string>

/// The decimal id of this process.
[[nodiscard]] std::wstring ownProcessId();

/// What the variables of one file stand for.
struct ExpansionContext {
    std::wstring instanceRoot;                ///< "${instance.root}"; empty when there is none
    std::wstring launcherDirectory;           ///< "${launcher.dir}"
    std::wstring fileName;                    ///< of launcher.yml, for messages
    std::wstring path;                        ///< "${env.path}", the environment's PATH
    std::wstring processId = ownProcessId();  ///< "${launcher.pid}"
};

/// `text` with the variables above, "${launcher.version}" and "${launcher.arch}"
/// replaced; any other "${...}" stays. One variable after the other, in a fixed
/// order, and a replacement is looked through again: what a value brings in is
/// replaced, too, if its turn is still to come. Throws LauncherException (code
/// 2) IDS_INSTANCE_IN_FILE_BUT_NOT_IN_CLI for "${instance.root}" without one,
/// and IDS_FILE_VARIABLE_HOLDS_ITSELF for a variable whose replacement would
/// never end.
[[nodiscard]] std::wstring expandVariables(const ExpansionContext& context, std::wstring text);
