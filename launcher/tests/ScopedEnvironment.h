// ScopedEnvironment: sets or unsets an environment variable for a scope.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

class ScopedEnvironment final {
public:
    /// A null `value` unsets the variable.
    ScopedEnvironment(std::string name, const char* value) : name_(std::move(name))
    {
        if (const char* before = std::getenv(name_.c_str())) before_ = before;
        set(value);
    }
    ~ScopedEnvironment() { set(before_ ? before_->c_str() : nullptr); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    void set(const char* value) const
    {
        static_cast<void>(value ? setenv(name_.c_str(), value, 1) : unsetenv(name_.c_str()));
    }

    std::string name_;
    std::optional<std::string> before_;
};
