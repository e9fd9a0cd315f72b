// What a record of the log costs.
#include <benchmark/benchmark.h>

#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "MicroSupport.h"

namespace {

using Destination = ScopedLog::Destination;

void logTypical()
{
    logInfo({L"JavaVmManager", L"JvmSystemExitHook"}, L"Loading the JVM library", L"libraryPath",
            L"/usr/lib/jvm/java-17-openjdk-amd64/lib/server/libjvm.so", L"minimalJavaVersion", 17);
}

void logOfCatalogue()
{
    logInfo({L"ServiceInstanceParameters", L"logState"}, getMessage(IDS_SERVICE_CONFIG_NOT_FOUND),
            L"serviceName", L"orders", L"fileName", L"/etc/default/orders");
}

void logCyrillic()
{
    logInfo({L"Daemon", L"resolveWildcards"}, L"File matched", L"filename",
            L"/opt/приложение/библиотеки/учёт-заказов.jar");
}

void LogRecord(benchmark::State& state, void (*log)(), Destination destination)
{
    ScopedLog scopedLog(destination);
    while (state.KeepRunning()) log();
}

BENCHMARK_CAPTURE(LogRecord, Typical, logTypical, Destination::Null);
BENCHMARK_CAPTURE(LogRecord, Catalogue, logOfCatalogue, Destination::Null);
BENCHMARK_CAPTURE(LogRecord, Cyrillic, logCyrillic, Destination::Null);
BENCHMARK_CAPTURE(LogRecord, TypicalToFile, logTypical, Destination::File);

}  // namespace
