#include "Report.h"

#include <string>

namespace {

constexpr double kMaxCpuRatio = 1.03;
constexpr double kMaxEntryDelayMillis = 1.5;
constexpr double kMaxJavaRatio = 1;
constexpr double kMinJsvcRatio = 1.2;
constexpr double kMaxResidentMiB = 1.5;
constexpr double kMaxWakeUps = 0;
constexpr double kMaxStopDelayMillis = 1;
constexpr double kMaxStopCommandMillis = 103;
constexpr double kMaxHelpRatio = 2;
constexpr double kMaxRecordNanos = 500;
constexpr double kMaxExpansionRatio = 1.5;
constexpr double kMaxReadRatio = 3;
constexpr double kMaxGrowth = 1.5;  ///< linear, but for what the caches hold

std::string atMost(double number, int decimals, const std::string& unit = "")
{
    return "≤ " + numberText(number, decimals, unit);
}

/// Of figures that are to be `limit` at most.
Verdict judge(const Samples& figures, double limit)
{
    const Estimate estimate = estimateOf(figures);
    if (estimate.median <= limit) return Verdict::Yes;
    return estimate.low <= limit ? Verdict::WithinNoise : Verdict::No;
}

/// Two that are compared by a number of the same kind.
struct Comparison {
    std::string measure;
    const Samples& launcher;
    std::string otherName;
    const Samples& other;
    std::string unit;
    int decimals;
};

Row rowOf(const Comparison& compared)
{
    Row row;
    row.measure = compared.measure;
    row.launcher = numberText(medianOf(compared.launcher), compared.decimals, compared.unit);
    row.other = compared.otherName + ": " +
                numberText(medianOf(compared.other), compared.decimals, compared.unit);
    return row;
}

/// `again` is the other a second time, null where there is none; without a
/// goal (0) the row is only shown.
Row ratioRow(const Comparison& compared, const Samples* again, double goal)
{
    Row row = rowOf(compared);
    const Samples paired = ratios(compared.launcher, compared.other);
    row.result = estimateText(paired, 2);
    if (again) row.noise = estimateText(ratios(*again, compared.other), 2);
    if (goal != 0) {
        row.goal = atMost(goal, 2);
        row.verdict = judge(paired, goal);
    }
    return row;
}

Row differenceRow(const Comparison& compared, const Samples* again, double goal)
{
    Row row = rowOf(compared);
    const Samples paired = differences(compared.launcher, compared.other);
    row.result = estimateText(paired, 2, compared.unit);
    if (again) row.noise = estimateText(differences(*again, compared.other), 2, compared.unit);
    if (goal != 0) {
        row.goal = atMost(goal, 1, compared.unit);
        row.verdict = judge(paired, goal);
    }
    return row;
}

/// How many times as long the other takes.
Row speedRow(const Comparison& compared, double goal)
{
    Row row = rowOf(compared);
    row.result = estimateText(ratios(compared.other, compared.launcher), 2) + " times faster";
    row.goal = "≥ " + numberText(goal, 1);
    row.verdict = judge(ratios(compared.launcher, compared.other), 1 / goal);
    return row;
}

/// In milliseconds, times `factor`.
Samples millisOf(const MicroResults& results, const std::string& benchmark, double factor = 1)
{
    constexpr double kNanosPerMilli = 1e6;
    Samples samples = results.nanosOf(benchmark);
    for (double& sample : samples) sample *= factor / kNanosPerMilli;
    return samples;
}

/// Of one kind of file, the benchmark `name`: lines as they usually are, lines
/// that take the most time, and how the time grows.
void addFile(const MicroResults& results, const std::string& file, const std::string& name,
             const std::string& usual, const std::string& worst, Table& table)
{
    static constexpr char kLarge[] = "/10485760";
    static constexpr char kSmall[] = "/1048576";
    static constexpr double kLargeToSmall = 10;
    const auto addShape = [&](const std::string& shape, const std::string& what, double goal) {
        const Samples time = millisOf(results, name + shape + kLarge);
        const Samples plain = millisOf(results, name + "Reference" + shape + kLarge);
        table.add(
            ratioRow({"10 MiB of " + file + what + ", CPU", time, "read and iconv", plain, "ms", 1},
                     nullptr, goal));
    };
    addShape(usual, "", kMaxReadRatio);
    addShape("/Cyrillic", ", Cyrillic", kMaxReadRatio);
    addShape(worst, ", lines of a few bytes", 0);
    const Samples large = millisOf(results, name + usual + kLarge);
    const Samples small = millisOf(results, name + usual + kSmall, kLargeToSmall);
    table.add(ratioRow({"10 MiB of " + file + ", CPU", large, "10 times 1 MiB", small, "ms", 1},
                       nullptr, kMaxGrowth));
}

/// A figure of the launcher alone.
Row figureRow(const std::string& measure, const Samples& samples, int decimals,
              const std::string& unit, double goal)
{
    Row row;
    row.measure = measure;
    row.launcher = numberText(medianOf(samples), decimals, unit);
    row.result = estimateText(samples, decimals, unit);
    row.goal = atMost(goal, 0, unit);
    row.verdict = judge(samples, goal);
    return row;
}

}  // namespace

