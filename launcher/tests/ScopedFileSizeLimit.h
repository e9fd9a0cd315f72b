// ScopedFileSizeLimit: lets writes behind `bytes` fail for a scope, as on a full
// disk (with EFBIG).
#pragma once

#include <sys/resource.h>

#include <csignal>

class ScopedFileSizeLimit final {
public:
    explicit ScopedFileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~ScopedFileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }
    ScopedFileSizeLimit(const ScopedFileSizeLimit&) = delete;
    ScopedFileSizeLimit& operator=(const ScopedFileSizeLimit&) = delete;

private:
    rlimit before_{};
};
