// LinuxFileLogger: writes records to the launcher's log file, a line each.
// Owns the file from construction to close(). Any thread may log, flush and
// close at any time: lines never mix, and a record that comes after close()
// is dropped. Errors of writing are ignored.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "FileHandle.h"
#include "ILogger.h"

class LinuxFileLogger final : public ILogger {
public:
    /// Renames an older file at `path` to the next free number, "path.1" on,
    /// and makes a fresh one; root leaves that to the user of the older one, with its
    /// group and the same rights to read, where no stranger can have planted it. A
    /// device or pipe stays where it is, and so does a directory, which is then
    /// refused. `pid` goes into every record. Throws LauncherException IDS_FILE_CREATION_ERROR or
    /// IDS_CANNOT_ROTATE_LOG (code 10).
    LinuxFileLogger(const std::wstring& path, std::int32_t pid);
    ~LinuxFileLogger() override;
    LinuxFileLogger(const LinuxFileLogger&) = delete;
    LinuxFileLogger& operator=(const LinuxFileLogger&) = delete;

    void log(const std::wstring& level, const wchar_t* className, const wchar_t* file,
             std::int32_t line, const wchar_t* func, const std::wstring& message) override;
    void flush() override;

    /// Nothing the second time.
    void close();
    /// Waits until the system has written the closed file to disk.
    void sync() const;

    /// Bounds how long any thread waits for the log from now on; an operation
    /// that does not get it in time is skipped.
    static void limitWaits(std::chrono::milliseconds patience);

private:
    FileHandle stream_;  ///< guarded by the log mutex; null once closed
    std::int32_t pid_;
};
