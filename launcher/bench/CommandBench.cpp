#include "CommandBench.h"

#include <csignal>

#include "BenchProcess.h"

namespace {

void run(const std::vector<std::string>& command, const std::string& errors,
         HelpResults::Program& results)
{
    const ProcessCost cost = BenchProcess(command, errors).waitForEnd();
    results.wallMillis.push_back(cost.wallMillis);
    results.cpuMillis.push_back(cost.cpuMillis);
}

}  // namespace

HelpResults measureHelp(const Hosts& hosts, const std::string& nothing, int rounds)
{
    HelpResults results;
    for (int round = 0; round < rounds; ++round) {
        run(hosts.launcherCommand({"help"}), hosts.errors(), results.launcher);
        run({nothing}, hosts.errors(), results.nothing);
        run({nothing}, hosts.errors(), results.nothingAgain);
    }
    return results;
}

Samples measureStopCommand(const Hosts& hosts, int rounds)
{
    Samples millis;
    for (int round = 0; round < rounds; ++round) {
        BenchProcess service({"/bin/sleep", "60"}, hosts.errors());
        BenchProcess stop(hosts.launcherCommand({"stop", "--pid", std::to_string(service.pid())}),
                          hosts.errors());
        service.waitForEnd(128 + SIGUSR1);  // to the stop a process that nobody has reaped runs
        millis.push_back(stop.waitForEnd().wallMillis);
    }
    return millis;
}
