#include "file_registry.h"

#include "file_lock.h"
#include "file_services.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace korvel {

FileRegistry::FileRegistry(QString filePath) : m_path(std::move(filePath)) { refresh(); }

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
        const QString aside =
            m_path + QStringLiteral(".damaged-") + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss"));
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

template <typename Change> bool FileRegistry::change(Change&& apply) {
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    const Result<FileLock> lock = FileLock::acquire(m_path, std::chrono::seconds(5));
    if (!lock) {
        m_warnings << lock.failure().message;
        return false;
    }
    // Force a re-read: another instance may have written within the same timestamp tick.
    m_loadedSize = -2;
    refresh();
    if (!apply(m_tree))
        return false;
    const Status saved = writeFileAtomically(m_path, m_tree.serialize());
    if (!saved) {
        m_warnings << saved.failure().message;
        return false;
    }
    QFileInfo info(m_path);
    m_loadedModified = info.lastModified();
    m_loadedSize = info.size();
    return true;
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
