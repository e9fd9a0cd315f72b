// ILogger: where log records go. log() and flush() may be called from any
// thread and never throw; a failing log never stops the launcher.
#pragma once

#include <cstdint>
#include <string>

class ILogger {
public:
    /// Writes one record. `message` already holds its named values. A null
    /// `className`, `file` or `func` counts as empty; of `file` only the last
    /// path component is recorded.
    virtual void log(const std::wstring& level, const wchar_t* className, const wchar_t* file,
                     std::int32_t line, const wchar_t* func, const std::wstring& message) = 0;
    /// Pushes the buffered records to the file.
    virtual void flush() = 0;
    virtual ~ILogger() = default;
};
