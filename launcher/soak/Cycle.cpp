#include "Cycle.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <set>
#include <sstream>
#include <thread>
#include <utility>

#include "ChildProcesses.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::microseconds kPollStep{500};

bool hasEnded(pid_t pid)
{
    return ChildProcesses::ended.count(pid) != 0;
}

/// The children of this process; its one thread has them all.
std::set<pid_t> livingChildren()
{
    std::istringstream text(readText("/proc/thread-self/children"));
    std::set<pid_t> children;
    for (pid_t pid = 0; text >> pid;) children.insert(pid);
    return children;
}

/// Starts `run` and returns when it has become the launcher, which closes the
/// pipe: signals sent from then on meet the launcher.
LauncherProcess startExecuted(const LauncherRun& run)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
    LauncherProcess process = run.start();
    close(ends[1]);
    char none = 0;
    while (read(ends[0], &none, 1) < 0 && errno == EINTR) {
    }
    close(ends[0]);
    return process;
}

}  // namespace

Cycle::Cycle(Plan plan, std::filesystem::path launcher, std::filesystem::path directory,
             std::chrono::seconds limit)
    : plan_(std::move(plan)),
      launcher_(std::move(launcher)),
      directory_(std::move(directory)),
      deadline_(Clock::now() + limit)
{
}

void Cycle::start()
{
    LauncherRun service = run("start --pidfile service.pid --clog launcher.log");
    service.arg("--jvmdll=" + plan_.library).arg(std::string("--jclasspath=") + SERVICE_JAR);
    service.args("--jifaceclass service.Service --jvmopt=-XX:-UsePerfData");
    std::istringstream options(plan_.jvmOptions);
    for (std::string option; options >> option;) service.arg("--jvmopt=" + option);
    service.arg("--jvmopt=-Dstart=" + plan_.startScript());
    service.arg("--jvmopt=-Dstop=" + plan_.stopScript());
    service.arg("--jvmopt=-DstopFast=" + plan_.stopScript());
    if (plan_.detached) service.arg("--daemon");
    process_ = startExecuted(service);
}

void Cycle::performActions()
{
    const Clock::time_point started = Clock::now();
    Clock::time_point previous = started;
    for (const Action& action : plan_.actions) {
        if (!waitFor(action.moment)) return;
        Clock::time_point due = Clock::now() + action.delay;
        if (action.moment == Moment::kExec) due = std::max(started + action.delay, previous);
        if (!waitUntilSeen([&] { return Clock::now() + kPollStep > due; })) return;
        std::this_thread::sleep_until(due);
        perform(action);
        previous = Clock::now();
    }
}

void Cycle::waitForEnd()
{
    const auto allEnded = [this] { return serviceHasEnded() && clientsHaveEnded(); };
    waitUntilSeen([&] { return allEnded() || needsStop(); });
    if (needsStop() && waitFor(Moment::kPidFile)) {
        perform({.signal = SIGUSR1, .timeoutMillis = {}, .moment = Moment::kPidFile});
    }
    waitUntilSeen(allEnded);
    if (!hung_) collect();
}

bool Cycle::waitFor(Moment moment)
{
    // Nothing is stopped before it is asked to.
    const bool isLate = moment == Moment::kStopping || moment == Moment::kDestroying;
    return waitUntilSeen(
        [&] { return isSeen(moment) || serviceHasEnded() || (isLate && needsStop()); });
}

pid_t Cycle::servicePid() const
{
    return plan_.detached ? savedPid_ : process_->pid;
}

LauncherRun Cycle::run(const std::string& args) const
{
    return LauncherRun(directory_, args).program(launcher_);
}

bool Cycle::waitUntilSeen(const std::function<bool()>& condition)
{
    while (poll(), !condition()) {
        if (Clock::now() > deadline_) hung_ = true;
        if (hung_) return false;
        std::this_thread::sleep_for(kPollStep);
    }
    return true;
}

