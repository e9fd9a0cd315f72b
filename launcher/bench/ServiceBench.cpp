#include "ServiceBench.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <ratio>
#include <stdexcept>
#include <thread>

#include "BenchProcess.h"

namespace {

using Step = std::function<void()>;

/// After the entry into the Java method: until the JVM has come to rest.
constexpr std::chrono::milliseconds kSettling{200};
constexpr unsigned kSeed = 1;
constexpr std::size_t kLogSize = 4096;

/// In each round, for each setting, runs the steps that `stepsFor` gives for its
/// results, in an order of its own: what ran just before leaves its traces.
template <typename Results, typename StepsFor>
std::vector<Results> measureRounds(const std::vector<Setting>& settings, int rounds,
                                   StepsFor stepsFor)
{
    std::mt19937 random(kSeed);
    std::vector<Results> all(settings.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < settings.size(); ++i) {
            all[i].setting = settings[i];
            std::vector<Step> steps = stepsFor(all[i]);
            std::shuffle(steps.begin(), steps.end(), random);
            for (const Step& step : steps) step();
        }
    }
    return all;
}

void launch(const Hosts& hosts, const Command& command, LaunchResults::Host& results)
{
    hosts.tidyUp();
    BenchProcess process(command, hosts.errors());
    results.entryMillis.push_back(process.waitForEntry());
    results.cpuMillis.push_back(process.waitForEnd().cpuMillis);
}

/// The number behind `key` in a status file of /proc; 0 without it.
long readStatus(const std::filesystem::path& file, const std::string& key)
{
    std::ifstream status(file);
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(key + ":", 0) == 0) return std::stol(line.substr(key.size() + 1));
    }
    return 0;
}

std::filesystem::path procDirectory(const BenchProcess& process)
{
    return "/proc/" + std::to_string(process.pid());
}

/// It is killed: the status with which jsvc itself ends varies.
void launchJsvc(const Hosts& hosts, const Command& command, LaunchResults::Host& results)
{
    hosts.tidyUp();
    std::string child;  // the process with the JVM
    {
        BenchProcess process(command, hosts.errors());
        results.entryMillis.push_back(process.waitForEntry());
        const std::string pid = std::to_string(process.pid());
        std::ifstream(procDirectory(process) / "task" / pid / "children") >> child;
    }
    // By this file it tells jsvc that the service is up.
    std::filesystem::remove("/tmp/" + child + ".jsvc_up");
}

void stop(const Hosts& hosts, const Command& command, StopResults::Host& results)
{
    constexpr double kKibiPerMebi = 1024;
    hosts.tidyUp();
    BenchProcess process(command, hosts.errors());
    process.waitForEntry();
    std::this_thread::sleep_for(kSettling);
    const long kibi = readStatus(procDirectory(process) / "status", "VmRSS");
    results.residentMiB.push_back(static_cast<double>(kibi) / kKibiPerMebi);
    sync();  // what others have written is not the launcher's to wait for
    const double start = monotonicMillis();
    process.signal(SIGUSR1);
    process.waitForEnd();
    results.stopMillis.push_back(monotonicMillis() - start);
}

/// How long the system takes for a file of the log's size.
double measureSync(const Hosts& hosts)
{
    const std::string file = hosts.errors() + ".sync";
    sync();
    std::ofstream(file) << std::string(kLogSize, '.');
    const double start = monotonicMillis();
    sync();
    const double millis = monotonicMillis() - start;
    std::filesystem::remove(file);
    return millis;
}

/// How often the launcher's own threads have run, and how many there are.
struct WakeUps {
    long count = 0;
    int threads = 0;
};

/// The threads of the JVM have names of their own.
WakeUps countWakeUps(const BenchProcess& process)
{
    WakeUps wakeUps;
    for (const auto& thread :
         std::filesystem::directory_iterator(procDirectory(process) / "task")) {
        std::ifstream name(thread.path() / "comm");
        std::string text;
        std::getline(name, text);
        if (text.rfind("launcher", 0) != 0) continue;
        ++wakeUps.threads;
        for (const char* const key : {"voluntary_ctxt_switches", "nonvoluntary_ctxt_switches"}) {
            wakeUps.count += readStatus(thread.path() / "status", key);
        }
    }
    return wakeUps;
}

}  // namespace

std::vector<LaunchResults> measureLaunches(const Hosts& hosts, const std::vector<Setting>& settings,
                                           int rounds)
{
    return measureRounds<LaunchResults>(settings, rounds, [&hosts](LaunchResults& results) {
        const Setting& setting = results.setting;
        const auto step = [&hosts](const Command& command, LaunchResults::Host& host) {
            return [&hosts, command, &host] { launch(hosts, command, host); };
        };
        std::vector<Step> steps{
            step(hosts.launcher(setting, Service::Returns, Files::InMemory), results.launcher),
            step(hosts.floor(setting, Service::Returns), results.floor),
            step(hosts.java(setting), results.java),
            step(hosts.launcher(setting, Service::Returns, Files::OnDisk), results.launcherOnDisk),
            step(hosts.launcher(setting, Service::Map, Files::InMemory), results.launcherWithMap),
            step(hosts.floor(setting, Service::Returns), results.floorAgain),
        };
        if (hosts.hasJsvc()) {
            steps.emplace_back([&] { launchJsvc(hosts, hosts.jsvc(setting), results.jsvc); });
        }
        return steps;
    });
}

std::vector<StopResults> measureStops(const Hosts& hosts, const std::vector<Setting>& settings,
                                      int rounds)
{
    return measureRounds<StopResults>(settings, rounds, [&hosts](StopResults& results) {
        const Setting& setting = results.setting;
        const auto step = [&hosts](const Command& command, StopResults::Host& host) {
            return [&hosts, command, &host] { stop(hosts, command, host); };
        };
        return std::vector<Step>{
            step(hosts.launcher(setting, Service::Waits, Files::NoLog), results.launcher),
            step(hosts.floor(setting, Service::Waits), results.floor),
            step(hosts.launcher(setting, Service::Waits, Files::OnDisk), results.launcherWithLog),
            step(hosts.floor(setting, Service::Waits), results.floorAgain),
            [&] { results.syncMillis.push_back(measureSync(hosts)); },
        };
    });
}

std::vector<IdleResult> measureIdle(const Hosts& hosts, const std::vector<Setting>& settings,
                                    std::chrono::seconds duration)
{
    hosts.tidyUp();
    std::vector<std::unique_ptr<BenchProcess>> services;
    for (const Setting& setting : settings) {
        services.push_back(std::make_unique<BenchProcess>(
            hosts.launcher(setting, Service::Waits, Files::InMemory), hosts.errors()));
        services.back()->waitForEntry();
    }
    std::this_thread::sleep_for(kSettling);
    std::vector<WakeUps> before(services.size());
    std::transform(services.begin(), services.end(), before.begin(),
                   [](const auto& service) { return countWakeUps(*service); });
    std::this_thread::sleep_for(duration);

    std::vector<IdleResult> results;
    for (std::size_t i = 0; i < services.size(); ++i) {
        const WakeUps after = countWakeUps(*services[i]);
        if (after.threads == 0 || after.threads != before[i].threads) {
            throw std::runtime_error("the launcher's threads are not those of before");
        }
        const double minutes = std::chrono::duration<double, std::ratio<60>>(duration).count();
        const auto wakeUps = static_cast<double>(after.count - before[i].count);
        results.push_back({settings[i], wakeUps / minutes, after.threads});
        services[i]->signal(SIGUSR1);
        services[i]->waitForEnd();
    }
    return results;
}
