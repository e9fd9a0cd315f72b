// ProcessName: the short name of this process.
#pragma once

#include <string>

/// Names the process for `ps -o comm`, top(1), ss(8) and pgrep(1): by the first
/// 15 bytes of `name` in UTF-8, cut at a whole character; see PR_SET_NAME in
/// prctl(2). Does nothing for an empty name. On the main thread, whose name it is
/// and from which new threads have theirs.
void nameProcess(const std::wstring& name);
