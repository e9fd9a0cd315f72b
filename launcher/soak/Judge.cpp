#include "Judge.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <map>
#include <regex>

#include "LauncherLog.h"

namespace {

// Of the JVM's own ends.
constexpr int kTerminatedStatus = 128 + SIGTERM, kHaltedStatus = 1;

bool endsInLineFeed(const std::string& file)
{
    return readText(file).ends_with('\n');
}

/// The checks of one cycle. The service may be none: see End::kNone.
class Checks final {
public:
    explicit Checks(const Cycle& cycle)
        : cycle_(cycle),
          plan_(cycle.plan()),
          log_(cycle.file("launcher.log")),
          simpleStopRan_(exists("stop.report")),
          fastStopRan_(exists("stopFast.report")),
          servicePid_(std::to_string(cycle.servicePid()))
    {
    }

    Verdict run()
    {
        for (const Request& request : cycle_.requests()) {
            if (request.client) checkClient(request);
        }
        if (plan_.detached) checkParent();
        verdict_.end = endOfService();
        checkLog();
        switch (verdict_.end) {
            case End::kOrderly:
            case End::kMethodFailed:
                checkOrderlyEnd();
                break;
            case End::kExited:
            case End::kTerminated:
                checkExitByJvm();
                break;
            default:
                break;
        }
        checkPidFile();
        checkFiles();
        return verdict_;
    }

private:
    void expect(bool holds, const std::string& fault)
    {
        if (!holds) verdict_.faults.push_back(fault);
    }

    [[nodiscard]] bool exists(const std::string& name) const
    {
        return std::filesystem::exists(cycle_.file(name));
    }
    [[nodiscard]] bool isWaited() const { return plan_.waitsForStop(); }
    [[nodiscard]] bool stopRan() const { return simpleStopRan_ || fastStopRan_; }
    /// Whether any request fulfils the condition.
    template <typename Condition>
    [[nodiscard]] bool anyRequest(Condition condition) const
    {
        return std::any_of(cycle_.requests().begin(), cycle_.requests().end(), condition);
    }
    [[nodiscard]] static bool isForced(const Request& request)
    {
        return request.result &&
               request.result->err.find(" was forced to stop") != std::string::npos;
    }
    [[nodiscard]] static bool hasAsked(const Request& request)
    {
        return !request.client || request.result->out.empty();
    }

    /// What the statuses of the service can be, with what they mean.
    [[nodiscard]] std::map<int, End> allowedStatuses() const
    {
        std::map<int, End> allowed = statusesOfPlan();
        for (const Request& request : cycle_.requests()) {
            const pid_t target = request.action.byPidFile ? cycle_.servicePid() : request.target;
            if (target != cycle_.servicePid()) continue;
            if (isForced(request)) allowed[-SIGKILL] = End::kKilled;
            if (request.action.signal == SIGTERM) {
                allowed[kTerminatedStatus] = End::kTerminated;
                if (!request.readySeen && !log_.holds("INFO JVM created")) {
                    allowed[-SIGTERM] = End::kTerminatedEarly;
                    if (isHaltLogged()) allowed[kHaltedStatus] = End::kHalted;
                }
            } else if (isDeadly(request) && !log_.holds("INFO PID saved") &&
                       !exists("service.pid")) {
                allowed[-request.action.sentSignal()] = End::kStoppedEarly;
            }
        }
        return allowed;
    }

    /// HotSpot can take a SIGTERM amid its creation for a failure of that; so
    /// does the command `java`, some times in a hundred.
    [[nodiscard]] bool isHaltLogged() const
    {
        const std::size_t size = log_.records.size();
        return size > 2 && log_.records[size - 2] == "WARN JVM halted pid=" + servicePid_ &&
               log_.records[size - 1] == "INFO JVM exited";
    }

    /// Whether a request can have come before signals are held back, which is
    /// before the PID file is written.
    [[nodiscard]] static bool isDeadly(const Request& request)
    {
        return !request.pidFileSeen && (!request.client || !request.action.byPidFile);
    }

