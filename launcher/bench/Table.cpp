#include "Table.h"

#include <algorithm>

namespace {

const char* textOf(Verdict verdict)
{
    switch (verdict) {
        case Verdict::Yes:
            return "yes";
        case Verdict::WithinNoise:
            return "within the noise";
        case Verdict::No:
            return "**no**";
        default:
            return "";
    }
}

}  // namespace

std::string Table::toText() const
{
    std::string text =
        "| Measure | launcher | Compared with | Result | A/A | Goal | Reached |\n"
        "|---|---|---|---|---|---|---|\n";
    for (const Row& row : rows_) {
        for (const std::string& cell : {row.measure, row.launcher, row.other, row.result, row.noise,
                                        row.goal, std::string(textOf(row.verdict))}) {
            text += "| " + cell + ' ';
        }
        text += "|\n";
    }
    return text;
}

int Table::count(Verdict verdict) const
{
    return static_cast<int>(std::count_if(
        rows_.begin(), rows_.end(), [verdict](const Row& row) { return row.verdict == verdict; }));
}
