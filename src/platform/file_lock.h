#pragma once

#include "result.h"

#include <QString>

#include <chrono>
#include <memory>

class QLockFile;

namespace korvel {

// The lock of one file's read-modify-write: `file` + ".lock" beside it, held by one process at a
// time, so two programs changing the file one after the other never lose each other's change. Take
// it before reading the file and keep it until the new content is saved. A lock left behind by a
// process that was killed is taken over (and its file removed) by the next one who asks.
class FileLock {
public:
    // Waits up to `wait` for the lock of `hostPath`. The failure names the file and says whether
    // another process holds the lock or the lock file could not be made.
    static Result<FileLock> acquire(const QString& hostPath, std::chrono::milliseconds wait = kDefaultWait);

    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;
    ~FileLock(); // releases the lock

    static constexpr std::chrono::milliseconds kDefaultWait{10000};

private:
    explicit FileLock(std::unique_ptr<QLockFile> lock);

    std::unique_ptr<QLockFile> m_lock;
};

} // namespace korvel
