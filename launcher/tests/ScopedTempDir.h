// ScopedTempDir: a fresh directory, removed with all that is in it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "TextConversion.h"

class ScopedTempDir final {
public:
    ScopedTempDir()
    {
        std::string name =
            (std::filesystem::temp_directory_path() / "launcher-test-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("cannot make a temporary directory");
        path_ = std::filesystem::canonical(name);
    }
    ~ScopedTempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScopedTempDir(const ScopedTempDir&) = delete;
    ScopedTempDir& operator=(const ScopedTempDir&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::string operator/(const std::string& name) const { return path_ / name; }
    [[nodiscard]] std::wstring wide(const std::string& name = "") const
    {
        return toWide((name.empty() ? path_ : path_ / name).string());
    }
    /// Writes a file below the directory, with its parents; gives its path.
    std::string write(const std::string& name, std::string_view content) const
    {
        const std::filesystem::path file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }

private:
    std::filesystem::path path_;
};

/// The whole file; empty when it cannot be read.
inline std::string readText(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}