    /// Without SIGTERM and requests that come too early. Which stop method ran
    /// tells which request was first.
    [[nodiscard]] std::map<int, End> statusesOfPlan() const
    {
        std::map<int, End> allowed;
        if (plan_.start == StartMethod::kExits) allowed[plan_.startStatus] = End::kExited;
        if (stopRan() && plan_.stop == StopMethod::kExits) {
            allowed[plan_.stopStatus] = End::kExited;
        }
        if (!allowed.empty() || (isWaited() && !stopRan())) return allowed;

        const bool startThrows =
            plan_.start == StartMethod::kThrows || plan_.start == StartMethod::kWaitsAndThrows;
        const int stopFailure = stopRan() && plan_.stop == StopMethod::kThrows ? 9 : 0;
        const int failure = startThrows ? 8 : stopFailure;
        allowed[exitBase() + failure] = failure == 0 ? End::kOrderly : End::kMethodFailed;
        return allowed;
    }

    [[nodiscard]] int exitBase() const
    {
        if (!plan_.detached || !stopRan()) return 0;
        return fastStopRan_ ? 200 : 100;
    }

    End endOfService()
    {
        if (!cycle_.serviceStatus()) {
            expect(cycle_.firstResult().status != 0, "the parent ended with 0 and left no service");
            return End::kNone;
        }
        const int status = *cycle_.serviceStatus();
        const std::map<int, End> allowed = allowedStatuses();
        const auto found = allowed.find(status);
        if (found != allowed.end()) return found->second;
        std::string list;
        for (const auto& [possible, end] : allowed) list += " " + std::to_string(possible);
        expect(false, "the service ended with " + std::to_string(status) + ", allowed:" + list);
        return End::kUnknown;
    }

    /// The process that leaves the service in the background.
    void checkParent()
    {
        const int status = cycle_.firstResult().status;
        const bool allowed = anyRequest([&](const Request& request) {
            if (request.target != cycle_.firstPid()) return false;
            return (isDeadly(request) && status == -request.action.sentSignal()) ||
                   (isForced(request) && status == -SIGKILL);
        });
        expect(status == 0 || allowed, "the parent ended with " + std::to_string(status));
    }

    void checkLog()
    {
        expect(log_.malformed.empty(), "malformed in the log: " + log_.malformed);
        const std::regex first(
            "INFO Launcher started\\. version=[0-9.+]+, time=[0-9]{4}/[0-9/]{5}-[0-9:.]+");
        if (!log_.records.empty()) {
            expect(std::regex_match(log_.records.front(), first),
                   "the first record is: " + log_.records.front());
        }
        for (const std::string& record : log_.records) {
            const bool isWhole = record.find('\n') == std::string::npos || plan_.throws();
            expect(isWhole, "torn record: " + record);
        }
        expect(!(simpleStopRan_ && fastStopRan_), "both stop methods were called");
        expectSignals();
    }

    /// No more records of signals than were sent.
    void expectSignals()
    {
        for (const int signal : {SIGUSR1, SIGUSR2, SIGINT}) {
            const auto sent = std::count_if(
                cycle_.requests().begin(), cycle_.requests().end(), [=](const Request& request) {
                    return request.action.sentSignal() == signal && hasAsked(request);
                });
            expect(log_.count(risen(signal)) <= sent, "too many records: " + risen(signal));
        }
        const auto asked = [this](bool fast) {
            return anyRequest([=](const Request& request) {
                const int sent = request.action.sentSignal();
                return sent != SIGTERM && (sent == SIGUSR2) == fast && hasAsked(request);
            });
        };
        expect(!simpleStopRan_ || asked(false), "stop was called though nothing asked for it");
        expect(!fastStopRan_ || asked(true), "stopFast was called though nothing asked for it");
    }

    static std::string risen(int signal)
    {
        return std::string("INFO SIG") + sigabbrev_np(signal) + " has risen";
    }

