// FileLock: keeps other launchers off a file for a scope, so that what one
// finds in it still holds when it acts on that. The lock is an advisory one
// that ends with the process at the latest; it binds only those who take it.
// No failure is raised: where a file cannot be locked (a device or pipe, one that
// may not be read, a file system without locks, a holder that does not let go)
// the scope goes on without. Not shared between threads.
#pragma once

#include <string>

#include "FileDescriptor.h"

class FileLock final {
public:
    enum class Missing { Leave, Create };

    /// Locks the file at `path`, links followed; waits for up to two seconds.
    /// A missing one is created empty, or else not locked. It may be written,
    /// truncated and deleted meanwhile, by its path.
    FileLock(const std::wstring& path, Missing missing);

    /// There was no file. One that is there by now is another launcher's, and
    /// not locked.
    [[nodiscard]] bool foundNoFile() const { return foundNoFile_; }

private:
    FileDescriptor file_;  ///< the lock ends when it is closed
    bool foundNoFile_ = false;
};
