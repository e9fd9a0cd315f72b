// Judge: what must hold for every cycle. That the launcher takes the right steps
// is the matter of the end-to-end tests.
#pragma once

#include <regex>

#include "Cycle.h"
#include "LauncherLog.h"

/// A cycle that has ended; reads its files.
class JudgedCycle final : public Cycle {
public:
    explicit JudgedCycle(const Cycle& cycle) : Cycle(cycle)
    {
        checkStatus();
        checkLog();
        checkStops();
        for (const Request& request : requests_) {
            if (request.result) checkClient(request, *request.result);
            seen += std::string(seen.empty() ? "" : ",") + kMoments[request.seen][0];
        }
        checkFiles();
    }

    std::string end = "wrong";  ///< how the service has ended, in one word
    std::string seen;           ///< how far the service had come at each request
    std::string faults;         ///< what was wrong, one a line

private:
    void expect(bool holds, const std::string& fault)
    {
        if (!holds) faults += "   " + fault + "\n";
    }
    [[nodiscard]] static bool has(const char* file) { return std::filesystem::exists(file); }

    void checkStatus()
    {
        expect(!plan_.detached || first_.status == 0, "the parent of the service failed");
        std::map<int, std::string> allowed = statusesOfPlan();
        for (const Request& request : requests_) allowFor(request, allowed);
        expect(allowed.count(status_) != 0, "ended with " + std::to_string(status_));
        if (allowed.count(status_) != 0) end = allowed[status_];
        isOwnEnd_ = end == "orderly" || end == "exception";
    }

    /// With the word for each. Which stop method ran tells which request was first.
    [[nodiscard]] std::map<int, std::string> statusesOfPlan() const
    {
        std::map<int, std::string> allowed;
        for (const std::string& script : {plan_.start, stopRan_ ? plan_.stop : ""}) {
            const std::size_t exit = script.find("exit:");
            if (exit != script.npos) allowed[std::stoi(script.substr(exit + 5))] = "exit";
        }
        if (!allowed.empty() || (plan_.waits() && !stopRan_)) return allowed;
        const int base = !plan_.detached || !stopRan_ ? 0 : has("stopFast.report") ? 200 : 100;
        const bool stopFails = stopRan_ && plan_.stop.ends_with("throw");
        const int failure = plan_.start.ends_with("throw") ? 8 : stopFails ? 9 : 0;
        allowed[base + failure] = failure == 0 ? "orderly" : "exception";
        return allowed;
    }

    void allowFor(const Request& request, std::map<int, std::string>& allowed) const
    {
        const std::string said = request.result ? request.result->err : "";
        if (said.find(" was forced to stop") != said.npos) allowed[-SIGKILL] = "killed";
        if (request.action.signal == SIGTERM) {
            allowed[128 + SIGTERM] = "terminated";
            if (request.seen >= kReady || log_.holds("INFO JVM created")) return;
            allowed[-SIGTERM] = "terminated-early";
            // HotSpot can take a SIGTERM amid its creation for a failure of that; so
            // does the command `java`, some times in a hundred.
            if (log_.holds("WARN JVM halted pid=" + pid_)) allowed[1] = "halted";
        } else if (request.seen == kLog && !log_.holds("INFO PID saved") && !has("service.pid")) {
            allowed[-request.action.signal] = "stopped-early";
        }
    }

