// The calls of the launcher that can fail with right arguments: with which
// errors, after the manual pages, the likeliest first, and what they give then.
// All take words in registers and give one, the variadic ones too.
#pragma once

#include <regex.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>

using Word = std::intptr_t;

enum class Way {
    Errno,    ///< gives `result`, with errno
    Code,     ///< gives the error
    Release,  ///< as Errno, but has let go of its argument
    Missing,  ///< does not find what it looks for, as dlerror(3) tells
};

struct Call {
    const char* name;
    std::array<int, 12> errors;  ///< zeros behind
    Word result = -1;
    Way way = Way::Errno;
    std::size_t stream = 6;  ///< the argument that remembers the failure and, when
                             ///< the result is EOF, loses what it holds
};

static_assert(REG_ESPACE == ENOMEM);  // regcomp(3) has errors of its own

// Left out are the answers that there is no such thing: stat(2) with ENOENT, and
// ESRCH for a process.
// clang-format off
inline constexpr Call kCalls[] = {
    // Files
    {"open", {EACCES, EMFILE, ENFILE, ENOENT, ENOMEM, ENOSPC, EROFS, EINTR, EIO, ELOOP, EISDIR}},
    {"openat", {EACCES, EMFILE, ENFILE, ENOENT, ENOMEM, ENOSPC, EROFS, EINTR, EIO, ELOOP, EISDIR}},
    {"fcntl", {EAGAIN, ENOLCK, EINTR, EINVAL, EBADF}},
    {"flock", {ENOLCK, EINTR, EWOULDBLOCK}},
    {"close", {EIO, EINTR, ENOSPC, EDQUOT}, -1, Way::Release},
    {"dup2", {EBUSY, EINTR}},
    {"access", {EACCES, EIO}},
    {"stat", {EACCES, ELOOP, ENOMEM, ENOTDIR, EIO}},
    {"lstat", {EACCES, ENOENT, EIO, ENOMEM}},
    {"fstatat", {EACCES, ENOENT, EIO, ENOMEM}},
    {"fstat", {EOVERFLOW, ENOMEM, EIO}},
    {"fchown", {EPERM, EIO, EROFS}},
    {"fchmod", {EPERM, EIO, EROFS}},
    {"fstatfs", {EIO, ENOMEM, ENOSYS}},
    {"unlink", {EACCES, EBUSY, EIO, ENOENT, ENOMEM, EPERM, EROFS}},
    {"unlinkat", {EACCES, EBUSY, EIO, ENOENT, ENOMEM, EPERM, EROFS}},
    {"renameat2", {EACCES, EBUSY, EDQUOT, EEXIST, EINVAL, EIO, EISDIR, ENOENT, ENOSPC, EROFS}},
    {"mkdirat", {EACCES, ENOSPC, EROFS, EDQUOT, EMLINK, ENOENT, ENOTDIR, ELOOP, ENOMEM}},
    {"chdir", {EACCES, ENOENT, ENOTDIR, EIO, ELOOP, ENAMETOOLONG, ENOMEM}},
    {"readlink", {EACCES, EIO, ENOENT, ENOMEM}},
    {"readlinkat", {EACCES, EIO, ENOENT, ENOMEM}},
    {"realpath", {EACCES, EIO, ELOOP, ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR}, 0},
    {"opendir", {EACCES, EMFILE, ENFILE, ENOENT, ENOMEM, ENOTDIR}, 0},
    {"readdir", {EIO, ENOENT, EBADF}, 0},
    {"closedir", {EIO}, -1, Way::Release},
    // Streams
    {"fopen", {EACCES, EMFILE, ENFILE, ENOENT, ENOMEM, ENOSPC, EROFS, EINTR, EIO, ELOOP, EISDIR},
      0},
    {"fdopen", {ENOMEM}, 0},
    {"fread", {EIO, EISDIR, EINTR, EAGAIN}, 0, Way::Errno, 3},
    {"fwrite", {ENOSPC, EIO, EDQUOT, EINTR}, 0, Way::Errno, 3},
    {"fgetc", {EIO}, EOF, Way::Errno, 0},
    {"fgets", {EIO}, 0, Way::Errno, 2},
    {"fputs", {EIO, ENOSPC, EPIPE}, EOF, Way::Errno, 1},
    {"fseek", {EIO, ENOSPC}, -1, Way::Errno, 0},
    {"fflush", {ENOSPC, EIO, EDQUOT, EINTR}, EOF, Way::Errno, 0},
    {"fclose", {ENOSPC, EIO, EINTR}, EOF, Way::Release, 0},
    {"setvbuf", {EBADF}},
    // Text
    {"setlocale", {ENOENT}, 0},
    {"iconv_open", {ENOMEM}},
    {"regcomp", {REG_ESPACE}, 0, Way::Code},
    {"regexec", {REG_ESPACE}, 0, Way::Code},
    // Processes, signals and threads
    {"pipe2", {EMFILE, ENFILE}},
    {"fork", {EAGAIN, ENOMEM}},
    {"daemon", {EAGAIN, ENOMEM}},
    {"read", {EINTR, EIO}},
    {"waitpid", {EINTR}},
    {"kill", {EPERM}},
    {"sigqueue", {EAGAIN, EPERM}},
    {"sigaction", {EINVAL}},
    {"nanosleep", {EINTR}},
    {"sem_init", {ENOSYS}},
    {"sem_wait", {EINTR}},
    {"pthread_create", {EAGAIN, EPERM}, 0, Way::Code},
    {"pthread_attr_init", {ENOMEM}, 0, Way::Code},
    {"pthread_attr_setstacksize", {EINVAL}, 0, Way::Code},
    {"setenv", {ENOMEM}},
    {"socket", {EMFILE, EACCES, ENFILE, ENOMEM}},
    {"sendto", {ECONNREFUSED, EACCES, EAGAIN, EINTR, ENOENT, ENOMEM}},
    {"pidfd_open", {ENOSYS, EMFILE, ENFILE, ENODEV, ENOMEM, EPERM}},
    {"pidfd_send_signal", {EPERM}},
    // Libraries
    {"dlopen", {ENOENT}, 0, Way::Missing},
    {"dlsym", {ENOENT}, 0, Way::Missing},
    {"dlclose", {EINVAL}},
};
// clang-format on
