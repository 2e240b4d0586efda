#include "file_lock.h"

#include "diagnostics.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLockFile>

#include <algorithm>
#include <map>
#include <thread>

namespace korvel {

namespace {

// The locks this thread holds, by the lock file's absolute path.
std::map<QString, std::weak_ptr<QLockFile>>& heldLocks() {
    thread_local std::map<QString, std::weak_ptr<QLockFile>> held;
    return held;
}

} // namespace

std::variant<FileLock, FileLock::Refusal> FileLock::tryAcquire(const QString& hostPath, std::chrono::milliseconds wait,
                                                               std::chrono::milliseconds staleAfter) {
    const QString lockPath = hostPath + QStringLiteral(".lock");
    const QString key = QFileInfo(lockPath).absoluteFilePath();
    auto& held = heldLocks();
    std::erase_if(held, [](const auto& entry) { return entry.second.expired(); });
    if (const auto found = held.find(key); found != held.end())
        return FileLock(found->second.lock());
    auto lock = std::make_shared<QLockFile>(lockPath);
    lock->setStaleLockTime(int(staleAfter.count()));
    // Short pauses first: the holder of a game file's lock lets go within milliseconds, and
    // QLockFile's own wait never sleeps less than a tenth of a second.
    QElapsedTimer clock;
    clock.start();
    std::chrono::milliseconds pause{2};
    while (!lock->tryLock(0)) {
        if (lock->error() != QLockFile::LockFailedError || clock.elapsed() >= wait.count())
            break;
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::milliseconds(100));
    }
    if (lock->isLocked()) {
        held[key] = lock;
        return FileLock(std::move(lock));
    }

    Refusal refusal;
    refusal.lockPath = lockPath;
    switch (lock->error()) {
    case QLockFile::LockFailedError: {
        refusal.reason = Refusal::Reason::HeldByAnother;
        qint64 pid = 0;
        QString host;
        if (lock->getLockInfo(&pid, &host, &refusal.holderApplication))
            refusal.holderPid = pid;
        break;
    }
    case QLockFile::PermissionError:
        refusal.reason = Refusal::Reason::PermissionDenied;
        break;
    case QLockFile::NoError:
    case QLockFile::UnknownError:
        refusal.reason = Refusal::Reason::CannotCreate;
        break;
    }
    qCInfo(lcPlatform) << "lock refused:" << lockPath << lock->error();
    return refusal;
}

Result<FileLock> FileLock::acquire(const QString& hostPath, std::chrono::milliseconds wait) {
    auto attempt = tryAcquire(hostPath, wait);
    if (auto* lock = std::get_if<FileLock>(&attempt))
        return std::move(*lock);
    const Refusal& refusal = std::get<Refusal>(attempt);
    const QString file = QDir::toNativeSeparators(hostPath);
    const QString lockFile = QDir::toNativeSeparators(refusal.lockPath);
    switch (refusal.reason) {
    case Refusal::Reason::HeldByAnother:
        return writeError(QStringLiteral("%1 is being changed by another program, which holds its lock file %2. "
                                         "Nothing was changed; try again when that program has finished.")
                              .arg(file, lockFile));
    case Refusal::Reason::PermissionDenied:
        return writeError(QStringLiteral("Could not lock %1: the lock file %2 cannot be created (permission "
                                         "denied). Nothing was changed.")
                              .arg(file, lockFile));
    case Refusal::Reason::CannotCreate:
        break;
    }
    return writeError(QStringLiteral("Could not lock %1: the lock file %2 cannot be created. Nothing was changed.")
                          .arg(file, lockFile));
}

FileLock::FileLock(std::shared_ptr<QLockFile> lock) : m_lock(std::move(lock)) {}
FileLock::FileLock(FileLock&& other) noexcept = default;
FileLock& FileLock::operator=(FileLock&& other) noexcept = default;
FileLock::~FileLock() = default;

} // namespace korvel