    /// Its lines are whole, and its last record says what the status says.
    void checkLog()
    {
        expect(log_.malformed.empty(), "malformed in the log: " + log_.malformed);
        for (const std::string& record : log_.records) {
            const bool isTorn = record.find('\n') != record.npos;
            expect(!isTorn || record.find("Exception") != record.npos, "torn: " + record);
        }
        const std::string status = "exitCode=" + std::to_string(status_);
        const std::string& message = first_.err;  // and a line feed
        if (end == "orderly") {
            expect(log_.last() == "INFO Normal exit " + status, "last record: " + log_.last());
            expect(message.empty(), "standard error: " + message);
        } else if (end == "exception") {
            const std::string last = "ERROR " + message.substr(0, message.size() - 1) + " ";
            expect(log_.last() == last + status, "last record: " + log_.last());
        } else if (end == "exit" || end == "terminated") {
            // Threads that are busy then may log until the log is closed.
            const std::string exit = "WARN JVM exited with nonzero exit code pid=" + pid_ + ", ";
            expect(log_.count(exit + status) == 1 && log_.count("INFO JVM exited") == 1, "no exit");
            expect(!log_.holds("INFO Normal exit"), "a normal exit is logged");
            expect(readText("launcher.log").ends_with('\n'), "the log is cut");
        }
    }

    /// Nothing that was asked is lost, and nothing was done twice or unasked.
    void checkStops()
    {
        std::map<std::string, int> sent;
        bool simple = false, fast = false;
        for (const auto& [action, moment, isCertain, log, client, result, gone] : requests_) {
            if (action.signal == SIGTERM) continue;
            const std::string risen =
                std::string("INFO SIG") + sigabbrev_np(action.signal) + " has risen";
            ++sent[risen];
            (action.signal == SIGUSR2 ? fast : simple) = true;
            if (isOwnEnd_ && isCertain) expect(log_.holds(risen), "not " + risen);
        }
        for (const std::string& record : log_.records) {
            if (record.ends_with(" has risen")) expect(--sent[record] >= 0, "unsent: " + record);
        }
        expect(!has("stop.report") || (simple && !has("stopFast.report")), "stop was called");
        expect(!has("stopFast.report") || fast, "stopFast was called");
    }

    /// What a stop client says is true, and its status and log agree.
    void checkClient(const Request& request, const LauncherResult& result)
    {
        const auto& [status, out, err] = result;
        const LauncherLog log(request.log);
        const bool mayBeGone = requests_.size() > 1 || !plan_.waits();
        std::string last = "INFO Normal exit exitCode=" + std::to_string(status);
        const bool isForced = err.find(" was forced to stop") != err.npos && status == 0;
        bool isTrue = isForced && request.action.has("--timeout");
        if (err.ends_with(" stopped gracefully\n")) isTrue = request.serviceGone && status == 0;
        if (err.ends_with(" nothing was stopped\n")) isTrue = mayBeGone && status == 11;
        if (err.empty()) {  // the PID file was gone
            isTrue = mayBeGone && out.ends_with("(2) No such file or directory\n") && status == 0;
            last = "INFO Launch configuration failure.";
        }
        expect(isTrue, request.action.client + ": " + std::to_string(status) + " " + out + err);
        expect(log.malformed.empty() && log.last() == last, "last of the client: " + log.last());
    }

    /// No PID file is left but where the JVM or a signal ended the process, and no
    /// other file. An old log is the one by which the launcher tries the place.
    void checkFiles()
    {
        const std::string content = readText("service.pid");
        const bool isFine = isOwnEnd_ ? !has("service.pid") : content.empty() || content == pid_;
        expect(isFine, "a PID file is left, with '" + content + "'");
        const std::regex known("service.pid|(launcher|client.)[.]log([.]1)?|ready|stop.*[.]report");
        for (const auto& entry : std::filesystem::directory_iterator(".")) {
            const std::string name = entry.path().filename();
            expect(std::regex_match(name, known), "a file is left: " + name);
        }
    }

    const LauncherResult first_ = process_.waitForExit();
    const bool hasLeft_ = !ChildProcesses::ended.empty();  // to an orphan, the service
    const int status_ = hasLeft_ ? ChildProcesses::ended.rbegin()->second : first_.status;
    const std::string pid_ =
        std::to_string(hasLeft_ ? ChildProcesses::ended.rbegin()->first : process_.pid);
    const LauncherLog log_{"launcher.log"};
    const bool stopRan_ = has("stop.report") || has("stopFast.report");
    bool isOwnEnd_ = false;  ///< not the JVM's, nor by a signal
};
