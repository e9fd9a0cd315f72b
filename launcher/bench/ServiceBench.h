// ServiceBench: services in a JVM, under the launcher and under other hosts, in
// rounds in which every host runs once, in an order drawn for each.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Hosts.h"
#include "Samples.h"

/// A service that returns at once. The launcher writes its log, in memory where
/// nothing else is said.
struct LaunchResults {
    struct Host {
        Samples entryMillis;  ///< from exec to entry into the Java method
        Samples cpuMillis;    ///< from launch to return
    };
    Setting setting;
    Host launcher, launcherOnDisk, launcherWithMap, floor, floorAgain, java;
    Host jsvc;  ///< without CPU time, as it does not return; empty where there is none
};

/// A service that waits until SIGUSR1 stops it. The log is on the disk.
struct StopResults {
    struct Host {
        Samples residentMiB;
        Samples stopMillis;  ///< from the signal to the end of the process
    };
    Setting setting;
    Host launcher, launcherWithLog, floor, floorAgain;
    Samples syncMillis;  ///< a file as large as the log, written and synced
};

struct IdleResult {
    Setting setting;
    double wakeUpsPerMinute;  ///< of all the launcher's own threads together
    int threads;              ///< how many these are
};

[[nodiscard]] std::vector<LaunchResults> measureLaunches(const Hosts& hosts,
                                                         const std::vector<Setting>& settings,
                                                         int rounds);
[[nodiscard]] std::vector<StopResults> measureStops(const Hosts& hosts,
                                                    const std::vector<Setting>& settings,
                                                    int rounds);
/// All at once, as they only wait.
[[nodiscard]] std::vector<IdleResult> measureIdle(const Hosts& hosts,
                                                  const std::vector<Setting>& settings,
                                                  std::chrono::seconds duration);
