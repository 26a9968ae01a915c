#pragma once

#include <csignal>
#include <sys/resource.h>

// While it lives, writes may make a file at most limit bytes long: the kernel then cuts them short
// (EFBIG), as a full disk does, and for root too. The signal the kernel would send is ignored, so
// the writer sees the failed write.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t limit)
    {
        m_oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_old);
        rlimit lowered = m_old;
        lowered.rlim_cur = limit;
        setrlimit(RLIMIT_FSIZE, &lowered);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit m_old{};
    void (*m_oldHandler)(int) = nullptr;
};
