// NopLogger: discards every record; stands in where no log file is open.
#pragma once

#include "ILogger.h"

class NopLogger final : public ILogger {
public:
    void log(const std::wstring&, const wchar_t*, const wchar_t*, std::int32_t, const wchar_t*,
             const std::wstring&) override
    {
    }
    void flush() override {}
};
