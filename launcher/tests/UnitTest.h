// UnitTest: what most unit tests need, fresh for each: the English texts, a
// directory, and the records of the log.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "LauncherException.h"
#include "Log.h"
#include "ScopedCatalogue.h"
#include "ScopedTempDir.h"

using Texts = std::vector<std::wstring>;

/// The words of a text, which blanks separate.
inline Texts split(const std::wstring& text)
{
    std::wistringstream stream(text);
    return {std::istream_iterator<std::wstring, wchar_t>(stream), {}};
}

/// "code message" of the LauncherException that `action` throws; "nothing
/// raised" when it throws none.
template <typename Action>
[[nodiscard]] std::wstring raised(Action action)
{
    try {
        action();
    } catch (const LauncherException& e) {
        return std::to_wstring(e.exitCode()) + L" " + e.message();
    }
    return L"nothing raised";
}

/// Is the process's logger for a scope and keeps the records.
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
    [[nodiscard]] Texts lines() const
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
    Texts lines_;
};

class UnitTest : public testing::Test {
protected:
    /// The text with the path of the directory for every '@'.
    [[nodiscard]] std::wstring at(std::wstring text) const
    {
        const std::wstring path = dir_.wide();
        for (std::size_t i = 0; (i = text.find(L'@', i)) != text.npos; i += path.size()) {
            text.replace(i, 1, path);
        }
        return text;
    }

    ScopedCatalogue catalogue_;
    ScopedTempDir dir_;
    RecordingLogger log_;
};
