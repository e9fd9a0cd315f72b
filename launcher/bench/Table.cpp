#include "Table.h"

#include <algorithm>

std::string Table::toText() const
{
    std::string text =
        "| Measure | launcher | Compared with | Result | A/A | Goal | Reached |\n"
        "|---|---|---|---|---|---|---|\n";
    for (const Row& row : rows_) {
        const char* const reached = row.goal.empty() ? "" : row.reached ? "yes" : "**no**";
        for (const std::string& cell : {row.measure, row.launcher, row.other, row.result, row.noise,
                                        row.goal, std::string(reached)}) {
            text += "| " + cell + ' ';
        }
        text += "|\n";
    }
    return text;
}

int Table::missedGoals() const
{
    return static_cast<int>(std::count_if(rows_.begin(), rows_.end(), [](const Row& row) {
        return !row.goal.empty() && !row.reached;
    }));
}
