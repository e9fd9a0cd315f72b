// Table: the results of all benchmarks, in Markdown.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct Row {
    std::string measure;   ///< what is measured, and the JDK
    std::string launcher;  ///< the launcher's own figure
    std::string other;     ///< that of what it is compared with, and its name
    std::string result;    ///< ratio or difference
    std::string noise;     ///< the same of the other against itself
    std::string goal;      ///< empty for a row that is only shown
    bool reached = false;  ///< for a row with a goal
};

class Table final {
public:
    void add(Row row) { rows_.push_back(std::move(row)); }
    [[nodiscard]] std::string toText() const;
    [[nodiscard]] int missedGoals() const;

private:
    std::vector<Row> rows_;
};
