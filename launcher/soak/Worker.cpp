#include "Worker.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "ChildProcesses.h"

namespace {

bool runBody(const std::function<bool()>& body)
{
    try {
        return body();
    } catch (const std::exception& e) {
        std::cout << std::string("error: ") + e.what() + "\n";
    }
    return false;
}

}  // namespace

pid_t Worker::start(const std::function<bool()>& body)
{
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    std::fflush(stdout);
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid < 0) throw std::runtime_error("cannot fork");
    if (pid > 0) return pid;
    setpgid(0, 0);  // Ctrl+C is for the parent, which ends this process
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    if (getppid() != parent) _exit(1);
    ChildProcesses::ended.clear();
    const bool done = runBody(body);
    const std::string left = killAll();
    if (!left.empty()) std::cout << "error: left running: " + left;
    std::fflush(stdout);
    _exit(done && left.empty() ? 0 : 1);
}

std::string Worker::killAll()
{
    std::string lines = ChildProcesses::killAll();
    std::replace(lines.begin(), lines.end(), '\0', ' ');
    return lines;
}

std::string Worker::describeChildren()
{
    std::string text;
    std::istringstream children(readText("/proc/thread-self/children"));
    for (std::string pid; children >> pid;) {
        const std::filesystem::path tasks = "/proc/" + pid + "/task";
        std::error_code gone;
        for (const auto& task : std::filesystem::directory_iterator(tasks, gone)) {
            text +=
                pid + " " + readText(task.path() / "wchan") + " " + readText(task.path() / "comm");
        }
    }
    return text;
}
