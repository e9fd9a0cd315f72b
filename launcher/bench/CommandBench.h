// CommandBench: the launcher's short commands, without a JVM.
#pragma once

#include <string>

#include "Hosts.h"
#include "Samples.h"

/// Whole processes, in turn.
struct HelpResults {
    struct Program {
        Samples wallMillis, cpuMillis;
    };
    Program launcher, nothing, nothingAgain;
};

/// `launcher help` and the program `nothing`, which does nothing.
[[nodiscard]] HelpResults measureHelp(const Hosts& hosts, const std::string& nothing, int rounds);

/// `launcher stop` of a process that SIGUSR1 ends at once, in milliseconds.
[[nodiscard]] Samples measureStopCommand(const Hosts& hosts, int rounds);
