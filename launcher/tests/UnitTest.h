// UnitTest: what most unit tests need, fresh for each: the English texts, a
// directory, and the records of the log.
#pragma once

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "Raised.h"
#include "RecordingLogger.h"
#include "ScopedCatalogue.h"
#include "ScopedTempDir.h"

using Texts = std::vector<std::wstring>;

/// The words of a text, which blanks separate.
inline Texts split(const std::wstring& text)
{
    std::wistringstream stream(text);
    return {std::istream_iterator<std::wstring, wchar_t>(stream), {}};
}

class UnitTest : public testing::Test {
protected:
    /// The text with the path of the directory for every '@'.
    [[nodiscard]] std::wstring at(std::wstring text) const
    {
        const std::wstring path = dir_.wide();
        for (std::size_t i = 0; (i = text.find(L'@', i)) != text.npos; i += path.size()) {
            text.replace(i, 1, path);
        }
        return text;
    }

    ScopedCatalogue catalogue_;
    ScopedTempDir dir_;
    RecordingLogger log_;
};
