// SimpleOptional: a value that may be absent. Asking an absent one for its
// value throws LauncherException "Asking value of empty optional" (code 21).
#pragma once

#include <optional>
#include <utility>

#include "LauncherException.h"

template <typename T>
class SimpleOptional final {
public:
    SimpleOptional() = default;
    explicit SimpleOptional(T value) : value_(std::move(value)) {}

    [[nodiscard]] bool isPresent() const { return value_.has_value(); }
    [[nodiscard]] const T& value() const
    {
        if (!value_) throw LauncherException(L"Asking value of empty optional");
        return *value_;
    }

private:
    std::optional<T> value_;
};
