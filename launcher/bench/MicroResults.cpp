#include "MicroResults.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace {

constexpr std::size_t kNameColumn = 0;
constexpr std::size_t kCpuColumn = 3;
constexpr std::size_t kUnitColumn = 4;

double nanosPer(const std::string& unit)
{
    static const std::map<std::string, double> kUnits{
        {"ns", 1}, {"us", 1e3}, {"ms", 1e6}, {"s", 1e9}};
    const auto found = kUnits.find(unit);
    if (found == kUnits.end()) throw std::runtime_error("unknown unit " + unit);
    return found->second;
}

std::vector<std::string> splitCells(const std::string& line)
{
    std::istringstream cells(line);
    std::vector<std::string> list;
    for (std::string cell; std::getline(cells, cell, ',');) list.push_back(cell);
    return list;
}

}  // namespace

MicroResults::MicroResults(const std::string& file)
{
    std::ifstream lines(file);
    if (!lines) throw std::runtime_error("cannot read " + file);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind('"', 0) != 0) continue;  // no result but a heading
        const std::vector<std::string> cells = splitCells(line);
        if (cells.size() <= kUnitColumn) throw std::runtime_error("no result: " + line);
        const std::string& quoted = cells[kNameColumn];
        nanos_[quoted.substr(1, quoted.size() - 2)].push_back(std::stod(cells[kCpuColumn]) *
                                                              nanosPer(cells[kUnitColumn]));
    }
}

const Samples& MicroResults::nanosOf(const std::string& name) const
{
    const auto found = nanos_.find(name);
    if (found == nanos_.end()) throw std::runtime_error("no result of " + name);
    return found->second;
}