    void checkOrderlyEnd()
    {
        const std::string status = std::to_string(*cycle_.serviceStatus());
        const std::string& err = cycle_.firstResult().err;
        if (verdict_.end == End::kOrderly) {
            expect(log_.last() == "INFO Normal exit exitCode=" + status, "last: " + log_.last());
            expect(err.empty(), "standard error: " + err);
        } else {
            const std::string start = *cycle_.serviceStatus() % 100 == 8
                                          ? "Java exception while invoking service/Service.start: "
                                          : "Service stop method failed: Java exception while "
                                            "invoking service/Service.stop";
            const std::string message = err.substr(0, err.size() - 1);
            expect(err.starts_with(start), "standard error: " + err);
            expect(log_.last() == "ERROR " + message + " exitCode=" + status,
                   "last: " + log_.last());
        }
        expect(endsInLineFeed(cycle_.file("launcher.log")), "the log ends within a line");
        for (const char* once : {"INFO PID saved", "INFO JVM created", "INFO JVM destroyed",
                                 "INFO PID file was removed"}) {
            expect(log_.count(once) == 1, std::string("not once in the log: ") + once);
        }
        expect(!log_.holds("INFO JVM exited"), "the exit hook was called");
        const std::string header =
            cycle_.launcher().filename().string() + " started (launcher 3.11.1+4, x86-64), PID=";
        expect(cycle_.firstResult().out == (plan_.detached ? "" : header + servicePid_ + "\n"),
               "standard output: " + cycle_.firstResult().out);
        for (const Request& request : cycle_.requests()) expectRisen(request);
    }

    /// A signal that came before the service was at its end is in the log.
    void expectRisen(const Request& request)
    {
        const int signal = request.action.signal;
        const bool inTime = request.pidFileSeen && request.pidFileAfter;
        if (request.client || signal == SIGTERM || !inTime) return;
        expect(log_.holds(risen(signal)), "not in the log: " + risen(signal));
    }

    /// The JVM ended the process. Records of threads that were busy meanwhile
    /// may stand behind the first one of the exit hook.
    void checkExitByJvm()
    {
        const std::string exit = "WARN JVM exited with nonzero exit code pid=" + servicePid_ +
                                 ", exitCode=" + std::to_string(*cycle_.serviceStatus());
        const auto hook = std::find(log_.records.begin(), log_.records.end(), exit);
        expect(hook != log_.records.end(), "not in the log: " + exit);
        expect(log_.count("WARN JVM exited") == 1, "the exit hook is not once in the log");
        expect(std::find(hook, log_.records.end(), "INFO JVM exited") != log_.records.end(),
               "the exit hook did not run to its end");
        const bool isBusy =
            stopRan() || anyRequest([this](const Request& request) {
                return request.action.signal == SIGTERM && !(request.readySeen && isWaited());
            });
        for (auto record = hook; record != log_.records.end(); ++record) {
            const bool allowed = record == hook || *record == "INFO JVM exited" ||
                                 record->ends_with(" has risen") ||
                                 record->starts_with("INFO Wait finished") ||
                                 (isBusy && record->starts_with("INFO "));
            expect(allowed, "behind the exit hook's records: " + *record);
        }
        expect(!log_.holds("INFO Normal exit"), "a normal exit is logged");
        expect(endsInLineFeed(cycle_.file("launcher.log")), "the log ends within a line");
    }

    void checkPidFile()
    {
        const bool isThere = exists("service.pid");
        const std::string content = readText(cycle_.file("service.pid"));
        const bool removed = anyRequest([](const Request& request) {
            return request.result && request.result->err.ends_with(" PID-file was removed\n");
        });
        switch (verdict_.end) {
            case End::kExited:
            case End::kTerminated:
            case End::kHalted:
                expect(removed || content == servicePid_, "the PID file holds '" + content + "'");
                break;
            case End::kTerminatedEarly:  // maybe while it was written
                expect(content.empty() || content == servicePid_,
                       "the PID file holds '" + content + "'");
                break;
            case End::kKilled:
                expect(!isThere || (!removed && content == servicePid_),
                       "a PID file is left, with '" + content + "'");
                break;
            default:
                expect(!isThere, "a PID file is left, with '" + content + "'");
        }
    }

