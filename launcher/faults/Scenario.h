// Scenario: a run of the launcher, in a directory of its own, in which one of
// its calls to the C library may fail; and what came of it.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "LauncherRun.h"
#include "ScopedTempDir.h"

/// A process to be stopped that is no launcher, and what it does with a signal.
enum class Target { None, Obeys, Ignores };

struct Scenario {
    std::string name;
    /// Of a run in which nothing fails: its status, what it prints, as a regular
    /// expression, and files, with some of their text, that show its work.
    int status = 0;
    std::string text;
    std::vector<std::pair<std::string, std::string>> works;
    /// The launcher in the directory, to stop the process if there is one.
    std::function<LauncherRun(const ScopedTempDir&, pid_t)> launcher;
    Target target = Target::None;
    /// The launcher runs until it is stopped.
    bool waits = false;
    bool hasPidfd = true;  ///< the kernel is not one of before Linux 5.3
    std::string program = LAUNCHER_EXECUTABLE;
};

[[nodiscard]] std::vector<Scenario> scenariosWithoutJvm();
[[nodiscard]] std::vector<Scenario> scenariosWithJvm(int version, const std::string& library);

/// What came of a run.
struct Outcome {
    int status = 0;        ///< of the detached launcher, if there is one
    std::string text;      ///< what the launcher has printed, but for the startup header
    bool worked = false;   ///< the work of the scenario was done
    std::string problem;   ///< what must not happen whatever fails; empty for nothing
    bool logged = false;   ///< the log holds an error
    std::string faultLog;  ///< of the shim
};

/// `fault` is for the shim; empty for a run that fails nowhere.
[[nodiscard]] Outcome perform(const Scenario& scenario, const std::string& fault);

/// Is the process to be stopped, and never returns: launcher_faults calls it in
/// a process of its own.
[[noreturn]] void beTarget(Target kind, const std::string& pidFile);
