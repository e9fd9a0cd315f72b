// launcher_bench: measures the launcher beside other hosts of the same service
// and prints one table. scripts/bench runs it.
//
//     launcher_bench LAUNCHER JSVC MICRO MEMORY ROUNDS PART...
//
// JSVC may be empty; MICRO is the CSV file that launcher_microbench has
// written, MEMORY an empty directory of a file system in memory. Every host runs
// ROUNDS times, the steadier ones less often. PART is one of launches, stops,
// idle, commands and micro. Ends with 0 also when goals are missed, which the
// table tells.

#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "BenchProcess.h"
#include "CommandBench.h"
#include "Hosts.h"
#include "Jdk.h"
#include "MicroResults.h"
#include "Report.h"
#include "ScopedTempDir.h"
#include "ServiceBench.h"
#include "Table.h"

namespace {

constexpr char kSerialCollector[] = "-XX:+UseSerialGC";
// Rounds are spent where the differences are small against the noise.
constexpr int kShortCommandFactor = 5;  ///< `help` takes a millisecond
constexpr int kStopDivisor = 3;         ///< the stop of a service is steadier than its start
constexpr int kMaxStopCommands = 20;    ///< each takes 100 ms
constexpr int kIdleSecondsPerRound = 3;
constexpr std::chrono::seconds kMaxIdle{60};

struct Settings {
    std::vector<Setting> defaults;  ///< with the collector that Java chooses
    std::vector<Setting> all;
};

Settings findSettings()
{
    Settings settings;
    for (const auto& [version, library] : installedJdks()) {
        settings.defaults.push_back({version, library, ""});
        settings.all.push_back(settings.defaults.back());
        settings.all.push_back({version, library, kSerialCollector});
    }
    if (settings.defaults.empty()) throw std::runtime_error("no JDK found");
    return settings;
}

void measure(const std::string& part, const Hosts& hosts, const std::string& micro, int rounds,
             Table& table)
{
    std::cerr << "-- " << part << std::endl;
    const Settings settings = findSettings();
    if (part == "launches") {
        for (const auto& results : measureLaunches(hosts, settings.all, rounds)) {
            addLaunches(results, table);
        }
    } else if (part == "stops") {
        for (const auto& results : measureStops(hosts, settings.all, rounds / kStopDivisor + 1)) {
            addStops(results, table);
        }
    } else if (part == "idle") {
        const std::chrono::seconds duration(rounds * kIdleSecondsPerRound);
        for (const auto& result :
             measureIdle(hosts, settings.defaults, std::min(kMaxIdle, duration))) {
            addIdle(result, table);
        }
    } else if (part == "commands") {
        addStopCommand(measureStopCommand(hosts, std::min(rounds, kMaxStopCommands)), table);
        addHelp(measureHelp(hosts, NOTHING_EXECUTABLE, rounds * kShortCommandFactor), table);
    } else if (part == "micro") {
        addMicro(MicroResults(micro), table);
    } else {
        throw std::invalid_argument("no part " + part);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    prepareForMeasuring();
    try {
        if (argc < 7) throw std::invalid_argument("takes at least 6 arguments");
        const ScopedTempDir disk;
        const Hosts hosts(std::filesystem::canonical(argv[1]), FLOOR_EXECUTABLE, BENCH_JAR, argv[2],
                          argv[4], disk.path());
        Table table;
        for (int i = 6; i < argc; ++i) measure(argv[i], hosts, argv[3], std::stoi(argv[5]), table);
        std::cout << table.toText() << "\nGoals missed: " << table.count(Verdict::No)
                  << ", within the noise: " << table.count(Verdict::WithinNoise) << std::endl;
        return 0;
    } catch (const std::exception& e) {
        std::cerr << "error: " << e.what() << '\n';
        return 1;
    }
}
