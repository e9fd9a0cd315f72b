// The class path of a mask, with its records in a log, next to what the system
// and regexec(3) alone take for the same directory.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <regex.h>
#include <sys/stat.h>

#include <map>
#include <string>

#include "CodeBaseOptions.h"
#include "IJavaFinder.h"
#include "JavaLibResolver.h"
#include "LauncherCliArgs.h"
#include "LauncherConfig.h"
#include "LauncherParameters.h"
#include "MicroSupport.h"
#include "ServiceInstanceParameters.h"

namespace {

using Destination = ScopedLog::Destination;

/// A finder for command lines that leave nothing to be found.
struct NoJavaFinder final : IJavaFinder {
    JavaFinderResult find(std::int32_t) override { return {}; }
    [[nodiscard]] const std::wstring& getErrors() const override { return errors; }

    std::wstring errors;
};

/// A directory of that many empty jars, made once.
const ScopedTempDir& directoryOfJars(std::int64_t count)
{
    static std::map<std::int64_t, ScopedTempDir> directories;
    const auto [entry, isNew] = directories.try_emplace(count);
    for (std::int64_t i = 0; isNew && i < count; ++i) {
        entry->second.write("library-" + std::to_string(10'000 + i) + "-1.2.3.jar", "");
    }
    return entry->second;
}

void JarExpansion(benchmark::State& state, Destination destination)
{
    const std::wstring mask = directoryOfJars(state.range()).wide("*.jar");
    const auto args =
        LauncherCliArgs::create({L"launcher", L"start", L"--jvmdll=x", L"--jclasspath=" + mask});
    const auto serviceInstance = ServiceInstanceParameters::create(L"", L"");
    const LauncherConfig config = LauncherConfig::read(L"", false);
    NoJavaFinder javaFinder;
    const LauncherParameters parameters(*args, *serviceInstance, config, JavaLibResolver(),
                                        javaFinder);
    ScopedLog log(destination);
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(composeJvmOptions(parameters));
        log.flush();
        state.PauseTiming();
        log.empty();
        state.ResumeTiming();
    }
}

/// Jars in `prefix`, a path with its slash, that are no directories.
std::int64_t countJars(const std::string& prefix, const regex_t& expression)
{
    DIR* const directory = opendir(prefix.c_str());
    std::string path = prefix;
    std::int64_t count = 0;
    while (const dirent* const entry = readdir(directory)) {
        path.replace(prefix.size(), std::string::npos, entry->d_name);
        struct stat status {};
        if (lstat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) continue;
        if (regexec(&expression, entry->d_name, 0, nullptr, 0) == 0) ++count;
    }
    closedir(directory);
    return count;
}

void JarExpansionReference(benchmark::State& state)
{
    const std::string prefix = directoryOfJars(state.range()) / "";
    regex_t expression;
    regcomp(&expression, ".*.jar", 0);
    while (state.KeepRunning()) {
        if (countJars(prefix, expression) != state.range()) state.SkipWithError("jars are missing");
    }
    regfree(&expression);
}

void forAllCounts(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(1'000)->Arg(5'000)->Arg(20'000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK_CAPTURE(JarExpansion, LogFile, Destination::File)->Apply(forAllCounts);
BENCHMARK_CAPTURE(JarExpansion, LogNull, Destination::Null)->Apply(forAllCounts);
BENCHMARK(JarExpansionReference)->Apply(forAllCounts);

}  // namespace
