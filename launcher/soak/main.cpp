// launcher_soak: starts and stops a service at random moments, and checks what
// must always hold. scripts/soak runs it.
//
//     launcher_soak LAUNCHER DIRECTORY/SEED           a cycle by the plan of the seed
//     launcher_soak LAUNCHER DIRECTORY/SEED together  one of many services at once
//     launcher_soak LAUNCHER                          what ignored requests cost
//
// A cycle prints one line: result, end of the service, how far that had come at each
// request, seed and plan. What was wrong goes to standard error; the files stay then.

#include <array>
#include <iostream>

#include "Judge.h"

namespace {

namespace fs = std::filesystem;

bool runCycle(const fs::path& launcher, bool isOneOfMany)
{
    const std::string seed = fs::current_path().filename();
    const Plan plan = drawPlan(std::stoul(seed), isOneOfMany);
    Cycle cycle(plan, launcher);
    cycle.run();
    const JudgedCycle judged(cycle);
    const bool passed = judged.faults.empty();
    std::cout << (passed ? "passed " : "FAILED ") + judged.end + " [" + judged.seen + "] " + seed +
                     " " + plan.toText() + "\n";
    std::cerr << (passed ? "" : "-- " + fs::current_path().string() + ":\n" + judged.faults);
    return passed;
}

constexpr int kSignals[] = {SIGUSR1, SIGUSR2, SIGINT};
// A quiet JVM does not grow at all; a leak of half a kB for each request is more.
constexpr long kMostGrowthKb = 128;

/// Descriptors, threads, and kB of memory that is no file's, after so many requests.
std::array<long, 3> usageAfter(int requests, pid_t pid)
{
    const fs::path process = "/proc/" + std::to_string(pid);
    const auto status = [&] { return readText(process / "status"); };
    for (int i = 0; i < requests; ++i) {
        kill(pid, kSignals[i % 3]);
        // Until it is taken, so that it is not merged with the next.
        const bool taken = waitUntil(
            [&] { return status().find("ShdPnd:\t0000000000000000\n") != std::string::npos; });
        if (!taken || interrupted != 0) throw std::runtime_error("a request was not taken");
    }
    std::this_thread::sleep_for(std::chrono::seconds(1));  // what they set off is done
    const long descriptors = std::distance(fs::directory_iterator(process / "fd"), {});
    const long threads = std::distance(fs::directory_iterator(process / "task"), {});
    const long memory = std::stol(status().substr(status().find("RssAnon:") + 8));
    std::cout << requests << " ignored requests: " << descriptors << " descriptors, " << threads
              << " threads, " << memory << " kB" << std::endl;
    return {descriptors, threads, memory};
}

/// False when a service without stop methods has grown by requests, or failed.
bool measureGrowth(const fs::path& launcher, const Jdk& jdk)
{
    const ScopedTempDir dir;
    LauncherRun run(dir.path(), "start --jifaceclass service.Service$NoStop");
    run.program(launcher).arg("--jvmdll=" + jdk.second);
    run.arg(std::string("--jclasspath=") + SERVICE_JAR).arg("--jvmopt=-Dstart=ready,until:go");
    // As quiet as a JVM gets: no compiler, and the whole heap from the start.
    run.args("--jvmopt -Xint --jvmopt -XX:+UseSerialGC --jvmopt -Xms16m --jvmopt -Xmx16m");
    run.args("--jvmopt -XX:+AlwaysPreTouch --jvmopt -XX:-UsePerfData");
    const LauncherProcess service = run.start();
    const bool isReady = waitUntil([&] { return fs::exists(dir / "ready"); });
    const auto before = usageAfter(60, service.pid), after = usageAfter(300, service.pid);
    dir.write("go", "");
    return service.waitForExit().status == 0 && isReady && before[0] == after[0] &&
           before[1] == after[1] && after[2] - before[2] <= kMostGrowthKb;
}

}  // namespace

int main(int argc, char** argv)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, [](int number) { interrupted = number; });
    }
    bool passed = true;
    try {
        if (argc == 2) {
            for (const Jdk& jdk : installedJdks()) passed = measureGrowth(argv[1], jdk) && passed;
        } else {
            const fs::path launcher = fs::absolute(argv[1]), directory = fs::absolute(argv[2]);
            fs::remove_all(directory);
            fs::create_directories(directory);
            fs::current_path(directory);
            passed = runCycle(launcher, argc > 3);
            if (passed) fs::remove_all(directory);
        }
    } catch (const std::exception& e) {
        std::cerr << "-- " + fs::current_path().string() + ": " + e.what() + "\n";
        passed = false;
    }
    ChildProcesses::killAll();
    return passed ? 0 : 1;
}
