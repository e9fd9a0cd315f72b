#include "LocalTimeText.h"

#include <sys/time.h>

#include <ctime>
#include <span>

namespace {

/// Fills `digits` with the last ones of `number`.
void putDigits(int number, std::span<char> digits)
{
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, number /= 10) {
        *digit = static_cast<char>('0' + number % 10);
    }
}

}  // namespace

void appendLocalTime(std::string& text)
{
    timeval now{};
    gettimeofday(&now, nullptr);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    // snprintf(3) would take longer than all the rest of a log record.
    char time[] = "yyyy/mm/dd-hh:mm:ss.mmm";
    const std::span<char> digits(time);
    putDigits(local.tm_year + 1900, digits.subspan<0, 4>());
    putDigits(local.tm_mon + 1, digits.subspan<5, 2>());
    putDigits(local.tm_mday, digits.subspan<8, 2>());
    putDigits(local.tm_hour, digits.subspan<11, 2>());
    putDigits(local.tm_min, digits.subspan<14, 2>());
    putDigits(local.tm_sec, digits.subspan<17, 2>());
    putDigits(static_cast<int>(now.tv_usec / 1000), digits.subspan<20, 3>());
    text += time;
}
