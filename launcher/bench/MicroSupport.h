// MicroSupport: what the micro-benchmarks share.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "LinuxFileLogger.h"
#include "Log.h"
#include "NopLogger.h"
#include "ScopedTempDir.h"
#include "TextConversion.h"

/// ScopedLog: the process's log is a file for a scope; /dev/null, or one in a
/// directory of its own.
class ScopedLog final {
public:
    enum class Destination { Null, File };

    explicit ScopedLog(Destination destination)
        : file_(destination == Destination::Null ? nullLog() : fileLog())
    {
        exchangeLogger(&file_.logger);
    }
    ~ScopedLog()
    {
        static NopLogger none;
        exchangeLogger(&none);
        empty();
    }
    ScopedLog(const ScopedLog&) = delete;
    ScopedLog& operator=(const ScopedLog&) = delete;

    /// Writes what is buffered.
    void flush() { file_.logger.flush(); }
    /// Lets the file begin anew.
    void empty()
    {
        flush();
        if (file_.path != "/dev/null" && truncate(file_.path.c_str(), 0) != 0) std::abort();
    }

private:
    struct File {
        explicit File(std::string thePath)
            : path(std::move(thePath)), logger(toWide(path), getpid())
        {
        }
        std::string path;
        LinuxFileLogger logger;
    };

    // Never destroyed: that would write the buffers of the whole system to disk.
    static File& nullLog()
    {
        static File& file = *new File("/dev/null");
        return file;
    }
    static File& fileLog()
    {
        static const ScopedTempDir directory;
        static File& file = *new File(directory / "launcher.log");
        return file;
    }

    File& file_;
};
