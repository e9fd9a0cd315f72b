// Plan: what one cycle does, drawn from its seed: how a service is started, what its
// methods do, and what asks it to end when. The same on machines with the same JDKs.
#pragma once

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <random>
#include <sstream>

#include "Jdk.h"

/// How far a service has come, in the order of its life.
enum Moment { kLog, kPidFile, kCreation, kReady, kStop, kEnd };

/// Its name, and a text in a file of the service, by which it is seen.
inline constexpr const char* kMoments[][3] = {
    {"log", "launcher.log", ""},
    {"PID-file", "service.pid", ""},
    {"JVM-creation", "launcher.log", "message=JVM argument "},
    {"ready", "ready", ""},
    {"stop", "launcher.log", " Spawning stop."},
    {"end", "launcher.log", "message=Destroying JVM."},
};

struct Action {
    int signal;                          ///< what the service gets
    std::string client = "";             ///< the run in mode stop that sends it; empty: none does
    Moment moment = kLog;                ///< is waited for
    std::chrono::microseconds delay{0};  ///< after it

    [[nodiscard]] bool has(const char* option) const { return client.find(option) != client.npos; }
};

struct Plan {
    Jdk jdk;
    bool detached = false;
    std::string start{}, stop{};  ///< steps of the Java methods; see service.Service
    std::vector<Action> actions{};

    /// Whether the service runs until it is asked to stop.
    [[nodiscard]] bool waits() const { return start.find("wait") != start.npos; }
    [[nodiscard]] std::string toText() const
    {
        std::ostringstream text;
        text << "JDK-" << jdk.first << (detached ? " detached" : " foreground");
        text << " start=" << start << " stop=" << stop;
        for (const auto& [signal, client, moment, delay] : actions) {
            text << "; SIG" << sigabbrev_np(signal) << (client.empty() ? "" : " by ") << client;
            text << " at " << kMoments[moment][0] << " + " << delay.count() << " us";
        }
        return text.str();
    }
};

struct Dice {
    std::size_t below(std::size_t end) { return engine() % end; }
    std::string anyOf(const std::vector<std::string>& all) { return all[below(all.size())]; }

    std::mt19937_64 engine;
};

inline Action drawAction(Dice& dice, Moment latest)
{
    constexpr int kSignals[] = {SIGTERM, SIGINT, SIGINT, SIGUSR1, SIGUSR1, SIGUSR2, SIGUSR2};
    Action action{kSignals[dice.below(std::size(kSignals))]};
    if ((action.signal == SIGUSR1 || action.signal == SIGUSR2) && dice.below(2) == 0) {
        const std::string some = " --timeout " + std::to_string(dice.below(400));
        action.client = action.signal == SIGUSR1 ? "stop" : "stop --fast";
        action.client += dice.anyOf({"", " --timeout 50000", some, some});
        action.client += dice.anyOf({" --pid", " --pidfile service.pid"});
    }
    action.moment = static_cast<Moment>(dice.below(static_cast<std::size_t>(latest) + 1));
    constexpr std::size_t kScales[] = {300, 4'000, 300'000};  // the last: until the Java start
    const std::size_t scale = kScales[dice.below(action.moment < kReady ? 3 : 2)];
    action.delay = std::chrono::microseconds(dice.below(scale));
    return action;
}

/// One that lasts until many others are there, too, is stopped after some seconds.
inline Plan drawPlan(std::uint64_t seed, bool lasts)
{
    Dice dice{std::mt19937_64(seed)};
    const std::map<int, std::string> jdks = installedJdks();
    Plan plan{*std::next(jdks.begin(), static_cast<std::ptrdiff_t>(dice.below(jdks.size())))};
    const Action end{SIGUSR1, "stop --pidfile service.pid", kReady, std::chrono::seconds(3)};
    if (lasts) return {plan.jdk, false, "ready,wait", "report,release", {end}};
    plan.detached = dice.below(10) < 4;
    const std::string sleep = "sleep:" + std::to_string(dice.below(300));
    const std::string exit = "exit:" + std::to_string(dice.below(100));
    plan.start = "ready," + dice.anyOf({"wait", "wait", "wait", "wait", "wait", "wait",
                                        "wait,throw", sleep, sleep + ",throw", sleep + "," + exit});
    plan.stop = dice.anyOf({"report,", "report," + sleep + ","});
    plan.stop += dice.anyOf(
        {"release", "release", "release", "release", "release", "release", "release,throw", exit});
    // A service that ends by itself may do so undisturbed.
    if (plan.waits()) plan.actions.push_back(drawAction(dice, kReady));
    for (std::size_t more = std::min(dice.below(3), dice.below(3)); more > 0; --more) {
        plan.actions.push_back(drawAction(dice, kEnd));
    }
    return plan;
}
