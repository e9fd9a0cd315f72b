// FuzzSupport: what the fuzz targets share. A target is the one function that
// libFuzzer and ReplayMain call, on one thread: it runs a unit on any bytes and
// checks what has to hold for all of them. Records of the log are built and
// then discarded, since none is opened.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "ScopedCatalogue.h"
#include "ScopedTempDir.h"

/// Unless `holds`, aborts: the fuzzer then keeps the input.
inline void check(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "This does not hold: %s\n", what);
    std::abort();
}

inline std::string_view asText(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

/// The active texts, for all of the run.
inline const ScopedCatalogue& kEnglishTexts = *new ScopedCatalogue;

/// Makes `content` the whole of the file `name`; gives its directory, which goes
/// at the end.
inline std::wstring inputFile(const std::string& name, std::string_view content)
{
    static const ScopedTempDir directory;
    directory.write(name, content);
    return directory.wide();
}
