// Summary: how many cycles went which way, so that a reader sees that all ways
// occurred.
#pragma once

#include <map>
#include <string>

#include "Cycle.h"
#include "Judge.h"

class Summary final {
public:
    /// What a cycle adds, a line for each row of the table that it counts in;
    /// the first line is the column.
    static std::string contribution(const Cycle& cycle, End end);

    void add(const std::string& contribution);
    [[nodiscard]] std::string toText() const;

private:
    std::map<std::string, std::map<std::string, int>> counts_;  ///< by column, row
};
