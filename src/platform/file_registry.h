#pragma once

#include "file_lock.h"
#include "registry_tree.h"

#include <QDateTime>
#include <QString>

#include <chrono>
#include <optional>

namespace korvel {

// The registry of systems without one: a file per user holding keys and string values.
//
// Every change is made under a lock file (so two running instances never lose each other's
// writes), on the file's latest content (re-read when another process changed it), and saved
// through a temporary file and an atomic replace. A damaged file is never overwritten: it is kept
// aside under a new name and reported once through takeWarnings(), as is a file that cannot be
// written at all. A change that cannot be saved leaves the file as it was and its reason in
// takeSaveFailure().
class FileRegistry : public RegistryService {
public:
    explicit FileRegistry(QString filePath);

    // $KORVEL_REGISTRY when set, else registry.json in the user's configuration folder.
    static QString defaultPath();

    const QString& filePath() const { return m_path; }

    bool keyExists(RegistryRoot root, const std::string& subkey) override;
    bool createKey(RegistryRoot root, const std::string& subkey) override;
    bool deleteKey(RegistryRoot root, const std::string& subkey) override;
    std::optional<std::string> readValue(RegistryRoot root, const std::string& subkey,
                                         const std::string& name) override;
    bool writeValue(RegistryRoot root, const std::string& subkey, const std::string& name,
                    const std::string& data) override;
    QStringList takeWarnings() override;
    std::optional<QString> takeSaveFailure() override;
    void beginChanges() override;
    bool endChanges() override;

private:
    // A settings change is short: another instance waits this long for it, and a lock file older
    // than the stale time is taken for dead.
    static constexpr std::chrono::milliseconds kLockWait{5000};
    static constexpr std::chrono::milliseconds kLockStaleAfter{10000};

    void refresh();
    void checkWritable();
    template <typename Change> bool change(Change&& apply);
    // Takes the lock beside the file; none (the reason recorded) when it cannot be had.
    std::optional<FileLock> lock();
    bool save();
    void recordFailure(const QString& reason);

    QString m_path;
    RegistryTree m_tree;
    QDateTime m_loadedModified;
    qint64 m_loadedSize = -1;
    QStringList m_warnings;
    std::optional<QString> m_saveFailure;

    // An open group of changes: the lock held throughout, the changes kept in memory until the end.
    std::optional<FileLock> m_groupLock;
    int m_groupDepth = 0;
    bool m_groupChanged = false;
    bool m_groupFailed = false;
};

} // namespace korvel
