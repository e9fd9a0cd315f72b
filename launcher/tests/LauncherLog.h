// LauncherLog: the launcher's log file, read back into its records.
#pragma once

#include <sys/types.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "ScopedTempDir.h"

struct LauncherLog {
    /// Reads the file; a missing one has no records. What a killed launcher
    /// left of its last line is no record.
    explicit LauncherLog(const std::filesystem::path& file)
    {
        const std::regex layout(
            "[0-9]{4}/[01][0-9]/[0-3][0-9]-[0-2][0-9]:[0-5][0-9]:[0-6][0-9]\\.[0-9]{3},SYSTEM,0,"
            "level=(ERROR|WARN|INFO),pid=[0-9]+,tid=([0-9]+),component=launcher,"
            "class=[A-Za-z_]+,file=[^,/]+,line=[0-9]+,func=[~A-Za-z_]+,message=");
        std::istringstream lines(readText(file));
        for (std::string line; std::getline(lines, line) && !lines.eof();) {
            std::smatch match;
            if (std::regex_search(line, match, layout, std::regex_constants::match_continuous)) {
                records.push_back(match.str(1) + " " + match.suffix().str());
                tid = std::stoi(match[2]);
            } else if (records.empty() || line.find(",SYSTEM,0,level=") != std::string::npos) {
                malformed += line + "\n";
            } else {
                records.back() += "\n" + line;
            }
        }
    }

    /// Number of records that begin with `start`.
    [[nodiscard]] std::ptrdiff_t count(const std::string& start) const
    {
        return std::count_if(records.begin(), records.end(),
                             [&](const std::string& record) { return record.starts_with(start); });
    }
    [[nodiscard]] bool holds(const std::string& start) const { return count(start) != 0; }
    [[nodiscard]] std::string last() const { return records.empty() ? "" : records.back(); }

    /// "LEVEL message" with its named values; may have several lines.
    std::vector<std::string> records;
    /// Lines that are neither a record of the documented layout nor the rest
    /// of a message with several lines.
    std::string malformed;
    /// The thread that wrote the last record: the main one, at the end of a run.
    pid_t tid = -1;
};
