#pragma once

#include <QString>
#include <QtGlobal>

#include <string_view>
#include <vector>

namespace korvel {

// Why an operation on a folder or file beneath an extraction folder failed.
enum class FolderFault {
    None,
    Missing,   // no such file or folder
    Exists,    // it exists already
    Link,      // it is a symbolic link (or another reparse point): never followed
    NotFolder, // a file stands where a folder was wanted, or the other way round
    Other,     // permission, disk full, ...: see the reason
};

struct FolderError {
    FolderFault fault = FolderFault::None;
    QString reason; // the system's text, for messages

    explicit operator bool() const { return fault != FolderFault::None; }
};

enum class EntryKind { File, Folder, Link, Other };

struct FolderEntry {
    QString name; // as on disk
    EntryKind kind;
};

class ArchiveFile;

// A file opened for writing beneath an OutputFolder.
class OutputFile {
public:
    OutputFile() = default;
    OutputFile(OutputFile&& other) noexcept;
    OutputFile& operator=(OutputFile&& other) noexcept;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    bool isOpen() const;
    // Writes `length` bytes at `offset` of the file.
    FolderError writeAt(qint64 offset, const char* bytes, qint64 length);
    // Copies `length` bytes at `from` of the archive to `offset` of the file, in the kernel where it can.
    FolderError copyFrom(const ArchiveFile& archive, qint64 from, qint64 offset, qint64 length);

private:
    friend class OutputFolder;
    void reset();
#ifdef Q_OS_UNIX
    int m_fd = -1;
#else
    void* m_file = nullptr; // a QFile
#endif
    QString m_temporary;      // the temporary name beside the target, until committed; empty for none
    bool m_anonymous = false; // a file without a name yet (linked in by commit)
};

// A folder held open. Everything beneath it is reached one component at a time relative to it, and a
// component that is a symbolic link is refused instead of followed, so nothing written through it can
// land outside, whatever links a hostile archive or another program placed inside.
class OutputFolder {
public:
    OutputFolder() = default;
    OutputFolder(OutputFolder&& other) noexcept;
    OutputFolder& operator=(OutputFolder&& other) noexcept;
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;
    ~OutputFolder();

    // Opens the folder at `hostPath` (links in that path itself are followed: it is the user's choice).
    static OutputFolder open(const QString& hostPath, FolderError& error);

    bool isOpen() const;
    const QString& hostPath() const { return m_path; }

    // The entries of the folder (without "." and ".."); links are reported as links.
    std::vector<FolderEntry> list(FolderError& error) const;
    // Opens the sub-folder `name`; fails with Link when it is a link.
    OutputFolder child(const QString& name, FolderError& error) const;
    // Makes the sub-folder `name` (one level) and opens it; fails with Exists when it is there.
    OutputFolder makeChild(const QString& name, FolderError& error) const;

    // Opens the file `name` for writing in place, made when missing and not truncated; fails with Link
    // when it is a link.
    OutputFile openInPlace(const QString& name, FolderError& error) const;
    // A new temporary file in this folder, created exclusively under an unpredictable name (or with no
    // name at all where the system allows it); commit() gives it its name.
    OutputFile createTemporary(const QString& forName, FolderError& error) const;
    // Gives a temporary file the name `name`: replacing the file of that name when `replace`, else
    // failing with Exists when there is one. The file is closed either way.
    FolderError commit(OutputFile& file, const QString& name, bool replace) const;
    // Closes a temporary file and removes it.
    void discard(OutputFile& file) const;

private:
    void reset();
    QString m_path;
#ifdef Q_OS_UNIX
    int m_fd = -1;
#endif
};

// An archive opened for reading by offset.
class ArchiveFile {
public:
    ArchiveFile() = default;
    ArchiveFile(const ArchiveFile&) = delete;
    ArchiveFile& operator=(const ArchiveFile&) = delete;
    ~ArchiveFile();

    bool open(const QString& hostPath);
    bool exists() const;
    qint64 size() const { return m_size; }
    // Reads up to `length` bytes at `offset`; the count read, or -1.
    qint64 readAt(qint64 offset, char* bytes, qint64 length) const;

private:
    friend class OutputFile;
    QString m_path;
    qint64 m_size = 0;
#ifdef Q_OS_UNIX
    int m_fd = -1;
#else
    void* m_file = nullptr; // a QFile
#endif
};

} // namespace korvel
