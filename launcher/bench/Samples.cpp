#include "Samples.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <functional>

namespace {

double quantile(const Samples& sorted, double share)
{
    const double position = share * static_cast<double>(sorted.size() - 1);
    const auto below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, sorted.size() - 1);
    const double rest = position - static_cast<double>(below);
    return sorted[below] * (1 - rest) + sorted[above] * rest;
}

template <typename Operation>
Samples combine(const Samples& samples, const Samples& others, Operation operation)
{
    Samples results;
    std::transform(samples.begin(), samples.end(), others.begin(), std::back_inserter(results),
                   operation);
    return results;
}

}  // namespace

Spread spreadOf(Samples samples)
{
    std::sort(samples.begin(), samples.end());
    return {quantile(samples, 0.25), quantile(samples, 0.5), quantile(samples, 0.75)};
}

double medianOf(const Samples& samples)
{
    return spreadOf(samples).median;
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

std::string spreadText(const Samples& samples, int decimals, const std::string& unit)
{
    const Spread spread = spreadOf(samples);
    return numberText(spread.median, decimals, unit) + " (" + numberText(spread.low, decimals) +
           " to " + numberText(spread.high, decimals) + ")";
}
