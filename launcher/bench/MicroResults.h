// MicroResults: what launcher_microbench has measured, from the CSV file that
// it wrote.
#pragma once

#include <map>
#include <string>

#include "Samples.h"

class MicroResults final {
public:
    /// Throws std::runtime_error for a file that cannot be read.
    explicit MicroResults(const std::string& file);

    /// CPU nanoseconds of the repetitions of a benchmark, in their order.
    /// Throws std::runtime_error when it has not run.
    [[nodiscard]] const Samples& nanosOf(const std::string& name) const;

private:
    std::map<std::string, Samples> nanos_;
};
