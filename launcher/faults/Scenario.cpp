#include "Scenario.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <tuple>
#include <utility>

#include "ChildProcesses.h"
#include "LauncherLog.h"
#include "WaitUntil.h"

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kPatience{20};
// No ASCII: the launcher has to convert it, what is beyond U+FFFF by iconv.
constexpr char kPidFile[] = "служба😀.pid";
constexpr char kStalePid[] = "999999999";

void addProblem(std::string& problem, const std::string& text)
{
    if (problem.empty()) problem = text;
}

bool allHaveEnded()
{
    return !ChildProcesses::reap();
}

/// Where a service starts: what an earlier one has left, and its class path.
void prepareStart(const ScopedTempDir& dir)
{
    if (!fs::exists(dir / kPidFile)) dir.write(kPidFile, kStalePid);
    const std::string log = dir.write("logs/launcher.log", "");
    std::ignore = chown(log.c_str(), 65534, 65534);  // of another user, where that can be
    dir.write("jars/notes.txt", "no part of the class path");
    fs::create_symlink(SERVICE_JAR, dir / "jars/service.jar");
}

LauncherRun start(const ScopedTempDir& dir, const std::string& library, const std::string& args)
{
    prepareStart(dir);
    LauncherRun run(dir.path(), "start --clog logs/launcher.log --jclasspath");
    run.arg(dir / "jars/*.jar")
        .args("--jifaceclass service.Service --jvmdll")
        .arg(library)
        .args("--pidfile")
        .arg(kPidFile);
    return run.args(args);
}

LauncherRun startFake(const ScopedTempDir& dir, const std::string& args)
{
    const std::string path = dir.path();
    LauncherRun run = start(dir, FAKE_JVM, "--jvmopt -Xmx99m --cout out.txt --cerr err.txt");
    run.env("JVM_OPTS", "--jvmopt -Dx=1")
        .env("NOTIFY_SOCKET", "@nobody")
        .args("--instance " + path);
    return run.args("--workdir " + path + "/new/place " + args);
}

/// An installed launcher with files of its own, which finds Java in JAVA_HOME.
LauncherRun startInstalled(const ScopedTempDir& dir)
{
    prepareStart(dir);
    dir.write("bin/launcher.yml", std::string(R"(launcher-parameters:
  service-name: hello
  class-path: ${instance.root}/jars
  module-path: ${instance.root}/jars/service.jar
  main-class: service.Service
  pid-file: ${instance.root}/)") + kPidFile +
                                      R"(
  log-file: ${launcher.dir}/../logs/launcher.log
  work-dir: ${instance.root}/work
)");
    dir.write("ini/hello", "JAVA_OPT=-Xmx99m\n");
    dir.write("java/release", "JAVA_VERSION=\"17\"\nOS_ARCH=\"x86_64\"\n");
    fs::create_directories(dir / "java/lib/server");
    fs::create_symlink(FAKE_JVM, dir / "java/lib/server/libjvm.so");
    fs::create_symlink(FAKE_INVENTORY, dir / "bin/libinventory.so");
    fs::copy(LAUNCHER_WITH_LOCAL_INI, dir / "bin/launcher");
    LauncherRun run(dir.path(), "start --instance " + dir.path().string());
    return run.program(dir / "bin/launcher").env("JAVA_HOME", dir / "java");
}

/// The process that is to be stopped, once it can be.
LauncherProcess startTarget(Target kind, const ScopedTempDir& dir)
{
    if (kind == Target::None) return {};
    const std::string word = kind == Target::Obeys ? "obey" : "ignore";
    LauncherRun run(dir.path(), "target " + word + " --pidfile");
    LauncherProcess target = run.arg(kPidFile).program("/proc/self/exe").start();
    const auto runs = [&] { return readText(dir / kPidFile) == std::to_string(target.pid); };
    if (!waitUntil(runs, kPatience)) throw std::runtime_error("no process to stop");
    return target;
}

/// The launcher that serves: the detached one, if there is one.
pid_t servingProcess(pid_t launcher)
{
    std::istringstream children(readText("/proc/thread-self/children"));
    for (pid_t pid = 0; children >> pid;) {
        if (pid != launcher) return pid;
    }
    return launcher;
}

/// Stops the service as soon as it is ready; tells what is wrong with it.
std::string stopWhenReady(const ScopedTempDir& dir, pid_t launcher)
{
    const auto isReady = [&] { return fs::exists(dir / "ready"); };
    if (!waitUntil([&] { return isReady() || allHaveEnded(); }, kPatience)) return "does not start";
    if (!isReady()) return "";
    const pid_t service = servingProcess(launcher);
    const bool hasPidFile = readText(dir / kPidFile) == std::to_string(service);
    kill(service, SIGUSR1);
    return hasPidFile || allHaveEnded() ? "" : "serves without its PID file";
}

