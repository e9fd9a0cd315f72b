// Cycle: one life of a service by its plan, from its start to its end, and what
// was seen of it. Judges nothing. Works in the working directory; all children of
// the process are its own, the orphans that it adopts among them.
#pragma once

#include <optional>
#include <thread>

#include "ChildProcesses.h"
#include "LauncherRun.h"
#include "Plan.h"

/// The signal that shall end this program; its handler sets it.
inline volatile std::sig_atomic_t interrupted = 0;

/// An action of the plan that took place.
struct Request {
    Action action;
    Moment seen;      ///< the latest one before it
    bool isCertain;   ///< that the service logs it: the JVM was not ending
    std::string log;  ///< of the stop client, as what follows
    std::optional<LauncherProcess> client = std::nullopt;
    std::optional<LauncherResult> result = std::nullopt;
    bool serviceGone = false;  ///< when the client had ended
};

class Cycle {
public:
    Cycle(Plan plan, std::filesystem::path launcher)
        : plan_(std::move(plan)), launcher_(std::move(launcher)), process_(start())
    {
    }

    /// The actions of the plan, in their order, until the service has ended. Then
    /// waits for the end of all. Throws when that takes too long.
    void run()
    {
        for (const Action& action : plan_.actions) {
            // Nobody knows a detached service before its PID file.
            const bool isEarly = !plan_.detached && !action.has("--pidfile");
            const Moment moment = isEarly ? action.moment : std::max(action.moment, kPidFile);
            waitUntilSeen([&] { return isSeen(moment) || !anyLives_; });
            const auto due = Clock::now() + action.delay;
            waitUntilSeen([&] { return Clock::now() + kPollStep > due; });
            std::this_thread::sleep_until(due);
            perform(action);
        }
        waitUntilSeen([this] { return !anyLives_; });
    }

protected:
    const Plan plan_;
    const std::filesystem::path launcher_;
    const LauncherProcess process_;  ///< the service itself, or the parent that it left
    std::vector<Request> requests_;

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::microseconds kPollStep{500};

    [[nodiscard]] LauncherProcess start() const
    {
        LauncherRun run(".", "start --pidfile service.pid --clog launcher.log");
        run.program(launcher_).withJvm().arg("--jvmdll=" + plan_.jdk.second);
        run.arg(std::string("--jclasspath=") + SERVICE_JAR);
        run.args("--jifaceclass service.Service --jvmopt=-XX:-UsePerfData --jvmopt=-Xmx32m");
        run.arg("--jvmopt=-Dstart=" + plan_.start).arg("--jvmopt=-Dstop=" + plan_.stop);
        run.arg("--jvmopt=-DstopFast=" + plan_.stop).args(plan_.detached ? "--daemon" : "");
        return run.start();
    }

    template <typename Condition>
    void waitUntilSeen(Condition condition)
    {
        while (look(), !condition()) {
            if (interrupted != 0) throw std::runtime_error("interrupted");
            if (Clock::now() > deadline_) throw std::runtime_error("hangs in" + waits());
            std::this_thread::sleep_for(kPollStep);
        }
    }

    /// What the threads of the children are waiting in.
    static std::string waits()
    {
        std::string text;
        std::istringstream children(readText("/proc/thread-self/children"));
        for (std::string pid; children >> pid;) {
            for (const auto& task : std::filesystem::directory_iterator("/proc/" + pid + "/task")) {
                text += " " + pid + ":" + readText(task.path() / "wchan");
            }
        }
        return text;
    }

    /// Takes the status of processes that have ended.
    void look()
    {
        anyLives_ = ChildProcesses::reap();
        for (Request& request : requests_) {
            if (!request.client || request.result || !hasEnded(request.client->pid)) continue;
            request.result = request.client->waitForExit();
            // Processes are taken in the order of their ends here: what a client saw
            // gone had been waited for.
            request.serviceGone = hasEnded(servicePid());
        }
        const std::string saved = readText("service.pid");
        if (savedPid_ == -1 && !saved.empty()) savedPid_ = std::stoi(saved);
    }

    void perform(const Action& action)
    {
        look();
        // The number of one that has ended may be another's by now.
        if (servicePid() == -1 || hasEnded(servicePid())) return;
        const std::string log = "client" + std::to_string(requests_.size()) + ".log";
        Request request{action, kEnd, false, log};
        while (request.seen > kLog && !isSeen(request.seen))
            request.seen = static_cast<Moment>(request.seen - 1);
        if (action.client.empty()) {
            kill(servicePid(), action.signal);
            request.isCertain = request.seen >= kPidFile && !isSeen(kEnd);
        } else {
            const std::string pid = action.has("--pidfile") ? "" : std::to_string(servicePid());
            LauncherRun run(".", action.client + " " + pid + " --clog " + log);
            request.client = run.program(launcher_).start();
        }
        requests_.push_back(request);
    }

    [[nodiscard]] bool isSeen(Moment moment) const
    {
        if (moment == kPidFile) return savedPid_ != -1;
        const auto& [name, path, text] = kMoments[moment];
        return std::filesystem::exists(path) && readText(path).find(text) != std::string::npos;
    }

    /// -1 as long as a detached one is not known.
    [[nodiscard]] pid_t servicePid() const { return plan_.detached ? savedPid_ : process_.pid; }
    [[nodiscard]] static bool hasEnded(pid_t pid) { return ChildProcesses::ended.count(pid) != 0; }

    const Clock::time_point deadline_ = Clock::now() + std::chrono::seconds(60);
    pid_t savedPid_ = -1;  ///< out of the PID file, as soon as it was seen
    bool anyLives_ = true;
};
