// BenchProcess: one process that is measured, from its start until it has been
// waited for. Owns the process, which is killed with its children if it is
// still there at the end, and the pipe of its standard output. Two may be there
// at a time, of which an interrupt kills the later one.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "FileDescriptor.h"

/// What a finished process took.
struct ProcessCost {
    double wallMillis = 0;  ///< from just before its start until it was waited for
    double cpuMillis = 0;   ///< user and system time, with that of its children
};

/// The system's monotonic clock.
[[nodiscard]] double monotonicMillis();

/// Once, at first: adopts what measured processes leave, so that it can be waited
/// for, and lets SIGINT, SIGTERM and SIGHUP end what is being measured, too.
void prepareForMeasuring();

class BenchProcess final {
public:
    /// Starts `command`, whose first word is the path of the program, with
    /// `errors` as its standard error (a file, appended to). Throws
    /// std::runtime_error when it cannot be started.
    BenchProcess(const std::vector<std::string>& command, const std::string& errors);
    ~BenchProcess();
    BenchProcess(const BenchProcess&) = delete;
    BenchProcess& operator=(const BenchProcess&) = delete;

    [[nodiscard]] pid_t pid() const { return pid_; }
    /// Waits until the Java method says that it was entered; gives the
    /// milliseconds from the start until then. Throws when the output ends
    /// without it.
    double waitForEntry();
    void signal(int number) const;
    /// Takes the output that is left and waits for the end. Throws unless the
    /// process ends with `status` (128 and the signal's number for a killed one).
    ProcessCost waitForEnd(int status = 0);

private:
    [[noreturn]] void raise(const std::string& what) const;
    /// Reads some more of the output; false at its end.
    bool readMore();

    std::vector<std::string> command_;
    std::string errors_;
    pid_t pid_ = 0;  ///< 0 when it has been waited for
    double startMillis_ = 0;
    FileDescriptor output_;
    std::string text_;
};
