// waitUntil: waits for a condition, up to a deadline that a loaded machine
// meets too.
#pragma once

#include <chrono>
#include <thread>

/// True as soon as `condition()` is; false when it is not within `patience`.
template <typename Condition>
[[nodiscard]] bool waitUntil(Condition condition,
                             std::chrono::milliseconds patience = std::chrono::seconds(60))
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
