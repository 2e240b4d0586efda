#include "file_tree.h"

#include "game_text.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QSaveFile>

namespace korvel {

Result<std::vector<TreeFile>> listFilesBeneath(const FileServices& files, const std::string& folder) {
    const QString host = files.hostPath(folder);
    if (host.isEmpty() || !QFileInfo(host).isDir())
        return refused(QStringLiteral("Folder not found: %1").arg(fromGameText(folder)));
    const QDir base(host);
    std::vector<TreeFile> found;
    QDirIterator it(host, QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        if (!info.isFile())
            continue;
        found.push_back(TreeFile{base.relativeFilePath(info.filePath()), info.size(),
                                 info.lastModified().toSecsSinceEpoch()});
    }
    return found;
}

struct AtomicFileWriter::Impl {
    QString host;
    QSaveFile file;
};

AtomicFileWriter::AtomicFileWriter() : m_impl(new Impl) {}

AtomicFileWriter::~AtomicFileWriter() {
    cancel();
    delete m_impl;
}

Status AtomicFileWriter::failed(const QString& reason) {
    const QString host = m_impl->host;
    cancel();
    return writeError(QStringLiteral("Could not save %1: %2. The old file was left unchanged.")
                          .arg(QDir::toNativeSeparators(host), reason));
}

Status AtomicFileWriter::open(const FileServices& files, const std::string& gamePath) {
    m_impl->host = files.hostPath(gamePath);
    if (m_impl->host.isEmpty())
        return writeError(QStringLiteral("Could not save %1: no drive is mapped for it.").arg(fromGameText(gamePath)));
    m_impl->file.setFileName(m_impl->host);
    if (!m_impl->file.open(QIODevice::WriteOnly))
        return failed(m_impl->file.errorString());
    return {};
}

Status AtomicFileWriter::write(const char* data, qint64 length) {
    if (!m_impl->file.isOpen())
        return failed(QStringLiteral("the file is not open"));
    if (m_impl->file.write(data, length) != length)
        return failed(m_impl->file.errorString());
    return {};
}

Status AtomicFileWriter::seek(qint64 offset) {
    // Flushed first: a buffered write that fails must fail here, not vanish in the seek.
    if (!m_impl->file.isOpen() || !m_impl->file.flush() || !m_impl->file.seek(offset))
        return failed(m_impl->file.errorString());
    return {};
}

Status AtomicFileWriter::commit() {
    if (!m_impl->file.isOpen())
        return failed(QStringLiteral("the file is not open"));
    // commit() alone ignores a failed flush of the buffer (a full disk) and commits anyway.
    if (!m_impl->file.flush())
        return failed(m_impl->file.errorString());
    if (!m_impl->file.commit())
        return failed(m_impl->file.errorString());
    return {};
}

void AtomicFileWriter::cancel() {
    if (m_impl->file.isOpen())
        m_impl->file.cancelWriting();
    if (m_impl->file.isOpen())
        m_impl->file.commit(); // a cancelled QSaveFile discards its temporary file on commit
}

} // namespace korvel
