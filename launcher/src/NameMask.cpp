#include "NameMask.h"

#include <cerrno>

namespace {

/// regcomp(3) and regexec(3) leave errno alone.
void setErrno(int error)
{
    errno = error == REG_ESPACE ? ENOMEM : EINVAL;
}

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
    if (!valid_) setErrno(error);
}

NameMask::~NameMask()
{
    if (valid_) regfree(&expression_);
}

bool NameMask::matches(const char* name) const
{
    const int result = regexec(&expression_, name, 0, nullptr, 0);
    errno = 0;
    if (result != 0 && result != REG_NOMATCH) setErrno(result);
    return result == 0;
}
