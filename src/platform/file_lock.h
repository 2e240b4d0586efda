#pragma once

#include "result.h"

#include <QString>

#include <chrono>
#include <memory>
#include <optional>
#include <variant>

class QLockFile;

namespace korvel {

// The lock of one file's read-modify-write: `file` + ".lock" beside it, held by one process at a
// time, so two programs changing the file one after the other never lose each other's change. Take
// it before reading the file and keep it until the new content is saved. A lock left behind by a
// process that was killed is taken over (and its file removed) by the next one who asks, as is one
// older than its stale time (a holder that cannot be checked, on another machine).
//
// Within one thread the lock is shared: asking again for a lock the thread already holds answers
// at once, and the lock file goes when the last of its holders does. So a save that locks its file
// runs unchanged inside a command that holds the same lock from its read.
class FileLock {
public:
    // Why a lock could not be had.
    struct Refusal {
        enum class Reason {
            HeldByAnother,    // another process holds it and did not let go within the wait
            PermissionDenied, // the lock file cannot be created: permission denied
            CannotCreate,     // the lock file cannot be created for another reason (a full disk...)
        };
        Reason reason = Reason::CannotCreate;
        QString lockPath; // the lock file, as asked for (`hostPath` + ".lock")
        // The holder, when held by another process that wrote its name into the lock file.
        std::optional<qint64> holderPid;
        QString holderApplication;
    };

    // Waits up to `wait` for the lock of `hostPath`. The failure names the file and says whether
    // another process holds the lock or the lock file could not be made.
    static Result<FileLock> acquire(const QString& hostPath, std::chrono::milliseconds wait = kDefaultWait);

    // As acquire(), for callers that word the refusal themselves; a lock file older than
    // `staleAfter` is taken for dead.
    static std::variant<FileLock, Refusal> tryAcquire(const QString& hostPath, std::chrono::milliseconds wait,
                                                      std::chrono::milliseconds staleAfter = kDefaultStaleAfter);

    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;
    ~FileLock(); // releases the lock

    static constexpr std::chrono::milliseconds kDefaultWait{10000};
    // Every locked operation is far shorter than this.
    static constexpr std::chrono::milliseconds kDefaultStaleAfter{30000};

private:
    explicit FileLock(std::shared_ptr<QLockFile> lock);

    std::shared_ptr<QLockFile> m_lock;
};

} // namespace korvel