void Cycle::poll()
{
    ChildProcesses::reap();
    pollClients();
    const std::string saved = readText(file("service.pid"));
    if (savedPid_ == -1 && !saved.empty()) savedPid_ = std::stoi(saved);
}

void Cycle::pollClients()
{
    for (Request& request : requests_) {
        if (!request.client || request.result || !hasEnded(request.client->pid)) continue;
        request.result = request.client->waitForExit();
        // Processes are taken in the order of their ends here: what a client saw
        // gone had been waited for.
        request.targetGone = hasEnded(request.action.byPidFile ? servicePid() : request.target);
    }
}

void Cycle::perform(const Action& action)
{
    poll();
    const pid_t target = savedPid_ == -1 ? process_->pid : savedPid_;
    if (hasEnded(target)) return;  // its number may be another's by now
    Request request{.action = action,
                    .target = target,
                    .pidFileSeen = savedPid_ != -1,
                    .readySeen = isThere("ready"),
                    .pidFileAfter = false,
                    .phase = phase(),
                    .log = file("client" + std::to_string(requests_.size()) + ".log")};
    if (action.isClient()) {
        LauncherRun client = run("stop --clog " + request.log);
        client.args(action.byPidFile ? "--pidfile service.pid" : "--pid " + std::to_string(target));
        if (action.fast) client.arg("--fast");
        if (action.timeoutMillis) client.args("--timeout " + std::to_string(*action.timeoutMillis));
        request.client = client.start();
    } else {
        kill(target, action.signal);
    }
    request.pidFileAfter = isThere("service.pid");
    requests_.push_back(request);
}

bool Cycle::isSeen(Moment moment) const
{
    const auto isLogged = [this](const char* record) {
        return readText(file("launcher.log")).find(record) != std::string::npos;
    };
    switch (moment) {
        case Moment::kPidFile:
            return savedPid_ != -1;
        case Moment::kJvmCreation:
            return isLogged("message=JVM argument ");
        case Moment::kReady:
            return isThere("ready");
        case Moment::kStopping:
            return isThere("stop.report") || isThere("stopFast.report");
        case Moment::kDestroying:
            return isLogged("message=Destroying JVM.");
        case Moment::kExec:
        case Moment::kPrevious:
            break;
    }
    return true;
}

bool Cycle::serviceHasEnded() const
{
    if (!hasEnded(process_->pid)) return false;
    if (!plan_.detached) return true;
    if (savedPid_ != -1) return hasEnded(savedPid_);
    std::set<pid_t> others = livingChildren();
    for (const Request& request : requests_) {
        if (request.client) others.erase(request.client->pid);
    }
    return others.empty();
}

bool Cycle::clientsHaveEnded() const
{
    return std::all_of(requests_.begin(), requests_.end(),
                       [](const Request& request) { return !request.client || request.result; });
}

bool Cycle::needsStop() const
{
    return plan_.waitsForStop() && !serviceHasEnded() && clientsHaveEnded() &&
           std::none_of(requests_.begin(), requests_.end(),
                        [this](const Request& request) { return hasReachedService(request); });
}

bool Cycle::hasReachedService(const Request& request) const
{
    if (request.action.isClient() && request.action.byPidFile) return request.result->out.empty();
    return !plan_.detached || request.target == savedPid_;
}

Phase Cycle::phase() const
{
    if (isSeen(Moment::kStopping)) return Phase::kStopping;
    if (isThere("ready")) return Phase::kRunning;
    return savedPid_ == -1 ? Phase::kStarting : Phase::kCreatingJvm;
}

bool Cycle::isThere(const std::string& name) const
{
    return std::filesystem::exists(directory_ / name);
}

void Cycle::collect()
{
    firstResult_ = process_->waitForExit();
    if (!plan_.detached) {
        serviceStatus_ = firstResult_->status;
        return;
    }
    if (savedPid_ == -1 && !ChildProcesses::ended.empty()) {
        savedPid_ = ChildProcesses::ended.begin()->first;  // it ended before that was seen
    }
    if (savedPid_ != -1) serviceStatus_ = ChildProcesses::waitForExit(savedPid_);
}
