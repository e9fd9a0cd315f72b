// ErrorText: problems that are collected for the user instead of being raised.
#pragma once

#include <string>

#include "IOsUtilsFactory.h"

/// Appends `text` to the texts found before, on a line of its own.
inline void appendErrorText(const std::wstring& text, std::wstring& errors)
{
    if (!errors.empty()) errors += getOsUtilsFactory().getLineEnd();
    errors += text;
}
