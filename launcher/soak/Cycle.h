// Cycle: one life of a service by its plan, from its start to its end, and what
// was seen of it. Works in a directory of its own. Judges nothing.
//
// The process that runs it waits for all its children, and adopts what they
// leave: it has to be a process of its own, unless all its cycles are started
// before the first one ends (see runTogether).
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "LauncherRun.h"
#include "Plan.h"

/// What the service was doing when a request went out.
enum class Phase { kStarting, kCreatingJvm, kRunning, kStopping };

/// An action of the plan that took place.
struct Request {
    Action action;
    pid_t target;       ///< for --pid and signals
    bool pidFileSeen;   ///< before it
    bool readySeen;     ///< before it
    bool pidFileAfter;  ///< still there after it: the service was not at its end
    Phase phase;
    std::string log;  ///< of the stop client, as those that follow
    std::optional<LauncherProcess> client = std::nullopt;
    std::optional<LauncherResult> result = std::nullopt;
    bool targetGone = false;  ///< when the client had ended
};

class Cycle final {
public:
    /// Runs `launcher` in `directory`, which has to exist; all has to end within
    /// `limit` from now on.
    Cycle(Plan plan, std::filesystem::path launcher, std::filesystem::path directory,
          std::chrono::seconds limit);

    /// Returns when the launcher has been executed.
    void start();
    /// The actions of the plan, in their order. One whose target has ended by
    /// then is left out.
    void performActions();
    /// Asks a service to stop that nothing has reached so far, and waits for
    /// the end of all.
    void waitForEnd();
    /// Waits for what has to be seen, or for the end of the service; false when
    /// neither came within the limit.
    bool waitFor(Moment moment);

    [[nodiscard]] const Plan& plan() const { return plan_; }
    [[nodiscard]] const std::filesystem::path& launcher() const { return launcher_; }
    [[nodiscard]] std::string file(const std::string& name) const { return directory_ / name; }
    [[nodiscard]] const std::filesystem::path& directory() const { return directory_; }
    [[nodiscard]] const std::vector<Request>& requests() const { return requests_; }
    /// What was started: the service itself, or the parent that it left.
    [[nodiscard]] pid_t firstPid() const { return process_->pid; }
    [[nodiscard]] const LauncherResult& firstResult() const { return *firstResult_; }
    /// The service, and its exit status; -1 and nothing if there was none.
    [[nodiscard]] pid_t servicePid() const;
    [[nodiscard]] std::optional<int> serviceStatus() const { return serviceStatus_; }
    /// Whether the limit was met. Nothing else is known then.
    [[nodiscard]] bool hung() const { return hung_; }

private:
    [[nodiscard]] LauncherRun run(const std::string& args) const;
    /// False when the limit was met.
    bool waitUntilSeen(const std::function<bool()>& condition);
    /// Looks around; takes the status of processes that have ended.
    void poll();
    void pollClients();
    void perform(const Action& action);
    [[nodiscard]] bool isSeen(Moment moment) const;
    [[nodiscard]] bool serviceHasEnded() const;
    [[nodiscard]] bool clientsHaveEnded() const;
    [[nodiscard]] bool needsStop() const;
    [[nodiscard]] bool hasReachedService(const Request& request) const;
    [[nodiscard]] Phase phase() const;
    [[nodiscard]] bool isThere(const std::string& name) const;
    void collect();

    Plan plan_;
    std::filesystem::path launcher_, directory_;
    std::chrono::steady_clock::time_point deadline_;
    std::optional<LauncherProcess> process_;
    std::vector<Request> requests_;
    pid_t savedPid_ = -1;  ///< out of the PID file, as soon as it was seen
    bool hung_ = false;
    std::optional<LauncherResult> firstResult_;
    std::optional<int> serviceStatus_;
};
