// Samples: what was measured in the rounds of a benchmark, one number a round.
#pragma once

#include <string>
#include <vector>

using Samples = std::vector<double>;

/// The median, and the interval that holds the true one in 95 of 100 cases.
struct Estimate {
    double low, median, high;
};

/// Requires samples. Few samples give the lowest and the highest as interval.
[[nodiscard]] Estimate estimateOf(Samples samples);
[[nodiscard]] double medianOf(const Samples& samples);
/// Round by round; both have the same rounds.
[[nodiscard]] Samples ratios(const Samples& samples, const Samples& others);
[[nodiscard]] Samples differences(const Samples& samples, const Samples& others);

/// With so many decimals and a unit behind it.
[[nodiscard]] std::string numberText(double number, int decimals, const std::string& unit = "");
/// The median, and its interval in parentheses.
[[nodiscard]] std::string estimateText(const Samples& samples, int decimals,
                                       const std::string& unit = "");
