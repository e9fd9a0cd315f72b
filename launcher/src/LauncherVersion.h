// LauncherVersion: the version that the launcher shows, logs and hands on.
#pragma once

inline constexpr wchar_t kLauncherVersion[] = L"3.11.1+4";
