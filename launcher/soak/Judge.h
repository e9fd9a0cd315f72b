// Judge: what was wrong about a cycle, and how its service has ended.
#pragma once

#include <string>
#include <vector>

#include "Cycle.h"

enum class End {
    kOrderly,          ///< 0, 100 or 200
    kMethodFailed,     ///< the same and 8 or 9: a Java method threw
    kExited,           ///< by System.exit
    kTerminated,       ///< by SIGTERM, in a JVM
    kTerminatedEarly,  ///< by SIGTERM, before there was a JVM
    kHalted,           ///< by SIGTERM, which made the creation of the JVM fail
    kStoppedEarly,     ///< by a stop signal, before it could be held back
    kKilled,           ///< by a stop client whose time-out ran out
    kNone,             ///< the parent was stopped early, before it left a service
    kUnknown,          ///< in a way that the plan does not allow
};

struct Verdict {
    End end = End::kUnknown;
    std::vector<std::string> faults;

    /// The plan and the faults, one a line.
    [[nodiscard]] std::string toText(const Cycle& cycle) const;
};

/// Judges a cycle that has ended; reads the files of its directory.
Verdict judge(const Cycle& cycle);
