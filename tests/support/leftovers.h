#pragma once

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QProcess>

namespace korvel::testing {

// What a save killed at the wrong moment leaves behind, made on purpose.

// Writes `bytes` to `path` and dates its last change `age` seconds back.
inline bool writeAged(const QString& path, const QByteArray& bytes, qint64 age) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size() ||
        !file.flush()) // before the date: a later flush would date it again
        return false;
    return file.setFileTime(QDateTime::currentDateTime().addSecs(-age), QFileDevice::FileModificationTime);
}

// Leaves the lock file `lockPath` as a process killed while holding it would: a real lock file's
// content, naming a process that has ended.
inline bool plantLockOfEndedProcess(const QString& lockPath) {
    QProcess child;
    child.start(QStringLiteral("true"), {});
    if (!child.waitForStarted())
        return false;
    const qint64 pid = child.processId();
    child.waitForFinished();
    QByteArray content;
    {
        QLockFile lock(lockPath);
        if (!lock.tryLock(0))
            return false;
        QFile file(lockPath);
        if (!file.open(QIODevice::ReadOnly))
            return false;
        content = file.readAll();
    }
    const qsizetype firstLineEnd = content.indexOf('\n');
    if (firstLineEnd < 0)
        return false;
    return writeAged(lockPath, QByteArray::number(pid) + content.mid(firstLineEnd), 0);
}

} // namespace korvel::testing
