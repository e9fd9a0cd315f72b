#include "Log.h"

#include <atomic>
#include <new>

#include "IFileUtils.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "LauncherException.h"
#include "LinuxFileLogger.h"
#include "NopLogger.h"
#include "TextConversion.h"

namespace {

constexpr std::size_t kPunctuation = 4;  ///< around a key or a value

// The current logger; null until the first one is set.
std::atomic<ILogger*> currentLogger{nullptr};
// The one log file of the process. Never deleted: a thread that took it from
// getLogger() may still use it after the release, and then writes nothing.
std::atomic<LinuxFileLogger*> fileLogger{nullptr};

/// Never destroyed: threads may log while static objects are.
NopLogger& nopLogger()
{
    static NopLogger& logger = *new NopLogger;
    return logger;
}

std::wstring withNamedValues(std::wstring_view message, std::span<const LogValue> values)
{
    std::wstring text;
    std::size_t size = message.size();
    for (const LogValue& value : values) size += value.text().size() + kPunctuation;
    text.reserve(size);
    text += message;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const bool isKey = i % 2 == 0;
        text += i == 0 ? L" " : isKey ? L", " : L"=";
        appendQuoted(values[i].text(), text);
    }
    return text;
}

/// Of a path as the compiler gives it.
std::wstring fileName(const char* path)
{
    const std::string_view view(path);
    return toWide(view.substr(view.rfind('/') + 1));  // npos + 1 is 0
}

}  // namespace

void initLogger(const std::wstring& path)
{
    if (currentLogger.load()) throw LauncherException(L"Logger was already initialized");
    if (path.empty()) {
        currentLogger.store(&nopLogger());
        return;
    }
    IOsUtilsFactory& factory = getOsUtilsFactory();
    factory.getFileUtils().createParentDirectories(path);
    const std::int32_t pid = factory.getProcessUtils().getCurrentProcessId();
    auto* logger = new LinuxFileLogger(path, pid);
    fileLogger.store(logger);
    currentLogger.store(logger);
}

ILogger& getLogger()
{
    ILogger* logger = currentLogger.load(std::memory_order_acquire);
    return logger ? *logger : nopLogger();
}

void closeLog()
{
    exchangeLogger(&nopLogger());
    if (LinuxFileLogger* logger = fileLogger.load()) logger->close();
}

void releaseLogger()
{
    closeLog();
    if (LinuxFileLogger* logger = fileLogger.load()) logger->sync();
}

void limitLogWaits(std::chrono::milliseconds patience)
{
    LinuxFileLogger::limitWaits(patience);
}

ILogger* exchangeLogger(ILogger* logger)
{
    return currentLogger.exchange(logger);
}

void writeLogRecord(const std::wstring& level, const LogPlace& place, std::wstring_view message,
                    std::span<const LogValue> values)
{
    try {
        getLogger().log(level, place.className, fileName(place.file).c_str(), place.line,
                        place.func, withNamedValues(message, values));
    } catch (const std::bad_alloc&) {
        // The record is lost; a failing log stops nothing.
    }
}
