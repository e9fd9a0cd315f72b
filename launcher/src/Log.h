// Log: the process-wide log and the one way to write to it.
//
//     logInfo({L"Daemon", L"run"}, L"Got an event.", L"stopType", stopType);
//
// A record has a place (class and function, with the file and line of the
// call), a message, and named values as alternating keys and values. Callers
// flush before risky or final steps; nothing else does.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "ILogger.h"
#include "LogValue.h"

// The levels; there is no filter. Never destroyed, as threads of the JVM log
// until the very end of the process.
inline const std::wstring& kLevelError = *new std::wstring(L"ERROR");
inline const std::wstring& kLevelWarn = *new std::wstring(L"WARN");
inline const std::wstring& kLevelInfo = *new std::wstring(L"INFO");

/// Opens the log file at `path`, after creating its directory and rotating an
/// older log away; an empty path discards all records. Once per process:
/// again, even after releaseLogger(), throws LauncherException "Logger was
/// already initialized" (code 21). Throws IDS_FILE_CREATION_ERROR or
/// IDS_CANNOT_ROTATE_LOG (code 10), or IDS_UNABLE_TO_RESOLVE_PATH (code 20);
/// the log then stays uninitialised.
void initLogger(const std::wstring& path);

/// The current logger; discards records before initLogger() and after
/// releaseLogger(). The reference stays valid for the rest of the process.
[[nodiscard]] ILogger& getLogger();

/// Discards all records from now on and closes the log file. From any thread,
/// also while others log.
void closeLog();

/// The same, and then waits until the system has written the file to disk.
void releaseLogger();

/// From now on nobody waits for the log longer than `patience`: what cannot be
/// written by then is lost. For a process that crashes, where the thread that
/// holds the log may never go on.
void limitLogWaits(std::chrono::milliseconds patience);

/// Makes `logger` (not owned, never null) the current one and gives the one
/// before, null when there was none: the seam by which tests read records.
ILogger* exchangeLogger(ILogger* logger);

/// Where a record comes from. Made at the call, `{L"Class", L"function"}`, it
/// takes the caller's file and line.
struct LogPlace {
    LogPlace(const wchar_t* callingClass, const wchar_t* function,
             const char* sourceFile = __builtin_FILE(), int sourceLine = __builtin_LINE())
        : className(callingClass), func(function), file(sourceFile), line(sourceLine)
    {
    }

    const wchar_t* className;
    const wchar_t* func;
    const char* file;  ///< as the compiler gives it
    int line;
};

/// Writes one record to the current logger; `values` alternate keys and values.
/// A record whose text finds no memory is lost.
void writeLogRecord(const std::wstring& level, const LogPlace& place, std::wstring_view message,
                    std::span<const LogValue> values);

template <typename... Values>
void logRecord(const std::wstring& level, const LogPlace& place, std::wstring_view message,
               const Values&... values)
{
    static_assert(sizeof...(Values) % 2 == 0, "named values are pairs of a key and a value");
    const std::array<LogValue, sizeof...(Values)> list{LogValue(values)...};
    writeLogRecord(level, place, message, list);
}

template <typename... Values>
void logError(const LogPlace& place, std::wstring_view message, const Values&... values)
{
    logRecord(kLevelError, place, message, values...);
}

template <typename... Values>
void logWarn(const LogPlace& place, std::wstring_view message, const Values&... values)
{
    logRecord(kLevelWarn, place, message, values...);
}

template <typename... Values>
void logInfo(const LogPlace& place, std::wstring_view message, const Values&... values)
{
    logRecord(kLevelInfo, place, message, values...);
}
