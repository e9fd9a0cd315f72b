// launcher_soak: starts and stops services for as long as it takes to meet the
// rare moments, and checks all that can be seen of each. scripts/soak runs it.
//
//     launcher_soak LAUNCHER KEPT CYCLES SEED JOBS TOGETHER GROWTH
//
// CYCLES cycles, JOBS at a time, the first with SEED and each next one with the
// next; then TOGETHER services at once; then, if GROWTH is not 0, what stop
// requests without an effect cost. The files of cycles that fail are kept in
// the directory KEPT.

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>

#include "ChildProcesses.h"
#include "Cycle.h"
#include "Jdk.h"
#include "Judge.h"
#include "Phases.h"
#include "Plan.h"
#include "ScopedTempDir.h"
#include "Summary.h"
#include "Worker.h"

namespace {

using Clock = std::chrono::steady_clock;
using Jdks = std::map<int, std::string>;

constexpr std::chrono::seconds kCycleLimit{60};
constexpr int kProgressStep = 100;

volatile std::sig_atomic_t interruptedBy = 0;

struct Options {
    std::filesystem::path launcher, kept;
    int cycles, jobs, together;
    bool measuresGrowth;
    std::uint64_t seed;
};

Options readOptions(int argc, char** argv)
{
    if (argc != 8) throw std::invalid_argument("takes 7 arguments");
    Options options;
    options.launcher = std::filesystem::canonical(argv[1]);
    options.kept = std::filesystem::absolute(argv[2]);
    options.cycles = std::stoi(argv[3]);
    options.seed = std::stoull(argv[4]);
    options.jobs = std::stoi(argv[5]);
    options.together = std::stoi(argv[6]);
    options.measuresGrowth = std::stoi(argv[7]) != 0;
    return options;
}

void becomeInterruptible()
{
    struct sigaction action {};
    action.sa_handler = [](int signal) { interruptedBy = signal; };
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
}

void throwIfInterrupted()
{
    if (interruptedBy == 0) return;
    Worker::killAll();  // before their files go
    throw std::runtime_error("interrupted");
}

/// Tells of a cycle that failed, and keeps its files.
void report(const Cycle& cycle, const Verdict& verdict, const std::filesystem::path& kept)
{
    const std::string seed = std::to_string(cycle.plan().seed);
    std::string text = "-- failed, seed " + seed + ": " + verdict.toText(cycle);
    const std::filesystem::path copy = kept / seed;
    std::filesystem::remove_all(copy);
    std::filesystem::create_directories(kept);
    std::filesystem::copy(cycle.directory(), copy, std::filesystem::copy_options::recursive);
    text += "   files: " + copy.string() + "\n   again: scripts/soak --seed " + seed +
            " --together 0 1\n";
    std::cout << text << std::flush;
}

/// One cycle, whole, in a worker; leaves its contribution to the summary in a
/// file.
bool runCycle(const Options& options, const Plan& plan, const std::filesystem::path& directory)
{
    std::filesystem::create_directory(directory);
    setenv("TMPDIR", directory.c_str(), 1);
    Cycle cycle(plan, options.launcher, directory, kCycleLimit);
    cycle.start();
    cycle.performActions();
    cycle.waitForEnd();

    Verdict verdict;
    if (cycle.hung()) {
        verdict.faults.push_back("not ended in time:\n" + Worker::describeChildren());
    } else {
        verdict = judge(cycle);
    }
    const std::string left = Worker::killAll();
    if (!left.empty()) verdict.faults.push_back("left running: " + left);
    std::ofstream(directory.string() + ".summary") << Summary::contribution(cycle, verdict.end);
    if (verdict.faults.empty()) return true;
    report(cycle, verdict, options.kept);
    return false;
}

/// Waits for the end of any of the workers; gives it with whether it was well.
std::pair<pid_t, bool> waitForAny(const std::map<pid_t, std::uint64_t>& workers)
{
    for (;;) {
        throwIfInterrupted();
        ChildProcesses::reap();
        for (const auto& [pid, seed] : workers) {
            const auto ended = ChildProcesses::ended.find(pid);
            if (ended != ChildProcesses::ended.end()) {
                return {pid, ChildProcesses::ended.extract(ended).mapped() == 0};
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

/// The number of cycles that failed.
int runCycles(const Options& options, const Jdks& jdks, const ScopedTempDir& files)
{
    const Clock::time_point start = Clock::now();
    Summary summary;
    std::map<pid_t, std::uint64_t> workers;  // with their seeds
    int failed = 0;
    for (int started = 0, ended = 0; ended < options.cycles;) {
        if (started < options.cycles && static_cast<int>(workers.size()) < options.jobs) {
            const std::uint64_t seed = options.seed + static_cast<unsigned>(started++);
            const Plan plan = drawPlan(seed, jdks);
            const std::filesystem::path directory = files / std::to_string(seed);
            workers[Worker::start([&] { return runCycle(options, plan, directory); })] = seed;
            continue;
        }
        const auto [pid, passed] = waitForAny(workers);
        const std::string directory = files / std::to_string(workers.extract(pid).mapped());
        if (!passed) ++failed;
        summary.add(readText(directory + ".summary"));
        std::filesystem::remove_all(directory);
        std::filesystem::remove(directory + ".summary");
        if (++ended % kProgressStep == 0) {
            std::cout << ended << " of " << options.cycles << ", failed: " << failed << std::endl;
        }
    }
    const std::chrono::duration<double> seconds = Clock::now() - start;
    std::cout << summary.toText();
    std::printf("%d cycles in %.0f s, failed: %d\n", options.cycles, seconds.count(), failed);
    return failed;
}

/// A phase of its own, in a worker.
bool runPhase(const std::function<bool()>& body)
{
    return waitForAny({{Worker::start(body), 0}}).second;
}

bool runAll(const Options& options)
{
    const Jdks jdks = installedJdks();
    if (jdks.empty()) throw std::runtime_error("no JDK found");
    const ScopedTempDir files;
    setenv("TMPDIR", files.path().c_str(), 1);
    bool passed = options.cycles == 0 || runCycles(options, jdks, files) == 0;
    if (options.together > 0) {
        passed =
            runPhase([&] {
                return runTogether(options.together, options.launcher, jdks, files / "together");
            }) &&
            passed;
    }
    for (const auto& jdk : jdks) {
        if (!options.measuresGrowth) break;
        const std::filesystem::path directory = files / ("growth" + std::to_string(jdk.first));
        passed =
            runPhase([&] { return measureGrowth(options.launcher, jdk, directory); }) && passed;
    }
    return passed;
}

}  // namespace

int main(int argc, char** argv)
{
    becomeInterruptible();
    int status = 1;
    try {
        status = runAll(readOptions(argc, argv)) ? 0 : 1;
    } catch (const std::exception& e) {
        std::cerr << "error: " << e.what() << '\n';
    }
    ChildProcesses::killAll();
    return interruptedBy == 0 ? status : 128 + interruptedBy;
}
