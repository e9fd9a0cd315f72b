// launcher_faults: lets calls of the launcher fail, one in each run, and judges
// what comes of it.
//
//   plan quick   lists the rows to run: the likeliest errors of every way to a
//                call, the first and the last time that it is gone, with one JDK
//   plan all     the same, with all errors in every scenario and with all JDKs
//   calls        names the calls that can be let fail
//   run ROW      runs the row and tells what came of it; fails, and names the
//                places in the sources, when that must never happen
//
// A row is: scenario, function@way#pass, and error.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Calls.h"
#include "ChildProcesses.h"
#include "LauncherLog.h"
#include "LauncherRun.h"
#include "Scenarios.h"
#include "ScopedTempDir.h"
#include "WaitUntil.h"

namespace {

namespace fs = std::filesystem;
using ChildProcesses::ended;

constexpr std::chrono::seconds kPatience{20};

/// What came of a run.
struct Outcome {
    int status = 0;        ///< of the detached launcher, if there is one
    std::string text;      ///< what the launcher has printed, but for the startup header
    bool worked = false;   ///< the work of the scenario was done
    std::string problem;   ///< what must not happen whatever fails; empty for nothing
    bool logged = false;   ///< the log holds an error
    std::string faultLog;  ///< of the shim

    void blame(bool happened, const std::string& what)
    {
        if (happened && problem.empty()) problem = what;
    }
};

bool allHaveEnded()
{
    return !ChildProcesses::reap();
}

/// Commands of a scenario, with kShell.
LauncherRun shell(const ScopedTempDir& dir, const Scenario& scenario, const std::string& commands)
{
    LauncherRun run(dir.path(), "-c");
    run.arg("eval \"$commands\"").program("/bin/sh").env("commands", kShell + commands);
    run.env("program", scenario.program).env("jvm", scenario.jvm).env("pidfile", kPidFile);
    run.env("shim", FAULT_SHIM).env("service_jar", SERVICE_JAR).env("inventory", FAKE_INVENTORY);
    return run;
}

/// The process beside the launcher, once it is ready; 0 for none. A launcher
/// that is to stop it looks for its PID file among its arguments.
LauncherProcess startTarget(const Scenario& scenario, const ScopedTempDir& dir)
{
    if (scenario.target.empty()) return {};
    LauncherRun run = shell(dir, scenario, scenario.target).args("target --pidfile").arg(kPidFile);
    LauncherProcess target = run.start();
    const auto runs = [&] { return readText(dir / kPidFile) == std::to_string(target.pid); };
    if (!waitUntil(runs, kPatience)) throw std::runtime_error("no process to stop");
    return target;
}

/// Stops the service as soon as it is ready.
void stopWhenReady(const ScopedTempDir& dir, pid_t launcher, Outcome& outcome)
{
    const auto isReady = [&] { return fs::exists(dir / "ready"); };
    const bool ends = waitUntil([&] { return isReady() || allHaveEnded(); }, kPatience);
    outcome.blame(!ends, "does not start");
    if (!isReady()) return;
    pid_t service = launcher;
    std::istringstream children(readText("/proc/thread-self/children"));
    for (pid_t pid = 0; children >> pid;) service = pid == launcher ? service : pid;  // detached
    const bool hasPidFile = readText(dir / kPidFile) == std::to_string(service);
    kill(service, SIGUSR1);
    outcome.blame(!hasPidFile && !allHaveEnded(), "serves without its PID file");
}

/// What was printed but for the startup header and the JVM's warnings.
std::string withoutHeader(const std::string& printed)
{
    static const std::regex kHeaders("[^\n]*( \\(launcher 3\\.| Server VM warning: )[^\n]*\n");
    return std::regex_replace(printed, kHeaders, "");
}

/// Waits for the end of all but the target, and of that, too, if the launcher
/// says that it has stopped it. Whether that one lives.
bool waitForEnd(const LauncherProcess& launcher, pid_t target, Outcome& outcome)
{
    const auto isOver = [&] {
        return allHaveEnded() || (target != 0 && ended.contains(launcher.pid));
    };
    outcome.blame(!waitUntil(isOver, kPatience), "does not end");
    outcome.text =
        withoutHeader(readText(*launcher.streams / "err") + readText(*launcher.streams / "out"));
    if (target == 0) return false;
    const bool succeeded = ended.contains(launcher.pid) && ended[launcher.pid] == 0;
    const bool saysStopped =
        succeeded && (outcome.text.empty() || outcome.text.starts_with("Launcher with PID"));
    const bool saysGone = outcome.text.find("not found, nothing was stopped") != std::string::npos;
    const bool lives =
        !ended.contains(target) && !(saysStopped && waitUntil(allHaveEnded, kPatience));
    outcome.blame(lives && (saysStopped || saysGone), "takes a process for gone that runs");
    return lives;
}

/// The process id and the status of the one that was started, or of the detached
/// one; kills all that have not ended by themselves.
std::pair<pid_t, int> endProcesses(pid_t launcher, pid_t target, Outcome& outcome)
{
    ChildProcesses::killAll();
    ended.erase(target);
    const auto own = ended.extract(launcher);
    const int status = own ? own.mapped() : -SIGKILL;
    const std::map<pid_t, int> detached = std::exchange(ended, {});
    if (detached.empty()) return {launcher, status};
    outcome.blame(status != 0, "fails with a detached launcher");
    return *detached.begin();
}

/// `fault` is for the shim; empty for a run that fails nowhere.
Outcome perform(const Scenario& scenario, const std::string& fault)
{
    const ScopedTempDir dir;
    const LauncherProcess target = startTarget(scenario, dir);
    LauncherRun run = shell(dir, scenario, scenario.command);
    run.env("FAULT", fault).env("FAULT_LOG", dir / "faults").env("FAKE_JVM_KEEPS", dir / kPidFile);
    const LauncherProcess launcher = run.env("target", std::to_string(target.pid)).start();
    Outcome outcome;
    if (scenario.waits) stopWhenReady(dir, launcher.pid, outcome);
    const bool targetLives = waitForEnd(launcher, target.pid, outcome);
    const auto [pid, status] = endProcesses(launcher.pid, target.pid, outcome);
    outcome.status = status;

    outcome.faultLog = readText(dir / "faults");
    const LauncherLog log(dir / "logs/launcher.log");
    outcome.logged = log.holds("ERROR ");
    outcome.blame(!log.malformed.empty(), "leaves a malformed log");
    const bool isRedirected = fs::exists(dir / "out.txt") && status == scenario.status;
    outcome.blame(isRedirected && !outcome.text.empty(), "prints elsewhere");
    outcome.text.insert(0, withoutHeader(readText(dir / "err.txt") + readText(dir / "out.txt")));
    outcome.worked = shell(dir, scenario, scenario.works).run().status == 0 &&
                     !(targetLives && scenario.status == 0);
    const std::string kept = dir / kPidFile + ".kept";  // when the JVM was to be created
    const bool createsJvm = fs::exists(kept), isOwner = readText(kept) == std::to_string(pid);
    outcome.blame(createsJvm && !isOwner, "goes on without its PID file");
    outcome.blame(createsJvm && targetLives, "starts beside another");
    LauncherRun next(dir.path(), "start --jifaceclass none --jclasspath . --pidfile");
    next.arg(kPidFile).arg("--jvmdll").arg(FAKE_JVM);
    const bool isInTheWay = fs::exists(dir / kPidFile) && next.run().status != 4;
    outcome.blame(isInTheWay, "leaves a PID file that forbids a start");
    return outcome;
}

/// What comes of faults because it is required, though it is no good.
const std::set<std::pair<std::string, std::string>> kRequired{
    // What a full disk takes of the log is lost.
    {"fflush", "leaves a malformed log"},
    {"fclose", "leaves a malformed log"},
    // A text that cannot be converted is empty, also an argument or a path.
    {"iconv_open", "serves without its PID file"},
    {"iconv_open", "goes on without its PID file"},
    {"iconv_open", "takes a process for gone that runs"},
};

/// What must never come of a fault in `function`; empty for nothing.
std::string findProblem(const Scenario& scenario, const Outcome& outcome,
                        const std::string& function)
{
    if (!outcome.problem.empty()) return outcome.problem;
    if (outcome.status < 0) return "killed by signal " + std::to_string(-outcome.status);
    const int code = outcome.status % 100;  // without the base of a detached launcher
    if (code > 12 && code != 20 && code != 21) return "ends with a status of no meaning";
    const bool isUsual = std::regex_match(outcome.text, std::regex(scenario.text));
    const bool isMute = function == "fputs";  // what cannot be printed cannot be told
    if (outcome.status == scenario.status && outcome.worked && (isUsual || isMute)) return "";
    if (outcome.text.empty() || outcome.text.starts_with('\n')) {
        return outcome.logged ? "tells the log alone" : "does not tell why";
    }
    return isUsual && !outcome.worked ? "tells what is not so" : "";
}

bool isHarmless(const Scenario& scenario, const Outcome& outcome)
{
    return outcome.status == scenario.status && outcome.worked &&
           (outcome.text.empty() || std::regex_match(outcome.text, std::regex(scenario.text)));
}

std::string functionOf(const std::string& call)
{
    return call.substr(0, call.find('@'));
}

std::vector<int> errorsOf(const std::string& function)
{
    for (const Call& call : kCalls) {
        if (function != call.name) continue;
        return {call.errors.begin(), std::find(call.errors.begin(), call.errors.end(), 0)};
    }
    throw std::runtime_error("no errors of " + function);
}

/// Adds to `planned`; with `all`, plans what is there, too.
void planScenario(const Scenario& scenario, bool all, std::set<std::string>& planned)
{
    const Outcome outcome = perform(scenario, "");
    const std::string problem = findProblem(scenario, outcome, "");
    if (!problem.empty() || !isHarmless(scenario, outcome)) {
        const std::string end = problem + ", status " + std::to_string(outcome.status);
        throw std::runtime_error(scenario.name + " fails without a fault: " + end);
    }
    std::vector<std::string> calls;  // in the order of their first pass
    std::map<std::string, unsigned> passes;
    std::istringstream lines(outcome.faultLog);
    for (std::string call; std::getline(lines, call);) {
        if (++passes[call] == 1) calls.push_back(call);
    }
    for (const std::string& call : calls) {
        if (!planned.insert(scenario.program + call).second && !all) continue;
        std::vector<int> errors = errorsOf(functionOf(call));
        if (!all) errors.resize(std::min<std::size_t>(errors.size(), 2));
        for (const unsigned pass : std::set<unsigned>{1, passes[call]}) {
            for (const int error : errors) {
                std::printf("%s %s#%u %s\n", scenario.name.c_str(), call.c_str(), pass,
                            strerrorname_np(error));
            }
        }
    }
}

/// Whether the row came out well.
bool run(const std::string& name, const std::string& call, const std::string& error)
{
    const std::vector<Scenario> all = scenarios(true);
    const auto scenario = std::find_if(all.begin(), all.end(),
                                       [&](const Scenario& other) { return other.name == name; });
    const std::string function = functionOf(call);
    const std::vector<int> errors = errorsOf(function);
    const auto number = std::find_if(errors.begin(), errors.end(),
                                     [&](int other) { return error == strerrorname_np(other); });
    if (scenario == all.end() || number == errors.end()) {
        throw std::runtime_error("no such row: " + name + " " + call + " " + error);
    }
    const Outcome outcome = perform(*scenario, call + " " + std::to_string(*number));
    const std::string problem = findProblem(*scenario, outcome, function);
    const bool isRequired = kRequired.count({function, problem}) != 0;
    const char* const verdict = isRequired                       ? "required"
                                : !problem.empty()               ? "FAILED"
                                : outcome.faultLog != "failed\n" ? "unreached"
                                : isHarmless(*scenario, outcome) ? "harmless"
                                                                 : "message";
    const bool isWell = problem.empty() || isRequired;
    const std::string place =
        isWell ? "" : shell(ScopedTempDir(), *scenario, "place " + call).run().out;
    std::printf("%-9s %-15s %-45s %-12s %4d  %s%s%s  %s\n", verdict, name.c_str(), call.c_str(),
                error.c_str(), outcome.status, problem.c_str(), problem.empty() ? "" : "; ",
                outcome.text.substr(0, outcome.text.find('\n')).c_str(), place.c_str());
    return isWell;
}

}  // namespace

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);  // nothing for a child to write again
    const std::vector<std::string> words(argv + 1, argv + argc);
    const std::string task = words.empty() ? "" : words[0];
    try {
        if (task == "run" && words.size() == 4) return run(words[1], words[2], words[3]) ? 0 : 1;
        if (task == "plan" && words.size() == 2) {
            const bool all = words[1] == "all";
            std::set<std::string> planned;
            for (const Scenario& each : scenarios(all)) planScenario(each, all, planned);
        } else if (task == "calls") {
            for (const Call& call : kCalls) std::printf("%s\n", call.name);
        } else {
            throw std::runtime_error("launcher_faults plan quick|all, calls, or run ROW");
        }
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "error: %s\n", e.what());
        return 2;
    }
}
