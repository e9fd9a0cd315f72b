// CodeBaseOptions: the JVM options of a service, with its module path and
// class path resolved from masks into files. Its records bear the Daemon's
// name. Main thread.
#pragma once

#include <string>
#include <vector>

class LauncherParameters;

/// "--module-path=" and "-Djava.class.path=" with the files found, where a
/// path is set, then the options of the parameters in their order. Throws
/// LauncherException (code 2): IDS_CANNOT_FIND_MODULE_PATH or
/// IDS_CANNOT_FIND_CLASS_PATH when a path that is set matches no file, or the
/// text of what failed on the way.
[[nodiscard]] std::vector<std::wstring> composeJvmOptions(const LauncherParameters& parameters);

/// Resolves a ':'-separated list of files, directories (all files in them) and
/// masks (in the last component only) into the ':'-separated list of matching
/// files, in readdir(3) order. A name matches a mask as IFileUtils::listFiles
/// says, so unanchored: "lib/app.jar" also takes "lib/myapp.jar" (required).
/// What matches nothing drops out. The log warns of entries that surprise, see
/// CodeBaseWarnings. Throws LauncherException IDS_WILDCARDS_ONLY_FOR_FILES (code
/// 2), or as listFiles (20).
[[nodiscard]] std::wstring resolveWildcards(const std::wstring& pathList);
