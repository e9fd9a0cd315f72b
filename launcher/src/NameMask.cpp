#include "NameMask.h"

#include <cerrno>

namespace {

std::string toExpression(const std::string& mask)
{
    if (mask.empty()) return ".*";
    std::string expression;
    for (const char character : mask) {
        if (character == '*') expression += '.';
        expression += character;
    }
    return expression;
}

}  // namespace

NameMask::NameMask(const std::string& mask)
{
    const int error = regcomp(&expression_, toExpression(mask).c_str(), 0);
    valid_ = error == 0;
    if (!valid_) errno = error == REG_ESPACE ? ENOMEM : EINVAL;  // regcomp(3) leaves it alone
}

NameMask::~NameMask()
{
    if (valid_) regfree(&expression_);
}

bool NameMask::matches(const std::string& name) const
{
    return regexec(&expression_, name.c_str(), 0, nullptr, 0) == 0;
}
