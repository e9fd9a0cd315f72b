#include "LocalTimeText.h"

#include <sys/time.h>

#include <array>
#include <cstdio>
#include <ctime>

std::string localTimeText()
{
    timeval now{};
    gettimeofday(&now, nullptr);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "%04d/%02d/%02d-%02d:%02d:%02d.%03d",
                  local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                  local.tm_min, local.tm_sec, static_cast<int>(now.tv_usec / 1000));
    return text.data();
}
