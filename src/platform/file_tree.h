#pragma once

#include "file_services.h"
#include "result.h"

#include <QString>
#include <QtGlobal>

#include <string>
#include <vector>

namespace korvel {

// One ordinary file beneath a folder.
struct TreeFile {
    QString relative; // host name relative to the folder, "/"-separated, as the disk spells it
    qint64 size = 0;
    qint64 modified = 0; // Unix time, seconds
};

// Every ordinary file beneath the game folder `folder`, at any depth, in no particular order.
// Hidden files count; links to folders are not followed. Fails when the folder does not exist.
Result<std::vector<TreeFile>> listFilesBeneath(const FileServices& files, const std::string& folder);

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
    Impl* m_impl;
};

} // namespace korvel
