// Worker: a process that a part of the soak runs in, so that it can wait for its
// launchers, and for those that they leave, without meeting those of others.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace Worker {

/// Runs `body` in a new process, which exits with 0 when that is true and no
/// process is left then, else with 1. It dies with this process; launchers that
/// outlive it are adopted.
pid_t start(const std::function<bool()>& body);

/// Kills all children of this process; their command lines, one a line.
std::string killAll();

/// What the threads of the children are waiting in.
std::string describeChildren();

}  // namespace Worker
