// IFileUtils: files, directories and paths. Paths are wide text.
// Stateless, from any thread. A failure raises LauncherOsException (code 20)
// with the message named at the operation; nothing is logged.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class FileContent;

/// Word size of an ELF file.
enum class BinaryType { Elf32 = 0, Elf64 = 1 };

class IFileUtils {
public:
    /// Creates the directory and its missing parents, except for a component
    /// whose parent is "." or "/": that one is never created (required).
    /// Raises IDS_UNABLE_TO_RESOLVE_PATH.
    virtual void createDirectories(const std::wstring& path) const = 0;
    /// createDirectories() of everything before the last '/', if there is one.
    virtual void createParentDirectories(const std::wstring& path) const = 0;
    /// Creates the file if it is missing, never truncates; gives its absolute
    /// path. Raises IDS_FILE_READ_ERROR or as getAbsolutePath().
    [[nodiscard]] virtual std::wstring touchFile(const std::wstring& path) const = 0;
    /// The path without links and dots; it must exist. Raises
    /// IDS_UNABLE_TO_CONVERT_PATH_TO_ABS.
    [[nodiscard]] virtual std::wstring getAbsolutePath(const std::wstring& path) const = 0;
    /// Everything before the last '/'. Raises IDS_CANNOT_GET_PARENT_DIR when
    /// there is none or it is the first character.
    [[nodiscard]] virtual std::wstring getParentDirectory(const std::wstring& path) const = 0;
    /// Raises IDS_FILE_READ_ERROR, IDS_DLL_NOT_ELF or IDS_DLL_UNKNOWN_BINTYPE.
    [[nodiscard]] virtual BinaryType getBinaryType(const std::wstring& path) const = 0;
    /// ':'
    [[nodiscard]] virtual wchar_t getPathListSeparator() const = 0;
    /// '/'
    [[nodiscard]] virtual wchar_t getDirectorySeparator() const = 0;
    /// False when nothing is there (errno is then ENOENT on return). Raises
    /// IDS_FILE_READ_ERROR when it cannot be told.
    [[nodiscard]] virtual bool fileExists(const std::wstring& path) const = 0;
    /// False also when it cannot be told.
    [[nodiscard]] virtual bool isDirectory(const std::wstring& path) const = 0;
    /// False when nothing was there. Raises IDS_CANNOT_DELETE_FILE (errno is
    /// then that of unlink(2)).
    virtual bool deleteFile(const std::wstring& path) const = 0;
    /// The whole file, 10 MiB at most. Raises IDS_FILE_READ_ERROR or
    /// IDS_FILE_TOO_BIG.
    [[nodiscard]] virtual std::shared_ptr<FileContent> readFile(const std::wstring& path) const = 0;
    /// Creates or truncates the file. Raises IDS_FILE_WRITE_ERROR.
    virtual void writeFile(const void* data, std::uint32_t size,
                           const std::wstring& path) const = 0;
    /// Absolute paths, in readdir(3) order, of the entries that are no
    /// directories themselves and whose name holds a match of `mask` ('*' for
    /// any text, the rest a basic regular expression, unanchored; empty for
    /// all). A missing directory gives an empty list. Raises IDS_FILE_READ_ERROR.
    [[nodiscard]] virtual std::vector<std::wstring> listFiles(const std::wstring& directory,
                                                              const std::wstring& mask) const = 0;
    virtual ~IFileUtils() = default;
};
