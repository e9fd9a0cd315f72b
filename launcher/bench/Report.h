// Report: turns what was measured into rows of the table, with the goals that
// the launcher is held to.
#pragma once

#include "CommandBench.h"
#include "MicroResults.h"
#include "ServiceBench.h"
#include "Table.h"

void addLaunches(const LaunchResults& results, Table& table);
void addStops(const StopResults& results, Table& table);
void addIdle(const IdleResult& result, Table& table);
void addHelp(const HelpResults& results, Table& table);
void addStopCommand(const Samples& millis, Table& table);
void addMicro(const MicroResults& results, Table& table);
