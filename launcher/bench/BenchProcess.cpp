#include "BenchProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <stdexcept>
#include <system_error>

#include "ScopedTempDir.h"

namespace {

double millisOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

// The group of the process that is being measured; 0 when there is none.
volatile pid_t measuredGroup = 0;

void onInterrupt(int number)
{
    if (measuredGroup != 0) kill(-measuredGroup, SIGKILL);
    _exit(128 + number);
}

/// What posix_spawn(3) does to the descriptors of the child.
class SpawnActions final {
public:
    SpawnActions() { posix_spawn_file_actions_init(&actions_); }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    posix_spawn_file_actions_t* get() { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

/// Puts the child into a process group of its own.
class SpawnAttributes final {
public:
    SpawnAttributes()
    {
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP);
    }
    ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    posix_spawnattr_t* get() { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

}  // namespace

double monotonicMillis()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

void prepareForMeasuring()
{
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) std::signal(number, onInterrupt);
}

BenchProcess::BenchProcess(const std::vector<std::string>& command, const std::string& errors)
    : command_(command), errors_(errors)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    output_ = FileDescriptor(ends[0]);
    const FileDescriptor writeEnd(ends[1]);
    SpawnActions actions;
    posix_spawn_file_actions_addopen(actions.get(), STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(actions.get(), writeEnd.get(), STDOUT_FILENO);
    posix_spawn_file_actions_addopen(actions.get(), STDERR_FILENO, errors.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, 0666);
    std::vector<char*> arguments;
    for (std::string& word : command_) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    SpawnAttributes attributes;
    startMillis_ = monotonicMillis();
    const int error = posix_spawn(&pid_, arguments[0], actions.get(), attributes.get(),
                                  arguments.data(), environ);
    if (error != 0) throw std::system_error(error, std::generic_category(), command_[0]);
    measuredGroup = pid_;
}

BenchProcess::~BenchProcess()
{
    if (pid_ == 0) return;
    kill(-pid_, SIGKILL);
    // What still ends would take its time from the next measurement.
    while (waitpid(-pid_, nullptr, 0) > 0) {
    }
    measuredGroup = 0;
}

double BenchProcess::waitForEntry()
{
    static constexpr char kEntered[] = "entered ";
    for (;;) {
        const std::size_t at = text_.find(kEntered);
        if (at != std::string::npos && text_.find('\n', at) != std::string::npos) {
            const double nanos = std::stod(text_.substr(at + sizeof kEntered - 1));
            return nanos / 1e6 - startMillis_;
        }
        if (!readMore()) raise("did not enter the Java method");
    }
}

void BenchProcess::signal(int number) const
{
    kill(pid_, number);
}

ProcessCost BenchProcess::waitForEnd(int status)
{
    while (readMore()) {
    }
    int result = 0;
    rusage usage{};
    if (wait4(pid_, &result, 0, &usage) != pid_) {
        throw std::system_error(errno, std::generic_category(), "wait4");
    }
    const double end = monotonicMillis();
    pid_ = 0;
    measuredGroup = 0;
    const int code = WIFSIGNALED(result) ? 128 + WTERMSIG(result) : WEXITSTATUS(result);
    if (code != status) {
        raise("ended with " + std::to_string(code));
    }
    return {end - startMillis_, millisOf(usage.ru_utime) + millisOf(usage.ru_stime)};
}

void BenchProcess::raise(const std::string& what) const
{
    throw std::runtime_error(command_[0] + " " + what + "\n" + text_ + readText(errors_));
}

bool BenchProcess::readMore()
{
    std::array<char, 4096> buffer{};
    const ssize_t size = read(output_.get(), buffer.data(), buffer.size());
    if (size <= 0) return false;
    text_.append(buffer.data(), static_cast<std::size_t>(size));
    return true;
}
