#include "Phases.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

#include "Cycle.h"
#include "Judge.h"
#include "LauncherLog.h"
#include "WaitUntil.h"
#include "Worker.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWarmUp = 60, kRequests = 300;
constexpr int kSignals[] = {SIGUSR1, SIGUSR2, SIGINT};
// In a quiet JVM it does not grow at all; a leak of half a KB for each request
// is more than this.
constexpr long kMostGrowthKb = 128;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The value of a line of /proc/<pid>/status; empty when there is none.
std::string procStatus(pid_t pid, const std::string& name)
{
    std::istringstream lines(readText("/proc/" + std::to_string(pid) + "/status"));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name + ":\t")) return line.substr(name.size() + 2);
    }
    return {};
}

/// Memory that is no file's; 0 when the process is gone.
long ownMemoryKb(pid_t pid)
{
    return std::atol(procStatus(pid, "RssAnon").c_str());
}

/// How many entries a directory of /proc/<pid> has.
std::ptrdiff_t procEntries(pid_t pid, const std::string& directory)
{
    const std::filesystem::path process = "/proc/" + std::to_string(pid);
    return std::distance(std::filesystem::directory_iterator(process / directory), {});
}

Plan planTogether(int index, const std::map<int, std::string>& jdks)
{
    const auto jdk = std::next(jdks.begin(), index % static_cast<int>(jdks.size()));
    Plan plan(static_cast<std::uint64_t>(index), jdk->first, jdk->second);
    plan.jvmOptions = "-Xmx16m -XX:+UseSerialGC -XX:TieredStopAtLevel=1";
    Action stop;
    stop.byPidFile = true;
    stop.moment = Moment::kReady;
    plan.actions.push_back(stop);
    return plan;
}

std::string faultsTogether(const Cycle& cycle)
{
    if (cycle.hung()) return cycle.plan().toText() + ": has not ended in time\n";
    const Verdict verdict = judge(cycle);
    if (verdict.faults.empty() && cycle.serviceStatus() == 0) return {};
    return verdict.toText(cycle);
}

/// One after the other, so that none is merged with the one before.
bool sendRequests(pid_t pid, int number)
{
    for (int i = 0; i < number; ++i) {
        kill(pid, kSignals[i % 3]);
        const bool taken = waitUntil([pid] {
            return procStatus(pid, "ShdPnd").find_first_not_of('0') == std::string::npos;
        });
        if (!taken) return false;
    }
    std::this_thread::sleep_for(std::chrono::seconds(1));  // what they set off is done
    return true;
}

/// As quiet as a JVM gets: no compiler, and the whole heap from the start.
LauncherRun quietService(const std::filesystem::path& launcher, const std::string& library,
                         const std::filesystem::path& directory)
{
    LauncherRun run(directory, "start --pidfile service.pid --clog launcher.log");
    run.program(launcher).arg("--jvmdll=" + library);
    run.arg(std::string("--jclasspath=") + SERVICE_JAR).arg("--jifaceclass=service.Service$NoStop");
    for (const char* option :
         {"-Xint", "-XX:+UseSerialGC", "-Xms16m", "-Xmx16m", "-XX:+AlwaysPreTouch",
          "-XX:-UsePerfData", "-Dstart=ready,until:go"}) {
        run.arg(std::string("--jvmopt=") + option);
    }
    return run;
}

}  // namespace

bool runTogether(int number, const std::filesystem::path& launcher,
                 const std::map<int, std::string>& jdks, const std::filesystem::path& directory)
{
    const std::chrono::seconds limit(60 + 2 * number);
    const Clock::time_point start = Clock::now();
    std::vector<std::unique_ptr<Cycle>> cycles;
    for (int i = 0; i < number; ++i) {
        const std::filesystem::path own = directory / std::to_string(i);
        std::filesystem::create_directories(own);
        cycles.push_back(std::make_unique<Cycle>(planTogether(i, jdks), launcher, own, limit));
        cycles.back()->start();
    }
    for (const auto& cycle : cycles) cycle->waitFor(Moment::kReady);
    const double readySeconds = secondsSince(start);
    long memoryKb = 0;
    for (const auto& cycle : cycles) memoryKb += ownMemoryKb(cycle->firstPid());

    const Clock::time_point stop = Clock::now();
    for (const auto& cycle : cycles) cycle->performActions();
    for (const auto& cycle : cycles) cycle->waitForEnd();
    std::printf(
        "%d services: all ready after %.1f s, with %ld MB of their own, all stopped %.1f s "
        "later\n",
        number, readySeconds, memoryKb / 1024, secondsSince(stop));

    std::string faults;
    for (const auto& cycle : cycles) faults += faultsTogether(*cycle);
    std::cout << faults << std::flush;
    return faults.empty();
}

bool measureGrowth(const std::filesystem::path& launcher,
                   const std::pair<const int, std::string>& jdk,
                   const std::filesystem::path& directory)
{
    std::filesystem::create_directory(directory);
    const LauncherProcess process = quietService(launcher, jdk.second, directory).start();
    const pid_t pid = process.pid;
    bool done = waitUntil([&] { return std::filesystem::exists(directory / "ready"); });
    done = done && sendRequests(pid, kWarmUp);
    const std::ptrdiff_t descriptors = procEntries(pid, "fd"), threads = procEntries(pid, "task");
    const long memoryKb = ownMemoryKb(pid);
    done = done && sendRequests(pid, kRequests);
    const auto moreDescriptors = procEntries(pid, "fd") - descriptors;
    const auto moreThreads = procEntries(pid, "task") - threads;
    const long growthKb = ownMemoryKb(pid) - memoryKb;
    std::ofstream(directory / "go").flush();
    const int status = process.waitForExit().status;
    std::printf(
        "JDK %d, %d requests without an effect: %td + %td descriptors, %td + %td threads, "
        "%ld + %ld KB\n",
        jdk.first, kRequests, descriptors, moreDescriptors, threads, moreThreads, memoryKb,
        growthKb);

    bool logged = true;
    const LauncherLog log(directory / "launcher.log");
    for (const std::string signal : {"SIGUSR1", "SIGUSR2", "SIGINT"}) {
        logged = logged && log.count("INFO " + signal + " has risen") == (kWarmUp + kRequests) / 3;
    }
    if (!done) std::printf("  the requests were not taken\n");
    if (!logged) std::printf("  not each of the requests is in the log\n");
    if (status != 0) std::printf("  the service ended with %d\n", status);
    const bool grew = moreDescriptors != 0 || moreThreads != 0 || growthKb > kMostGrowthKb;
    if (grew) std::printf("  the service has grown\n");
    return done && logged && status == 0 && !grew;
}
