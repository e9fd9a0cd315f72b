// PidFile: the file in which a running launcher keeps its process id, in
// decimal digits and nothing else. Stateless; paths are wide text. Who deletes
// a file for what is in it holds a FileLock on it from the look on: another
// launcher may be about to write its own.
#pragma once

#include <cstdint>
#include <optional>
#include <sstream>
#include <string>

class PidFile final {
public:
    /// False only when there certainly is no such file.
    [[nodiscard]] bool mayExist(const std::wstring& path) const;

    /// Writes the current process id over whatever the file holds; nothing for an
    /// empty path. Throws LauncherException (code 3) with the text of the failed
    /// operation.
    void save(const std::wstring& path) const;

    /// Deletes the file. Never throws a LauncherException: gives the system's
    /// text of the failure ("(13) Permission denied"), or nothing when the file
    /// is gone or the path is empty. A directory, device or pipe is left alone,
    /// which is a failure.
    std::optional<std::wstring> remove(const std::wstring& path) const;

    /// The process id in the file, or -1 for content that is none, with the
    /// reason written to `errorStream`. Throws LauncherException for an empty
    /// path (code 21) and when the file cannot be read (code 20).
    [[nodiscard]] std::int32_t read(const std::wstring& path, std::wostream& errorStream) const;

    /// The process id in the file when another process with it runs; nothing
    /// for any other content and for a file that cannot be read.
    [[nodiscard]] std::optional<std::int32_t> runningOwner(const std::wstring& path) const;
};
