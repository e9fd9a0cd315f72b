#include "Summary.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <sstream>

namespace {

constexpr const char* kCycles = "cycles";

// By End and Phase.
constexpr std::array<const char*, 10> kEnds{"ended orderly",
                                            "ended by an exception",
                                            "ended by System.exit",
                                            "ended by SIGTERM",
                                            "SIGTERM before the JVM",
                                            "SIGTERM made the JVM fail",
                                            "stopped before the PID file",
                                            "killed by stop client",
                                            "parent stopped, no service",
                                            "ended wrongly"};
constexpr std::array<const char*, 4> kPhases{"requests before the PID file",
                                             "requests before start()", "requests during start()",
                                             "requests during stop()"};
constexpr std::array<const char*, 8> kRequests{
    "SIGUSR1",       "SIGUSR2",           "SIGINT",          "SIGTERM",
    "stop by --pid", "stop by --pidfile", "... with --fast", "... with --timeout"};

std::string rowsOf(const Request& request)
{
    std::string rows = std::string(kPhases.at(static_cast<std::size_t>(request.phase))) + "\n";
    const Action& action = request.action;
    if (!action.isClient()) return rows + "SIG" + sigabbrev_np(action.signal) + "\n";
    rows += action.byPidFile ? "stop by --pidfile\n" : "stop by --pid\n";
    if (action.fast) rows += "... with --fast\n";
    if (action.timeoutMillis) rows += "... with --timeout\n";
    return rows;
}

}  // namespace

std::string Summary::contribution(const Cycle& cycle, End end)
{
    const Plan& plan = cycle.plan();
    std::string lines =
        "JDK " + std::to_string(plan.jdk) + (plan.detached ? " det.\n" : " fore.\n");
    lines += std::string(kCycles) + "\n" + kEnds.at(static_cast<std::size_t>(end)) + "\n";
    for (const Request& request : cycle.requests()) lines += rowsOf(request);
    return lines;
}

void Summary::add(const std::string& contribution)
{
    std::istringstream lines(contribution);
    std::string column;
    std::getline(lines, column);
    for (std::string row; std::getline(lines, row);) ++counts_[column][row];
}

std::string Summary::toText() const
{
    std::ostringstream text;
    const auto cell = [&](const char* format, auto value) {
        std::array<char, 64> buffer{};
        std::snprintf(buffer.data(), buffer.size(), format, value);
        text << buffer.data();
    };
    cell("%-30s", "");
    for (const auto& [column, counts] : counts_) cell("%14s", column.c_str());
    cell("%10s\n", "all");
    const auto row = [&](const char* name) {
        int sum = 0;
        cell("%-30s", name);
        for (const auto& [column, counts] : counts_) {
            const auto found = counts.find(name);
            const int count = found == counts.end() ? 0 : found->second;
            cell("%14d", count);
            sum += count;
        }
        cell("%10d\n", sum);
    };
    row(kCycles);
    for (const char* name : kEnds) row(name);
    for (const char* name : kPhases) row(name);
    for (const char* name : kRequests) row(name);
    return text.str();
}
