// Samples: what was measured in the rounds of a benchmark, one number a round.
#pragma once

#include <string>
#include <vector>

using Samples = std::vector<double>;

/// The middle of the samples and the quarters around it.
struct Spread {
    double low, median, high;
};

/// Requires samples.
[[nodiscard]] Spread spreadOf(Samples samples);
[[nodiscard]] double medianOf(const Samples& samples);
/// Round by round; both have the same rounds.
[[nodiscard]] Samples ratios(const Samples& samples, const Samples& others);
[[nodiscard]] Samples differences(const Samples& samples, const Samples& others);

/// With so many decimals and a unit behind it.
[[nodiscard]] std::string numberText(double number, int decimals, const std::string& unit = "");
/// The median, and the quarters in parentheses.
[[nodiscard]] std::string spreadText(const Samples& samples, int decimals,
                                     const std::string& unit = "");
