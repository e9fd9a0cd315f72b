// Plan: what one cycle does: how a service is started, what its methods do, and
// what asks it to end, and when. All of it is drawn from the seed of the cycle.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

enum class StartMethod { kWaits, kWaitsAndThrows, kReturns, kThrows, kExits };
enum class StopMethod { kReleases, kThrows, kExits };

/// What has to be seen before an action; its delay begins there.
enum class Moment { kExec, kPidFile, kJvmCreation, kReady, kStopping, kDestroying, kPrevious };

/// A signal, or a run of the launcher in mode stop.
struct Action {
    int signal = 0;  ///< 0: a run in mode stop, as follows
    bool fast = false;
    bool byPidFile = false;  ///< else by the process id
    std::optional<int> timeoutMillis;

    Moment moment = Moment::kExec;
    std::chrono::microseconds delay{0};

    [[nodiscard]] bool isClient() const { return signal == 0; }
    /// The signal that the service gets in the end.
    [[nodiscard]] int sentSignal() const;
    [[nodiscard]] std::string toText() const;
};

struct Plan {
    /// A service that waits for its stop, which comes without an action.
    Plan(std::uint64_t cycleSeed, int featureVersion, std::string jvmLibrary);

    std::uint64_t seed;
    int jdk;
    std::string library;  ///< of the JVM
    std::string jvmOptions = "-Xmx64m";
    bool detached = false;
    StartMethod start = StartMethod::kWaits;
    int startMillis = 0, startStatus = 0;
    StopMethod stop = StopMethod::kReleases;
    int stopMillis = 0, stopStatus = 0;
    std::vector<Action> actions;

    /// Whether the service runs until it is asked to stop.
    [[nodiscard]] bool waitsForStop() const;
    [[nodiscard]] bool throws() const;
    /// The steps of the Java methods; see the tests' service.Service.
    [[nodiscard]] std::string startScript() const;
    [[nodiscard]] std::string stopScript() const;
    /// In one line.
    [[nodiscard]] std::string toText() const;
};

/// The plan of a seed, on one of the JDKs (feature version and JVM library).
Plan drawPlan(std::uint64_t seed, const std::map<int, std::string>& jdks);
