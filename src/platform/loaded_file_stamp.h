#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QtGlobal>

#include <string_view>

namespace korvel {

// What a file held when the program read it: whether it existed, its size, its modification time
// and a hash of its bytes. A save compares it with the file as it is now, so a change another
// program made in between is never written over unseen. The bytes decide: a file rewritten with
// the same content (only its time changed) counts as unchanged.
struct LoadedFileStamp {
    bool exists = false;
    qint64 size = 0;
    QDateTime modified;
    QByteArray hash;

    // The stamp of `bytes` read from a file last modified at `modified`.
    static LoadedFileStamp of(std::string_view bytes, const QDateTime& modified);
    // The stamp of a file that is not there.
    static LoadedFileStamp missing() { return {}; }

    bool sameContent(const LoadedFileStamp& other) const {
        return exists == other.exists && size == other.size && hash == other.hash;
    }
};

} // namespace korvel
