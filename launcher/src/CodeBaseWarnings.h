// CodeBaseWarnings: WARN records about entries of the class path and module path
// that stand for other files than with `java -cp`. They bear the Daemon's name.
// Main thread.
#pragma once

#include <string>
#include <vector>

/// An entry is a mask also where it names a file. Warns when `entry`, which is
/// `name` in `directory`, names one and matched `files` (absolute paths) instead
/// of that file alone; tells what does match it alone.
void warnAboutNeighbors(const std::wstring& entry, const std::wstring& directory,
                        const std::wstring& name, const std::vector<std::wstring>& files);

/// For the class path. A directory stands for its `files`. Warns when there is no archive among
/// them, unless it is empty, as one for plug-ins may be: it probably is one of configuration files
/// or classes. Tells what puts its content on the class path.
void warnAboutDirectory(const std::wstring& entry, const std::vector<std::wstring>& files);
