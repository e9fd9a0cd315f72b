// Table: the results of all benchmarks, in Markdown.
#pragma once

#include <optional>
#include <string>
#include <vector>

/// Whether a goal is reached.
enum class Verdict {
    None,         ///< there is no goal
    Yes,          ///< by the median
    WithinNoise,  ///< not by the median, but that may be by chance
    No,
};

struct Row {
    std::string measure;   ///< what is measured, and the JDK
    std::string launcher;  ///< the launcher's own figure
    std::string other;     ///< that of what it is compared with, and its name
    std::string result;    ///< ratio or difference, with the interval of its median
    std::string noise;     ///< the same of the other against itself
    std::string goal;      ///< empty for a row that is only shown
    Verdict verdict = Verdict::None;
};

class Table final {
public:
    void add(Row row) { rows_.push_back(std::move(row)); }
    [[nodiscard]] std::string toText() const;
    /// How many rows have that verdict.
    [[nodiscard]] int count(Verdict verdict) const;

private:
    std::vector<Row> rows_;
};
