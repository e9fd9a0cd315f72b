// launcher_faults: lets calls of the launcher fail, one in each run, and judges
// what comes of it.
//
//   launcher_faults plan quick   lists the rows to run: the likeliest errors of
//                                every way to a call, the first and the last
//                                time that it is gone, with one JDK
//   launcher_faults plan all     the same, with all errors in every scenario
//                                and with all JDKs
//   launcher_faults calls        names the calls that can be let fail
//   launcher_faults run ROW...   runs the row and tells what came of it; fails
//                                when that is what must never happen
//
// A row is: scenario, function@way#pass, error, and the place in the sources.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Calls.h"
#include "Jdk.h"
#include "Scenario.h"

namespace {

/// The errors of a call that are to be tried, `most` of them.
std::vector<int> errorsOf(const std::string& function, std::ptrdiff_t most)
{
    for (const Call& call : kCalls) {
        if (function != call.name) continue;
        const auto* const end = std::find(call.errors.begin(), call.errors.end(), 0);
        const auto count = std::min(end - call.errors.begin(), most);
        return {call.errors.begin(), call.errors.begin() + count};
    }
    throw std::runtime_error("no errors of " + function);
}

/// The number of an error of this system; 0 for no error.
int errorNumber(const std::string& name)
{
    for (int number = 1; number < 200; ++number) {
        const char* const known = strerrorname_np(number);
        if (known && name == known) return number;
    }
    return 0;
}

/// A way to a call, as the shim lists it.
struct Passage {
    std::string function, way;
    std::vector<std::string> frames;
    unsigned passes = 0;
};

/// The scenarios that need no JVM, and those with the first `jdks` JDKs.
std::vector<Scenario> scenarios(std::size_t jdks)
{
    std::vector<Scenario> all = scenariosWithoutJvm();
    for (const auto& [version, library] : installedJdks()) {
        if (jdks-- == 0) break;
        for (Scenario& scenario : scenariosWithJvm(version, library)) {
            all.push_back(std::move(scenario));
        }
    }
    return all;
}

std::string firstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

bool isDocumented(int status)
{
    const int code = status >= 200 ? status - 200 : status >= 100 ? status - 100 : status;
    return (code >= 0 && code <= 12) || code == 20 || code == 21;
}

/// What comes of faults because it is required, though it is no good.
constexpr std::pair<std::string_view, std::string_view> kRequired[] = {
    // What a full disk takes of the log is lost.
    {"fflush", "leaves a malformed log"},
    {"fclose", "leaves a malformed log"},
    // A text that cannot be converted is empty, also an argument or a path.
    {"iconv_open", "serves without its PID file"},
    {"iconv_open", "goes on without its PID file"},
    {"iconv_open", "takes a process for gone that runs"},
};

/// What must never come of a fault in `function`; empty for nothing.
std::string findProblem(const Scenario& scenario, const Outcome& outcome,
                        const std::string& function)
{
    if (!outcome.problem.empty()) return outcome.problem;
    if (outcome.status < 0) return "killed by signal " + std::to_string(-outcome.status);
    if (!isDocumented(outcome.status)) return "ends with a status of no meaning";
    const bool asEver = outcome.status == scenario.status && outcome.worked;
    // What cannot be printed cannot be told.
    const bool isMute = function == "fputs";
    if (isMute && asEver) return "";
    const bool isSilent = firstLine(outcome.text).empty();
    const bool isUsual = std::regex_match(outcome.text, std::regex(scenario.text));
    if (isUsual && !isSilent && !outcome.worked) return "tells what is not so";
    if (!isSilent || (isUsual && asEver)) return "";
    return outcome.logged ? "tells the log alone" : "does not tell why";
}

bool isHarmless(const Scenario& scenario, const Outcome& outcome)
{
    return outcome.status == scenario.status && outcome.worked &&
           (outcome.text.empty() || std::regex_match(outcome.text, std::regex(scenario.text)));
}

/// The calls of a run in which nothing fails, in the order of their first pass.
std::vector<Passage> listCalls(const Scenario& scenario)
{
    const Outcome outcome = perform(scenario, "");
    const std::string problem = findProblem(scenario, outcome, "");
    if (!problem.empty() || !isHarmless(scenario, outcome)) {
        throw std::runtime_error(scenario.name + " fails without a fault: " + problem +
                                 ", status " + std::to_string(outcome.status) + "\n" +
                                 outcome.text);
    }
    std::vector<Passage> calls;
    std::map<std::string, std::size_t> known;
    std::istringstream lines(outcome.faultLog);
    for (std::string line; std::getline(lines, line);) {
        Passage call;
        std::istringstream words(line);
        words >> call.function >> call.way;
        for (std::string frame; words >> frame;) call.frames.push_back(frame);
        const auto [entry, isNew] = known.try_emplace(call.function + call.way, calls.size());
        if (isNew) calls.push_back(call);
        ++calls[entry->second].passes;
    }
    return calls;
}

/// "File.cpp:line<Caller.cpp:line" for every call.
std::vector<std::string> places(const std::vector<Passage>& calls, const std::string& program)
{
    std::string command = "addr2line -s -e '" + program + "'";
    for (const Passage& call : calls) {
        for (const std::string& frame : call.frames) {
            std::ostringstream before;  // the address is the one behind the call
            before << std::hex << std::stoull(frame, nullptr, 16) - 1;
            command += " " + before.str();
        }
    }
    const std::unique_ptr<FILE, int (*)(FILE*)> lines(popen(command.c_str(), "r"), pclose);
    std::vector<std::string> found;
    for (const Passage& call : calls) {
        std::string place;
        for (std::size_t i = 0; i < call.frames.size(); ++i) {
            char line[256] = "?";
            if (!lines || !std::fgets(line, sizeof line, lines.get())) break;
            const std::string text(line, std::strcspn(line, " \n"));
            place += (place.empty() ? "" : "<") + text;
        }
        found.push_back(place);
    }
    return found;
}

void planScenario(const Scenario& scenario, bool all, std::set<std::string>& planned)
{
    const std::vector<Passage> calls = listCalls(scenario);
    const std::vector<std::string> place = places(calls, scenario.program);
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const Passage& call = calls[i];
        const bool isNew = planned.insert(scenario.program + call.function + call.way).second;
        if (!all && !isNew) continue;
        for (const unsigned pass : std::set<unsigned>{1, call.passes}) {
            for (const int error : errorsOf(call.function, all ? 12 : 2)) {
                std::printf("%s %s@%s#%u %s %s\n", scenario.name.c_str(), call.function.c_str(),
                            call.way.c_str(), pass, strerrorname_np(error), place[i].c_str());
            }
        }
    }
}

