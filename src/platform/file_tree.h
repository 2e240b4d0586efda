#pragma once

#include "file_services.h"
#include "result.h"

#include <QString>
#include <QtGlobal>

#include <memory>
#include <string>
#include <vector>

namespace korvel {

// One ordinary file beneath a folder.
struct TreeFile {
    std::string relative; // host name relative to the folder, "/"-separated, in the file system's own bytes
    qint64 size = 0;
    qint64 modified = 0; // Unix time, seconds
};

// Every ordinary file beneath the game folder `folder`, at any depth, in no particular order.
// Hidden files count; links to files count as the file, links to folders are not followed. Fails
// when the folder does not exist or cannot be read.
Result<std::vector<TreeFile>> listFilesBeneath(const FileServices& files, const std::string& folder);

// Reads host files one after another with as little per-file work as the platform allows (no
// metadata queries, no buffering of its own): packing reads a hundred thousand small files.
class SequentialReader {
public:
    SequentialReader();
    ~SequentialReader();
    SequentialReader(const SequentialReader&) = delete;
    SequentialReader& operator=(const SequentialReader&) = delete;

    // Opens `hostPath`, a host path in the file system's own bytes (QFile::encodeName), closing any
    // file open before. False with errorString() set on failure. Files opened one after another from
    // the same folder are looked up in that folder, which stays open.
    bool open(const std::string& hostPath);
    const std::string& fileName() const;
    bool isOpen() const;
    bool seek(qint64 offset);
    // Up to `length` bytes; 0 at the end of the file, -1 on an error.
    qint64 read(char* data, qint64 length);
    void close();
    QString errorString() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// A file written piece by piece into a temporary file beside its target, which replaces the target
// only on commit(); the target is never seen half-written. Dropping the writer without commit()
// leaves any old file as it was.
class AtomicFileWriter {
public:
    AtomicFileWriter();
    ~AtomicFileWriter();
    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    Status open(const FileServices& files, const std::string& gamePath);
    // Each returns the write failure (naming the file and the reason) or success.
    Status write(const char* data, qint64 length);
    Status seek(qint64 offset);
    Status commit();
    void cancel();

private:
    Status failed(const QString& reason);

    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace korvel