    /// Nothing but what was asked for: no crash reports, say. A log that is to
    /// be opened is made for a test before, and so leaves an empty old one.
    void checkFiles()
    {
        static const std::regex known(
            "(service\\.pid|(launcher|client[0-9]+)\\.log(\\.1)?|ready|"
            "stop(Fast)?\\.report|launcher-test-.*)");
        for (const auto& entry : std::filesystem::directory_iterator(cycle_.directory())) {
            const std::string name = entry.path().filename();
            expect(std::regex_match(name, known), "a file is left: " + name);
        }
    }

    void checkClient(const Request& request)
    {
        const LauncherResult& result = *request.result;
        const std::string who = request.action.toText() + ": ";
        const std::string pid =
            request.action.byPidFile ? servicePid_ : std::to_string(request.target);
        const std::string line = "Launcher with PID=" + pid + " ";
        const LauncherLog log(request.log);
        expect(log.malformed.empty(), who + "malformed in its log: " + log.malformed);
        expect(!log.records.empty() && log.records[0].starts_with("INFO Launcher started. "),
               who + "first record");
        expect(endsInLineFeed(request.log), who + "its log ends within a line");
        if (!result.out.empty()) {
            checkUnreadablePidFile(request, log);
            return;
        }
        int status = 0;
        if (result.err == line + "stopped gracefully\n") {
            expect(request.targetGone, who + "told of an end that had not come");
        } else if (result.err == line + "not found, nothing was stopped\n") {
            status = 11;
            expect(mayBeGone(request), who + "did not find the service");
        } else {
            const bool killed = result.err == line + "was forced to stop\n" ||
                                result.err == line +
                                                  "was forced to stop and its PID-file was "
                                                  "removed\n";
            expect(killed && request.action.timeoutMillis, who + "printed: " + result.err);
        }
        const std::string exitCode = std::to_string(status);
        expect(result.status == status, who + "ended with " + std::to_string(result.status));
        expect(log.last() == "INFO Normal exit exitCode=" + exitCode, who + "last: " + log.last());
        const auto& timeout = request.action.timeoutMillis;
        expect(
            log.count("INFO A stop request was sent to another launcher instance pidToStop=" + pid +
                      ", timeoutMillis=" + (timeout ? std::to_string(*timeout) : "IsNotSet")) == 1,
            who + "its request is not once in its log");
    }

    void checkUnreadablePidFile(const Request& request, const LauncherLog& log)
    {
        const LauncherResult& result = *request.result;
        const std::string who = request.action.toText() + ": ";
        const bool isMissing = result.out ==
                               "Cannot read file 'service.pid'. Error: (2) No such file or "
                               "directory\n";
        const bool isEmpty = result.out == "Zero-sized PID file 'service.pid'\n";
        expect(isMissing || isEmpty, who + "printed: " + result.out);
        expect(result.err.empty() && result.status == 0, who + "did not end as it should");
        const bool isEarly = request.action.byPidFile && !request.pidFileSeen;
        expect(isEarly || (isMissing && mayBeGone(request)), who + "did not find the PID file");
        expect(log.last() == "INFO Launch configuration failure.", who + "last: " + log.last());
    }

    /// Whether anything else than the request can have ended its target.
    [[nodiscard]] bool mayBeGone(const Request& request) const
    {
        const bool isParent = plan_.detached && request.target == cycle_.firstPid();
        return cycle_.requests().size() > 1 || !isWaited() ||
               (isParent && !request.action.byPidFile);
    }

    const Cycle& cycle_;
    const Plan& plan_;
    const LauncherLog log_;
    const bool simpleStopRan_, fastStopRan_;
    const std::string servicePid_;
    Verdict verdict_;
};

}  // namespace

std::string Verdict::toText(const Cycle& cycle) const
{
    std::string text = cycle.plan().toText() + "\n";
    for (const std::string& fault : faults) text += "   " + fault + "\n";
    return text;
}

Verdict judge(const Cycle& cycle)
{
    return Checks(cycle).run();
}
