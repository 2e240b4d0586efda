#pragma once

#include <QtGlobal>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

namespace korvel::testing {

// While alive, every write of a byte to any file of this process fails as on a full disk (the
// soft file-size limit is 0). Opening, creating, reading and renaming still work, so a read-only
// or full destination can be tried even by a user whom permissions do not stop.
class FullDisk {
public:
#ifdef Q_OS_UNIX
    FullDisk() {
        m_signal = std::signal(SIGXFSZ, SIG_IGN); // a write past the limit fails with EFBIG instead of killing
        m_active = getrlimit(RLIMIT_FSIZE, &m_old) == 0;
        if (m_active) {
            rlimit full = m_old;
            full.rlim_cur = 0;
            m_active = setrlimit(RLIMIT_FSIZE, &full) == 0;
        }
    }
    ~FullDisk() {
        if (m_active)
            setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_signal);
    }
    bool active() const {
        return m_active;
    }
#else
    FullDisk() = default;
    bool active() const {
        return false;
    }
#endif
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
#ifdef Q_OS_UNIX
    rlimit m_old{};
    void (*m_signal)(int) = SIG_DFL;
    bool m_active = false;
#endif
};

} // namespace korvel::testing
