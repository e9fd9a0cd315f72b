// FuzzSupport: what the fuzz targets share. A target is the one function that
// libFuzzer and ReplayMain call, on one thread: it runs a unit on any bytes and
// checks what has to hold for all of them. Records of the log are built and
// then discarded, since none is opened.
#pragma once

#include <fcntl.h>
#include <unistd.h>

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

/// InputFile: a file for a unit to read, alone in a directory; both go with it.
class InputFile final {
public:
    explicit InputFile(const std::string& name)
        : path_(dir_.wide(name)),
          descriptor_(open((dir_ / name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600))
    {
        check(descriptor_ >= 0, "the file of the input can be opened");
    }
    ~InputFile() { close(descriptor_); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    [[nodiscard]] std::wstring directory() const { return dir_.wide(); }
    [[nodiscard]] const std::wstring& path() const { return path_; }
    /// Makes `content` the whole of the file.
    void write(std::string_view content) const
    {
        const auto size = static_cast<ssize_t>(content.size());
        check(pwrite(descriptor_, content.data(), content.size(), 0) == size &&
                  ftruncate(descriptor_, size) == 0,
              "the input can be written");
    }

private:
    ScopedTempDir dir_;
    std::wstring path_;
    int descriptor_;
};