/// Whether a start gets past the PID file that a run has left.
bool isStartPossible(const ScopedTempDir& dir)
{
    if (!fs::exists(dir / kPidFile)) return true;
    LauncherRun run(dir.path(), "start --jifaceclass none --pidfile");
    run.arg(kPidFile).arg("--jclasspath").arg(SERVICE_JAR).arg("--jvmdll").arg(FAKE_JVM);
    const LauncherProcess later = run.start();
    return waitUntil(allHaveEnded, kPatience) && later.waitForExit().status == 4;
}

/// What was printed but for the startup header and the JVM's warnings.
std::string withoutHeader(const std::string& printed)
{
    std::istringstream lines(printed);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        const bool counts = line.find(" (launcher 3.") == std::string::npos &&
                            line.find(" Server VM warning: ") == std::string::npos;
        if (counts) text += line + "\n";
    }
    return text;
}

std::string printedBy(const LauncherProcess& launcher)
{
    return withoutHeader(readText(*launcher.streams / "err") + readText(*launcher.streams / "out"));
}

/// The process id and the status of the one that was started, or of the detached
/// one.
std::pair<pid_t, int> lastProcess(pid_t launcher, pid_t target, std::string& problem)
{
    ChildProcesses::ended.erase(target);
    const auto ended = ChildProcesses::ended.extract(launcher);
    const int status = ended ? ended.mapped() : -SIGKILL;  // had not ended by itself
    const auto detached = std::exchange(ChildProcesses::ended, {});
    if (detached.empty()) return {launcher, status};
    if (status != 0) addProblem(problem, "fails with a detached launcher");
    return *detached.begin();
}

/// Waits for the end of all but the process to be stopped, and of that, too, if
/// the launcher has not said otherwise. Tells whether that one lives.
bool waitForEnd(const LauncherProcess& launcher, pid_t target, std::string& problem)
{
    const auto hasEnded = [](pid_t pid) { return ChildProcesses::ended.count(pid) != 0; };
    const auto launcherHasEnded = [&] {
        return allHaveEnded() || (target != 0 && hasEnded(launcher.pid));
    };
    if (!waitUntil(launcherHasEnded, kPatience)) addProblem(problem, "does not end");
    if (target == 0) return false;
    const bool succeeded = hasEnded(launcher.pid) && ChildProcesses::ended[launcher.pid] == 0;
    const std::string text = printedBy(launcher);
    const bool saysStopped = succeeded && (text.empty() || text.starts_with("Launcher with PID"));
    if (saysStopped && waitUntil(allHaveEnded, kPatience)) return false;
    const bool lives = !hasEnded(target);
    const bool saysGone = text.find("not found, nothing was stopped") != std::string::npos;
    if (lives && (saysStopped || saysGone))
        addProblem(problem, "takes a process for gone that runs");
    return lives;
}

/// What the launcher has left in its directory.
void readFiles(const Scenario& scenario, const ScopedTempDir& dir, Outcome& outcome)
{
    outcome.faultLog = readText(dir / "faults");
    outcome.worked =
        std::all_of(scenario.works.begin(), scenario.works.end(), [&](const auto& work) {
            const auto& [file, text] = work;
            return fs::exists(dir / file) && readText(dir / file).find(text) != std::string::npos;
        });
    const LauncherLog log(dir / "logs/launcher.log");
    outcome.logged = log.holds("ERROR ");
    if (!log.malformed.empty()) addProblem(outcome.problem, "leaves a malformed log");
    const bool isRedirected = fs::exists(dir / "out.txt") && outcome.status == scenario.status;
    if (isRedirected && !outcome.text.empty()) addProblem(outcome.problem, "prints elsewhere");
    outcome.text.insert(0, withoutHeader(readText(dir / "err.txt") + readText(dir / "out.txt")));
}

std::string targetFile;

Scenario helpScenario(const std::string& name, const std::string& args, const std::string& text)
{
    const auto launcher = [args](const ScopedTempDir& dir, pid_t) {
        return LauncherRun(dir.path(), "help").args(args);
    };
    return {.name = name, .text = text, .works = {}, .launcher = launcher};
}

/// A stop; of `args`, the last one lacks its value.
Scenario stopScenario(const std::string& name, Target target, const std::string& args,
                      bool hasPidfd = true)
{
    Scenario scenario{.name = name,
                      .text = "Launcher with PID=[0-9]+ ",
                      .works = {},
                      .launcher = [args](const ScopedTempDir& dir, pid_t pid) {
                          fs::create_directory(dir / "logs");
                          LauncherRun run(dir.path(), "stop --clog logs/launcher.log " + args);
                          return run.arg(args.ends_with("--pid") ? std::to_string(pid) : kPidFile);
                      }};
    scenario.target = target;
    scenario.hasPidfd = hasPidfd;
    if (target == Target::Obeys) {
        scenario.text += "stopped gracefully\n";
        scenario.works = {{"obeyed", ""}};
    } else {
        scenario.text += "was forced to stop and its PID-file was removed\n";
    }
    return scenario;
}

/// A start with a JVM that cannot be created.
Scenario fakeScenario(const std::string& name, const std::string& args)
{
    return {.name = name,
            .status = 4,
            .text = "Cannot create JVM 8 instance with library '.*\n",
            .works = {{"new/place/options", "jars/service.jar"}},
            .launcher = [args](const ScopedTempDir& dir, pid_t) { return startFake(dir, args); }};
}

