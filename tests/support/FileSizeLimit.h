#pragma once

#if defined(__unix__)

#include <csignal>
#include <cstddef>
#include <sys/resource.h>

namespace vo::test {

/// While it lives no file of this process grows beyond a size: writing fails as it does on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(std::size_t bytes)
    {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        struct rlimit limited = m_old;
        limited.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }

    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_handler);
    }

    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    struct rlimit m_old = {};
    void (*m_handler)(int) = nullptr;
};

} // namespace vo::test

#endif
