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

    /// Whether the id `pid`, which the file holds, was certainly given to a stranger
    /// since; the log then tells so.
    [[nodiscard]] bool isOlderThanProcess(const std::wstring& path, std::int32_t pid) const;

    /// Whether another process runs with the id `pid`, which the file holds, and may
    /// have written it.
    [[nodiscard]] bool isOwnedBy(const std::wstring& path, std::int32_t pid) const;

    /// Whether the file holds the id `pid` and nothing else. No link leads there but
    /// of root, of this user, and of the owner of the file.
    [[nodiscard]] bool holds(const std::wstring& path, std::int32_t pid) const;

    /// Deletes the file if it holds `pid`, and gives whether it did; links, which are
    /// followed, stay. Throws LauncherOsException IDS_CANNOT_DELETE_FILE.
    [[nodiscard]] bool removeIfItHolds(const std::wstring& path, std::int32_t pid) const;

    /// Why root must not signal the process `pid` on the word of the file, which holds
    /// that id: a user who may write to it could have any process killed. Nothing when
    /// it is root's own, or that user's who owns the process, or for other users
    /// than root, whom the system itself keeps from strangers.
    [[nodiscard]] std::optional<std::wstring> reasonToDistrust(const std::wstring& path,
                                                               std::int32_t pid) const;

    /// The process id in the file when another process owns it; nothing for any
    /// other content and for a file that cannot be read.
    [[nodiscard]] std::optional<std::int32_t> runningOwner(const std::wstring& path) const;
};
