// LauncherRun: one run of the launcher, described step by step.
//
//     LauncherRun(directory, "stop --pid 42").env("LC_ALL", "C").run()
//
// The environment holds what env() says and next to nothing else. The streams
// go to files, since a detached launcher would keep pipes open.
#pragma once

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "ChildProcesses.h"
#include "ScopedTempDir.h"

/// How a run has ended.
struct LauncherResult {
    int status;  // as ChildProcesses::waitForExit()
    std::string out, err;
};

/// A launcher that was started.
struct LauncherProcess {
    [[nodiscard]] LauncherResult waitForExit() const
    {
        const int status = ChildProcesses::waitForExit(pid);
        return {status, readText(*streams / "out"), readText(*streams / "err")};
    }

    pid_t pid;
    std::shared_ptr<const ScopedTempDir> streams;
};

class LauncherRun final {
public:
    /// The launcher starts in `directory`, with the words of `text`.
    LauncherRun(std::filesystem::path directory, const std::string& text)
        : directory_(std::move(directory))
    {
        args(text);
    }
    /// Further arguments: the words of `text`.
    LauncherRun& args(const std::string& text)
    {
        std::istringstream words(text);
        for (std::string word; words >> word;) arg(word);
        return *this;
    }
    /// A further argument, exactly this one.
    LauncherRun& arg(const std::string& text)
    {
        arguments_.push_back(text);
        return *this;
    }
    LauncherRun& env(const std::string& name, const std::string& value)
    {
        environment_[name] = value;
        return *this;
    }
    /// In a build with sanitizers: a JVM raises SIGSEGV on purpose, and frees
    /// little at its end.
    LauncherRun& withJvm()
    {
        return env("ASAN_OPTIONS", "handle_segv=0:allow_user_segv_handler=1:detect_leaks=0");
    }
    /// Another build or copy of the launcher.
    LauncherRun& program(const std::filesystem::path& path)
    {
        program_ = path;
        return *this;
    }
    /// What the new process does before it becomes the launcher.
    LauncherRun& before(const std::function<void()>& preparation)
    {
        preparation_ = preparation;
        return *this;
    }

    /// Has sh(1) run `script` first, which ends in a command that becomes "$@", the launcher with
    /// the arguments so far.
    LauncherRun& shell(const std::string& script)
    {
        arguments_.insert(arguments_.begin(), {"-c", script, "sh", program_});
        return program("/bin/sh");
    }

    [[nodiscard]] LauncherProcess start() const
    {
        const auto streams = std::make_shared<const ScopedTempDir>();
        prctl(PR_SET_CHILD_SUBREAPER, 1);
        const pid_t pid = fork();
        if (pid < 0) throw std::runtime_error("cannot fork");
        if (pid == 0) becomeLauncher(*streams);
        return {pid, streams};
    }
    [[nodiscard]] LauncherResult run() const { return start().waitForExit(); }

private:
    [[noreturn]] void becomeLauncher(const ScopedTempDir& streams) const noexcept
    {
        std::vector<std::string> words = arguments_;
        words.insert(words.begin(), program_);
        std::vector<char*> argv;
        argv.reserve(words.size() + 1);
        for (std::string& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
        clearenv();
        for (const auto& [name, value] : environment_) setenv(name.c_str(), value.c_str(), 1);
        std::filesystem::current_path(directory_);
        // As a shell does, whatever the test runs under and has open; a crash leaves no core file.
        close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) std::signal(number, SIG_DFL);
        const rlimit none{};
        setrlimit(RLIMIT_CORE, &none);
        if (!std::freopen("/dev/null", "r", stdin)) _exit(126);
        if (!std::freopen((streams / "out").c_str(), "a", stdout)) _exit(126);
        if (!std::freopen((streams / "err").c_str(), "a", stderr)) _exit(126);
        // Opened here, since the preparation may give up the right to go there.
        const int program = open(program_.c_str(), O_RDONLY | O_CLOEXEC);
        preparation_();
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // a test that is killed takes its launcher along
        fexecve(program, argv.data(), environ);
        _exit(127);
    }

    std::filesystem::path directory_;
    std::filesystem::path program_ = LAUNCHER_EXECUTABLE;
    std::vector<std::string> arguments_;
    std::map<std::string, std::string> environment_{
        {"LC_ALL", "C.UTF-8"}, {"PATH", "/usr/bin:/bin"}, {"ASAN_OPTIONS", "detect_leaks=1"}};
    std::function<void()> preparation_ = [] {};
};
