// FileContent: the bytes of a file that was read whole, and where they came
// from. Four zero bytes stand behind the content, so that it can be read as a
// terminated string. Owns its buffer; immutable for its readers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

class FileContent final {
public:
    /// A buffer for `size` bytes of the file at `path`, which its reader fills.
    FileContent(std::wstring path, std::uint32_t size)
        : path_(std::move(path)),
          size_(size),
          data_(std::make_unique_for_overwrite<char[]>(size + kTail))
    {
        std::fill_n(data_.get() + size, kTail, '\0');
    }

    [[nodiscard]] char* data() { return data_.get(); }
    [[nodiscard]] const char* data() const { return data_.get(); }
    [[nodiscard]] std::uint32_t size() const { return size_; }
    [[nodiscard]] std::string_view view() const { return {data_.get(), size_}; }
    [[nodiscard]] const std::wstring& path() const { return path_; }

private:
    static constexpr std::size_t kTail = 4;

    std::wstring path_;
    std::uint32_t size_;
    std::unique_ptr<char[]> data_;
};
