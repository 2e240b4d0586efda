#include "file_registry.h"

#include "file_services.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStorageInfo>

#include <cerrno>
#include <utility>

namespace korvel {

namespace {

// The system's reason why a file of `size` bytes cannot be made in `folder` (a probe made and
// removed there); empty when it can be made now.
QString whyNoFileIn(const QString& folder, size_t size) {
    QFile probe(folder + QStringLiteral("/.korvel-probe-") + QString::number(QCoreApplication::applicationPid()));
    errno = 0;
    if (!probe.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return errno ? qt_error_string(errno) : probe.errorString();
    const QByteArray bytes(qsizetype(size), ' ');
    errno = 0;
    const bool written = probe.write(bytes) == bytes.size();
    const int error = errno;
    probe.close();
    probe.remove();
    return written || error == 0 ? QString() : qt_error_string(error);
}

} // namespace

FileRegistry::FileRegistry(QString filePath) : m_path(std::move(filePath)) {
    refresh();
    checkWritable();
}

// Said at once, so the user learns before making any change that it would not be kept. Nothing is
// made on the way: a folder that does not exist yet is judged by the nearest one that does.
void FileRegistry::checkWritable() {
    const QFileInfo file(m_path);
    QString reason;
    if (file.exists()) {
        if (!file.isFile())
            reason = QStringLiteral("it is not a file");
        else if (!file.isWritable())
            reason = QStringLiteral("permission denied");
    }
    if (reason.isEmpty()) {
        QFileInfo folder(file.absolutePath());
        while (!folder.exists() && !folder.isRoot() && folder.absoluteFilePath() != folder.absolutePath())
            folder = QFileInfo(folder.absolutePath());
        if (folder.exists() && !folder.isDir())
            reason = QStringLiteral("%1 is not a folder").arg(QDir::toNativeSeparators(folder.absoluteFilePath()));
        else if (folder.isDir())
            reason = whyNoFileIn(folder.absoluteFilePath(), 64);
    }
    if (!reason.isEmpty())
        m_warnings << QStringLiteral("The settings file %1 cannot be written (%2). Korvel works with the settings it "
                                     "has, but no change made now will be kept.")
                          .arg(QDir::toNativeSeparators(m_path), reason);
}

QString FileRegistry::defaultPath() {
    const QString overridden = qEnvironmentVariable("KORVEL_REGISTRY");
    if (!overridden.isEmpty())
        return overridden;
    QString base = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    if (base.isEmpty())
        base = QDir::homePath() + QStringLiteral("/.config");
    return base + QStringLiteral("/korvel/registry.json");
}

void FileRegistry::refresh() {
    if (m_groupLock)
        return; // the lock is held: nobody else changes the file, and unsaved changes stay
    QFileInfo info(m_path);
    if (!info.exists()) {
        if (m_loadedSize != -1)
            m_tree.clear();
        m_loadedSize = -1;
        return;
    }
    if (info.size() == m_loadedSize && info.lastModified() == m_loadedModified)
        return;
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return; // keep what we had; the next change reports through its failed save
    const QByteArray bytes = file.readAll();
    file.close();
    if (!bytes.trimmed().isEmpty() && !m_tree.deserialize(bytes)) {
        const QString aside = m_path + QStringLiteral(".damaged-") +
                              QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss"));
        QFile::rename(m_path, aside);
        m_warnings << QStringLiteral("The settings file %1 was damaged. It has been kept as %2 and Korvel starts "
                                     "with fresh settings.")
                          .arg(QDir::toNativeSeparators(m_path), QDir::toNativeSeparators(aside));
        m_tree.clear();
        m_loadedSize = -1;
        return;
    }
    if (bytes.trimmed().isEmpty())
        m_tree.clear();
    m_loadedModified = info.lastModified();
    m_loadedSize = info.size();
}

void FileRegistry::recordFailure(const QString& reason) {
    m_warnings << reason;
    if (!m_saveFailure)
        m_saveFailure = reason;
}

std::optional<FileLock> FileRegistry::lock() {
    const QString folder = QFileInfo(m_path).absolutePath();
    if (!QDir().mkpath(folder)) {
        recordFailure(QStringLiteral("Cannot create the folder %1 for the settings file; a setting was not saved.")
                          .arg(QDir::toNativeSeparators(folder)));
        return std::nullopt;
    }
    auto attempt = FileLock::tryAcquire(m_path, kLockWait, kLockStaleAfter);
    if (auto* held = std::get_if<FileLock>(&attempt))
        return std::move(*held);
    const FileLock::Refusal& refusal = std::get<FileLock::Refusal>(attempt);
    const QString lockPath = QDir::toNativeSeparators(refusal.lockPath);
    switch (refusal.reason) {
    case FileLock::Refusal::Reason::HeldByAnother: {
        const QString holder =
            refusal.holderPid
                ? QStringLiteral(" (process %1 %2)").arg(*refusal.holderPid).arg(refusal.holderApplication)
                : QString();
        recordFailure(QStringLiteral("The settings file %1 is locked by another program%2; a setting was not saved.")
                          .arg(QDir::toNativeSeparators(m_path), holder));
        return std::nullopt;
    }
    case FileLock::Refusal::Reason::PermissionDenied:
        recordFailure(QStringLiteral("Cannot create the lock file %1: permission denied; a setting was not saved.")
                          .arg(lockPath));
        return std::nullopt;
    case FileLock::Refusal::Reason::CannotCreate:
        break;
    }
    QString reason = whyNoFileIn(folder, 64);
    if (reason.isEmpty()) {
        const QStorageInfo volume(folder);
        reason = volume.isValid() && volume.bytesAvailable() == 0 ? QStringLiteral("the disk is full")
                                                                  : QStringLiteral("the system refused it");
    }
    recordFailure(QStringLiteral("Cannot create the lock file %1: %2; a setting was not saved.").arg(lockPath, reason));
    return std::nullopt;
}

bool FileRegistry::save() {
    const QByteArray content = m_tree.serialize();
    const Status saved = writeFileAtomically(m_path, content);
    if (!saved) {
        // The write's own message may not know the cause ("Unknown error" for a full disk).
        const QString reason = whyNoFileIn(QFileInfo(m_path).absolutePath(), size_t(content.size()));
        recordFailure(reason.isEmpty() ? saved.failure().message
                                       : QStringLiteral("Could not save %1: %2. The old file was left unchanged.")
                                             .arg(QDir::toNativeSeparators(m_path), reason));
        // What is in memory was not saved: go back to the file's content.
        m_loadedSize = -2;
        refresh();
        return false;
    }
    QFileInfo info(m_path);
    m_loadedModified = info.lastModified();
    m_loadedSize = info.size();
    return true;
}

template <typename Change> bool FileRegistry::change(Change&& apply) {
    if (m_groupDepth > 0) {
        if (m_groupFailed || !apply(m_tree))
            return false;
        m_groupChanged = true;
        return true;
    }
    const std::optional<FileLock> held = lock();
    if (!held)
        return false;
    // Force a re-read: another instance may have written within the same timestamp tick.
    m_loadedSize = -2;
    refresh();
    if (!apply(m_tree))
        return false;
    return save();
}

void FileRegistry::beginChanges() {
    if (m_groupDepth++ > 0)
        return;
    m_groupChanged = false;
    std::optional<FileLock> held = lock();
    m_groupFailed = !held;
    if (m_groupFailed)
        return;
    m_loadedSize = -2;
    refresh();
    m_groupLock = std::move(held);
}

bool FileRegistry::endChanges() {
    if (m_groupDepth == 0 || --m_groupDepth > 0)
        return !m_groupFailed;
    const std::optional<FileLock> held = std::exchange(m_groupLock, std::nullopt); // released once saved
    const bool saved = !m_groupFailed && (!m_groupChanged || save());
    m_groupFailed = false;
    m_groupChanged = false;
    return saved;
}

std::optional<QString> FileRegistry::takeSaveFailure() {
    std::optional<QString> failure;
    failure.swap(m_saveFailure);
    return failure;
}

bool FileRegistry::keyExists(RegistryRoot root, const std::string& subkey) {
    refresh();
    return m_tree.keyExists(root, subkey);
}

bool FileRegistry::createKey(RegistryRoot root, const std::string& subkey) {
    refresh();
    if (root == RegistryRoot::None)
        return false;
    if (m_tree.keyExists(root, subkey))
        return true;
    return change([&](RegistryTree& tree) { return tree.createKey(root, subkey); });
}

bool FileRegistry::deleteKey(RegistryRoot root, const std::string& subkey) {
    refresh();
    if (!m_tree.keyExists(root, subkey))
        return false;
    return change([&](RegistryTree& tree) { return tree.deleteKey(root, subkey); });
}

std::optional<std::string> FileRegistry::readValue(RegistryRoot root, const std::string& subkey,
                                                   const std::string& name) {
    refresh();
    return m_tree.readValue(root, subkey, name);
}

bool FileRegistry::writeValue(RegistryRoot root, const std::string& subkey, const std::string& name,
                              const std::string& data) {
    refresh();
    if (!m_tree.keyExists(root, subkey))
        return false;
    if (m_tree.readValue(root, subkey, name) == data)
        return true;
    return change([&](RegistryTree& tree) { return tree.writeValue(root, subkey, name, data); });
}

QStringList FileRegistry::takeWarnings() {
    QStringList out;
    out.swap(m_warnings);
    return out;
}

} // namespace korvel