void plan(bool all)
{
    std::set<std::string> planned;
    for (const Scenario& scenario : scenarios(all ? std::string::npos : 1)) {
        planScenario(scenario, all, planned);
    }
}

/// Whether the row came out well.
bool run(const std::string& name, const std::string& call, const std::string& error,
         const std::string& place)
{
    const std::vector<Scenario> all = scenarios(std::string::npos);
    const auto scenario = std::find_if(all.begin(), all.end(),
                                       [&](const Scenario& other) { return other.name == name; });
    std::smatch words;
    static const std::regex kCall("([a-z0-9_]+)@([0-9a-f]+)#([0-9]+)");
    const int number = errorNumber(error);
    if (scenario == all.end() || !std::regex_match(call, words, kCall) || number == 0) {
        throw std::runtime_error("no such row: " + name + " " + call + " " + error);
    }
    const std::string function = words.str(1);
    const Outcome outcome = perform(*scenario, function + " " + words.str(2) + " " + words.str(3) +
                                                   " " + std::to_string(number));
    const std::string problem = findProblem(*scenario, outcome, function);
    const bool failed = outcome.faultLog == "failed\n";
    const bool isRequired = std::find(std::begin(kRequired), std::end(kRequired),
                                      std::pair<std::string_view, std::string_view>(
                                          function, problem)) != std::end(kRequired);
    const char* const verdict = isRequired                       ? "required"
                                : !problem.empty()               ? "FAILED"
                                : !failed                        ? "unreached"
                                : isHarmless(*scenario, outcome) ? "harmless"
                                                                 : "message";
    std::printf("%-9s %-15s %-34s %-12s %4d  %s%s%s  [%s]\n", verdict, name.c_str(), call.c_str(),
                error.c_str(), outcome.status, problem.c_str(), problem.empty() ? "" : "; ",
                firstLine(outcome.text).c_str(), place.c_str());
    return problem.empty() || isRequired;
}

int obey(const std::vector<std::string>& words)
{
    if (words.size() == 2 && words[0] == "plan") {
        plan(words[1] == "all");
        return 0;
    }
    if (words.size() == 1 && words[0] == "calls") {
        for (const Call& call : kCalls) std::printf("%s\n", call.name);
        return 0;
    }
    if (words.size() == 4 && words[0] == "target") {
        beTarget(words[1] == "obey" ? Target::Obeys : Target::Ignores, words[3]);
    }
    if (words.size() >= 4 && words[0] == "run") {
        return run(words[1], words[2], words[3], words.size() > 4 ? words[4] : "") ? 0 : 1;
    }
    throw std::runtime_error("launcher_faults plan quick|all, or run SCENARIO CALL ERROR");
}

}  // namespace

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);  // nothing for a child to write again
    try {
        return obey(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "error: %s\n", e.what());
        return 2;
    }
}
