// The parsing of a command line.
#include <benchmark/benchmark.h>

#include "LauncherCliArgs.h"
#include "ScopedTempDir.h"

namespace {

using Arguments = std::vector<std::wstring>;

Arguments startArguments()
{
    return {L"/opt/product/bin/launcher",
            L"start",
            L"--daemon",
            L"--quiet",
            L"--instance",
            L"/",  // which exists
            L"--workdir=/var/lib/product",
            L"--pidfile=/run/product/main.pid",
            L"--servicename",
            L"product-main",
            L"--javahome=/usr/lib/jvm/java-17-openjdk-amd64",
            L"--jvmopt=-Xms512m",
            L"--jvmopt=-Xmx2048m",
            L"--jvmopt=-XX:+ExitOnOutOfMemoryError",
            L"--jclasspath",
            L"/opt/product/lib/*.jar:/opt/product/ext/*.jar",
            L"--jifaceclass=com.company.product.Main",
            L"--jifacearg=--config",
            L"--jifacearg=/etc/product/main.conf"};
}

void CommandLine(benchmark::State& state, const Arguments& more)
{
    Arguments arguments = startArguments();
    arguments.insert(arguments.end(), more.begin(), more.end());
    while (state.KeepRunning()) {
        const auto args = LauncherCliArgs::create(arguments);
        if (args->getMode() != LauncherCliArgs::Mode::Start) {
            state.SkipWithError(toUtf8(args->getErrors()).c_str());
        }
    }
}

void CommandLineWithFiles(benchmark::State& state)
{
    const ScopedTempDir directory;
    CommandLine(state, {L"--cstd", directory.wide("launcher.out"),
                        L"--clog=" + directory.wide("launcher.log")});
}

BENCHMARK_CAPTURE(CommandLine, WithoutFiles, {});
BENCHMARK(CommandLineWithFiles)->Name("CommandLine/WithFiles");

}  // namespace
