// NameMask: a file-name mask of the class path. '*' stands for any text; the
// rest is a POSIX basic regular expression as it is, so '.' matches any
// character and '?' itself; a match anywhere in a name counts. An empty mask
// matches every name. All of that is required.
#pragma once

#include <regex.h>

#include <string>

class NameMask final {
public:
    /// Compiles `mask` (UTF-8). On failure isValid() is false and errno is set.
    explicit NameMask(const std::string& mask);
    ~NameMask();
    NameMask(const NameMask&) = delete;
    NameMask& operator=(const NameMask&) = delete;

    /// False when the mask is no regular expression.
    [[nodiscard]] bool isValid() const { return valid_; }
    /// False with errno 0 for no match, and with errno set on failure. Requires
    /// isValid().
    [[nodiscard]] bool matches(const char* name) const;

private:
    regex_t expression_{};
    bool valid_ = false;
};
