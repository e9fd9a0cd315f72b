#include "Samples.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <functional>

namespace {

template <typename Operation>
Samples combine(const Samples& samples, const Samples& others, Operation operation)
{
    Samples results;
    std::transform(samples.begin(), samples.end(), others.begin(), std::back_inserter(results),
                   operation);
    return results;
}

}  // namespace

Estimate estimateOf(Samples samples)
{
    std::sort(samples.begin(), samples.end());
    // By order statistics: how many of n samples lie below the true median is
    // binomial, n/2 give or take sqrt(n)/2, of which 1.96 in 95 of 100 cases.
    const auto count = static_cast<double>(samples.size());
    const double reach = 1.96 * std::sqrt(count) / 2;
    const double low = std::max(0.0, std::floor(count / 2 - reach) - 1);
    const double high = std::min(count - 1, std::ceil(count / 2 + reach));
    const std::size_t middle = samples.size() / 2;
    const double median =
        samples.size() % 2 == 1 ? samples[middle] : (samples[middle - 1] + samples[middle]) / 2;
    return {samples[static_cast<std::size_t>(low)], median,
            samples[static_cast<std::size_t>(high)]};
}

double medianOf(const Samples& samples)
{
    return estimateOf(samples).median;
}

Samples ratios(const Samples& samples, const Samples& others)
{
    return combine(samples, others, std::divides<>());
}

Samples differences(const Samples& samples, const Samples& others)
{
    return combine(samples, others, std::minus<>());
}

std::string numberText(double number, int decimals, const std::string& unit)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
    return text.data() + (unit.empty() ? "" : " " + unit);
}

std::string estimateText(const Samples& samples, int decimals, const std::string& unit)
{
    const Estimate estimate = estimateOf(samples);
    return numberText(estimate.median, decimals, unit) + " (" + numberText(estimate.low, decimals) +
           " to " + numberText(estimate.high, decimals) + ")";
}