/// A start beside a launcher that owns the PID file.
Scenario ownedScenario()
{
    Scenario scenario = fakeScenario("start-owned", "");
    scenario.status = 3;
    scenario.text = "PID file exists and the process with PID .* is running\n";
    scenario.works.clear();
    scenario.target = Target::Ignores;
    return scenario;
}

Scenario installedScenario()
{
    Scenario scenario = fakeScenario("start-installed", "");
    scenario.works = {{"work/options", "jars/service.jar"}, {"work/options", "jars/notes.txt"}};
    scenario.launcher = [](const ScopedTempDir& dir, pid_t) { return startInstalled(dir); };
    scenario.program = LAUNCHER_WITH_LOCAL_INI;
    return scenario;
}

/// A start with a real JVM; `works` are the files of its service.
Scenario serviceScenario(const std::string& name, const std::string& library,
                         const std::string& args, const std::vector<std::string>& works)
{
    const std::string options = "--jvmopt -XX:-UsePerfData --jvmopt -Xss16m " + args;
    Scenario scenario{.name = name,
                      .text = "",
                      .works = {},
                      .launcher = [library, options](const ScopedTempDir& dir, pid_t) {
                          return start(dir, library, options);
                      }};
    for (const std::string& file : works) scenario.works.emplace_back(file, "");
    scenario.waits = works.front() == "ready";
    return scenario;
}

}  // namespace

std::vector<Scenario> scenariosWithoutJvm()
{
    return {
        helpScenario("help", "", "Usage:\n[\\s\\S]*"),
        helpScenario("version", "--version", "Version .*\n"),
        stopScenario("stop", Target::Obeys, "--pidfile"),
        stopScenario("stop-pid", Target::Obeys, "--fast --timeout 9000 --cstd out.txt --pid"),
        stopScenario("stop-old", Target::Obeys, "--pidfile", false),
        stopScenario("kill", Target::Ignores, "--timeout 200 --pid"),
        stopScenario("kill-old", Target::Ignores, "--timeout 200 --pidfile", false),
        fakeScenario("start", ""),
        fakeScenario("start-daemon", "--daemon"),
        ownedScenario(),
        installedScenario(),
    };
}

std::vector<Scenario> scenariosWithJvm(int version, const std::string& library)
{
    const std::string name = "jvm" + std::to_string(version);
    const std::string untilStopped = "--jvmopt -Dstart=ready,wait --jvmopt -Dstop=report,release ";
    const std::vector<std::string> works{"ready", "stop.report"};
    Scenario daemon = serviceScenario(name + "-daemon", library, untilStopped + "--daemon", works);
    daemon.status = 100;
    return {
        serviceScenario(name, library, untilStopped, works), daemon,
        serviceScenario(name + "-return", library, "--jvmopt -Dstart=report", {"start.report"})};
}

Outcome perform(const Scenario& scenario, const std::string& fault)
{
    const ScopedTempDir dir;
    const LauncherProcess target = startTarget(scenario.target, dir);
    LauncherRun run = scenario.launcher(dir, target.pid);
    run.env("LD_PRELOAD", FAULT_SHIM).env("FAULT_LOG", dir / "faults");
    run.env("FAKE_JVM_KEEPS", dir / kPidFile);
    if (!scenario.hasPidfd) run.env("FAULT_NO_PIDFD", "");
    if (!fault.empty()) run.env("FAULT", fault);

    Outcome outcome;
    const LauncherProcess launcher = run.start();
    if (scenario.waits) outcome.problem = stopWhenReady(dir, launcher.pid);
    const bool targetLives = waitForEnd(launcher, target.pid, outcome.problem);
    ChildProcesses::killAll();
    const auto [pid, status] = lastProcess(launcher.pid, target.pid, outcome.problem);
    outcome.status = status;
    outcome.text = printedBy(launcher);
    readFiles(scenario, dir, outcome);
    if (targetLives && scenario.status == 0) outcome.worked = false;
    const std::string kept = dir / kPidFile + ".kept";  // when the JVM was to be created
    if (fs::exists(kept) && readText(kept) != std::to_string(pid)) {
        addProblem(outcome.problem, "goes on without its PID file");
    }
    if (fs::exists(kept) && targetLives) addProblem(outcome.problem, "starts beside another");
    if (!isStartPossible(dir))
        addProblem(outcome.problem, "leaves a PID file that forbids a start");
    return outcome;
}

void beTarget(Target kind, const std::string& pidFile)
{
    targetFile = pidFile;
    const auto obey = [](int) {
        unlink(targetFile.c_str());
        std::ofstream("obeyed") << "";
        _exit(0);
    };
    for (const int number : {SIGUSR1, SIGUSR2}) {
        if (kind == Target::Obeys) {
            std::signal(number, obey);
        } else {
            std::signal(number, SIG_IGN);
        }
    }
    std::ofstream(pidFile) << getpid();
    while (true) pause();
}
