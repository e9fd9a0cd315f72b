#include "Plan.h"

#include <array>
#include <cstring>
#include <iterator>
#include <random>
#include <utility>

namespace {

/// Random choices, the same for the same seed on every machine.
class Dice final {
public:
    explicit Dice(std::uint64_t seed) : engine_(seed) {}

    /// 0 to `end` - 1.
    int below(int end) { return static_cast<int>(engine_() % static_cast<unsigned>(end)); }
    bool percent(int chance) { return below(100) < chance; }
    /// One of the values, by its share of 100.
    template <typename Value, std::size_t kCount>
    Value pick(const std::pair<int, Value> (&shares)[kCount])
    {
        int left = below(100);
        for (const auto& [share, value] : shares) {
            left -= share;
            if (left < 0) return value;
        }
        return std::rbegin(shares)->second;
    }

private:
    std::mt19937_64 engine_;
};

Moment drawMoment(Dice& dice, bool first)
{
    if (!first && dice.percent(40)) return Moment::kPrevious;
    return dice.pick<Moment>({{40, Moment::kExec},
                              {12, Moment::kPidFile},
                              {12, Moment::kJvmCreation},
                              {first ? 36 : 18, Moment::kReady},
                              {10, Moment::kStopping},
                              {8, Moment::kDestroying}});
}

/// A start takes a few ms to the PID file, and some hundred to the Java start.
std::chrono::microseconds drawDelay(Dice& dice, Moment moment)
{
    if (moment == Moment::kExec) {
        return std::chrono::microseconds(dice.below(dice.percent(40) ? 4'000 : 600'000));
    }
    const bool creatingJvm = moment == Moment::kPidFile || moment == Moment::kJvmCreation;
    return std::chrono::microseconds(dice.below(creatingJvm && dice.percent(50) ? 100'000 : 4'000));
}

Action drawAction(Dice& dice, bool first)
{
    Action action;
    action.moment = drawMoment(dice, first);
    action.delay = drawDelay(dice, action.moment);
    action.signal =
        dice.pick<int>({{18, SIGUSR1}, {18, SIGUSR2}, {18, SIGINT}, {8, SIGTERM}, {0, 0}});
    if (!action.isClient()) return action;
    action.fast = dice.percent(50);
    action.byPidFile = dice.percent(60);
    if (dice.percent(50)) {
        action.timeoutMillis = dice.percent(60) ? dice.below(400) : 50'000;
    }
    return action;
}

const char* name(Moment moment)
{
    constexpr std::array<const char*, 7> kNames{"exec",     "PID file",   "JVM creation", "ready",
                                                "stopping", "destroying", "previous"};
    return kNames.at(static_cast<std::size_t>(moment));
}

}  // namespace

int Action::sentSignal() const
{
    if (!isClient()) return signal;
    return fast ? SIGUSR2 : SIGUSR1;
}

std::string Action::toText() const
{
    std::string text = isClient() ? "stop" : std::string("SIG") + sigabbrev_np(signal);
    if (isClient()) {
        text += byPidFile ? " --pidfile" : " --pid";
        if (fast) text += " --fast";
        if (timeoutMillis) text += " --timeout " + std::to_string(*timeoutMillis);
    }
    return text + " at " + name(moment) + " + " + std::to_string(delay.count()) + " us";
}

Plan::Plan(std::uint64_t cycleSeed, int featureVersion, std::string jvmLibrary)
    : seed(cycleSeed), jdk(featureVersion), library(std::move(jvmLibrary))
{
}

bool Plan::waitsForStop() const
{
    return start == StartMethod::kWaits || start == StartMethod::kWaitsAndThrows;
}

bool Plan::throws() const
{
    return start == StartMethod::kWaitsAndThrows || start == StartMethod::kThrows ||
           stop == StopMethod::kThrows;
}

std::string Plan::startScript() const
{
    const std::string run =
        waitsForStop() ? "ready,wait" : "ready,sleep:" + std::to_string(startMillis);
    if (start == StartMethod::kExits) return run + ",exit:" + std::to_string(startStatus);
    const bool fails = start == StartMethod::kThrows || start == StartMethod::kWaitsAndThrows;
    return fails ? run + ",throw" : run;
}

std::string Plan::stopScript() const
{
    const std::string run = "report,sleep:" + std::to_string(stopMillis);
    if (stop == StopMethod::kExits) return run + ",exit:" + std::to_string(stopStatus);
    return stop == StopMethod::kThrows ? run + ",release,throw" : run + ",release";
}

std::string Plan::toText() const
{
    std::string text = "JDK " + std::to_string(jdk) + (detached ? ", detached" : ", foreground");
    text += ", start=" + startScript() + ", stop=" + stopScript();
    for (const Action& action : actions) text += "; " + action.toText();
    return text;
}

Plan drawPlan(std::uint64_t seed, const std::map<int, std::string>& jdks)
{
    Dice dice(seed);
    const auto jdk = std::next(jdks.begin(), dice.below(static_cast<int>(jdks.size())));
    Plan plan(seed, jdk->first, jdk->second);
    plan.detached = dice.percent(40);
    plan.start = dice.pick<StartMethod>({{60, StartMethod::kWaits},
                                         {8, StartMethod::kWaitsAndThrows},
                                         {14, StartMethod::kReturns},
                                         {8, StartMethod::kThrows},
                                         {10, StartMethod::kExits}});
    plan.stop = dice.pick<StopMethod>(
        {{75, StopMethod::kReleases}, {14, StopMethod::kThrows}, {11, StopMethod::kExits}});
    plan.startMillis = dice.below(200);
    plan.stopMillis = dice.percent(50) ? 0 : dice.below(300);
    plan.startStatus = dice.below(100);
    plan.stopStatus = dice.below(100);
    // A service that ends by itself may do so undisturbed.
    const int fewest = plan.waitsForStop() ? 1 : 0;
    const int number = dice.pick<int>({{50, 1}, {30, 2}, {20, 3}}) - (1 - fewest);
    for (int i = 0; i < number; ++i) plan.actions.push_back(drawAction(dice, i == 0));
    return plan;
}