void addLaunches(const LaunchResults& results, Table& table)
{
    const std::string jdk = ", " + results.setting.text();
    const LaunchResults::Host& launcher = results.launcher;
    const LaunchResults::Host& floor = results.floor;
    table.add(ratioRow(
        {"launch to return, CPU" + jdk, launcher.cpuMillis, "floor", floor.cpuMillis, "ms", 1},
        &results.floorAgain.cpuMillis, kMaxCpuRatio));
    table.add(ratioRow({"launch to return, CPU" + jdk, launcher.cpuMillis, "`java`",
                        results.java.cpuMillis, "ms", 1},
                       nullptr, 0));
    table.add(differenceRow(
        {"exec to Java method" + jdk, launcher.entryMillis, "floor", floor.entryMillis, "ms", 1},
        &results.floorAgain.entryMillis, kMaxEntryDelayMillis));
    table.add(ratioRow({"exec to Java method" + jdk, launcher.entryMillis, "`java`",
                        results.java.entryMillis, "ms", 1},
                       nullptr, kMaxJavaRatio));
    if (!results.jsvc.entryMillis.empty()) {
        const std::string floorText = numberText(medianOf(floor.entryMillis), 1, "ms");
        table.add(speedRow({"exec to Java method" + jdk, launcher.entryMillis,
                            "`jsvc` (floor " + floorText + ")", results.jsvc.entryMillis, "ms", 1},
                           kMinJsvcRatio));
    }
    table.add(differenceRow(
        {"exec to Java method, files on disk" + jdk, results.launcherOnDisk.entryMillis,
         "in memory", launcher.entryMillis, "ms", 1},
        nullptr, 0));
    table.add(differenceRow(
        {"exec to Java method with the property map" + jdk, results.launcherWithMap.entryMillis,
         "without it", launcher.entryMillis, "ms", 1},
        nullptr, 0));
}

void addStops(const StopResults& results, Table& table)
{
    const std::string jdk = ", " + results.setting.text();
    const StopResults::Host& floor = results.floor;
    table.add(differenceRow({"resident memory" + jdk, results.launcher.residentMiB, "floor",
                             floor.residentMiB, "MiB", 1},
                            &results.floorAgain.residentMiB, kMaxResidentMiB));
    table.add(differenceRow({"stop signal to end, no log" + jdk, results.launcher.stopMillis,
                             "floor", floor.stopMillis, "ms", 1},
                            &results.floorAgain.stopMillis, kMaxStopDelayMillis));
    Row withLog =
        differenceRow({"stop signal to end, log" + jdk, results.launcherWithLog.stopMillis, "floor",
                       floor.stopMillis, "ms", 1},
                      &results.floorAgain.stopMillis, 0);
    const double limit = kMaxStopDelayMillis + medianOf(results.syncMillis);
    withLog.goal = atMost(kMaxStopDelayMillis, 1, "ms") + " and a sync, " +
                   numberText(medianOf(results.syncMillis), 1, "ms");
    withLog.verdict =
        judge(differences(results.launcherWithLog.stopMillis, floor.stopMillis), limit);
    table.add(withLog);
}

void addIdle(const IdleResult& result, Table& table)
{
    Row row;
    row.measure = "wake-ups while the service idles, " + result.setting.text();
    row.launcher = numberText(result.wakeUpsPerMinute, 1) + " a minute, " +
                   std::to_string(result.threads) + " threads";
    row.result = row.launcher;
    row.goal = atMost(kMaxWakeUps, 0);
    row.verdict = result.wakeUpsPerMinute <= kMaxWakeUps ? Verdict::Yes : Verdict::No;
    table.add(row);
}

void addHelp(const HelpResults& results, Table& table)
{
    const HelpResults::Program& nothing = results.nothing;
    table.add(ratioRow({"`launcher help`, whole process", results.launcher.wallMillis,
                        "C program that does nothing", nothing.wallMillis, "ms", 2},
                       &results.nothingAgain.wallMillis, kMaxHelpRatio));
    table.add(ratioRow({"`launcher help`, CPU", results.launcher.cpuMillis,
                        "C program that does nothing", nothing.cpuMillis, "ms", 2},
                       &results.nothingAgain.cpuMillis, kMaxHelpRatio));
}

void addStopCommand(const Samples& millis, Table& table)
{
    table.add(figureRow("`launcher stop` of a process that ends at once", millis, 1, "ms",
                        kMaxStopCommandMillis));
}

void addMicro(const MicroResults& results, Table& table)
{
    table.add(figureRow("one log record to /dev/null, CPU", results.nanosOf("LogRecord/Typical"), 0,
                        "ns", kMaxRecordNanos));
    const Samples expansion = millisOf(results, "JarExpansion/LogFile/20000");
    const Samples least = millisOf(results, "JarExpansionReference/20000");
    table.add(ratioRow(
        {"20,000 jars expanded, CPU", expansion, "readdir, lstat, regexec", least, "ms", 1},
        nullptr, kMaxExpansionRatio));
    addFile(results, "`launcher.yml`", "YamlFile", "/Options", "/ShortItems", table);
    addFile(results, "service ini file", "IniFile", "/Options", "/UnknownKeys", table);
    addFile(results, "Java's `release`", "ReleaseFile", "/Keys", "/ShortLines", table);
}
