// RecordingLogger: is the process's logger for a scope and keeps the records.
#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "Log.h"

class RecordingLogger final : public ILogger {
public:
    RecordingLogger() : before_(exchangeLogger(this)) {}
    ~RecordingLogger() override { exchangeLogger(before_); }

    void log(const std::wstring& level, const wchar_t* className, const wchar_t*, std::int32_t,
             const wchar_t* func, const std::wstring& message) override
    {
        const std::lock_guard lock(mutex_);
        lines_.push_back(level + L" " + className + L"." + func + L": " + message);
    }
    void flush() override {}

    /// "LEVEL Class.function: message" of every record, in order.
    [[nodiscard]] std::vector<std::wstring> lines() const
    {
        const std::lock_guard lock(mutex_);
        return lines_;
    }
    [[nodiscard]] std::ptrdiff_t count(const std::wstring& line) const
    {
        const std::lock_guard lock(mutex_);
        return std::count(lines_.begin(), lines_.end(), line);
    }
    [[nodiscard]] bool holds(const std::wstring& line) const { return count(line) > 0; }

private:
    ILogger* before_;
    mutable std::mutex mutex_;
    std::vector<std::wstring> lines_;
};
