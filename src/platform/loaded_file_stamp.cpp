#include "loaded_file_stamp.h"

#include <QCryptographicHash>

namespace korvel {

LoadedFileStamp LoadedFileStamp::of(std::string_view bytes, const QDateTime& modified) {
    LoadedFileStamp stamp;
    stamp.exists = true;
    stamp.size = static_cast<qint64>(bytes.size());
    stamp.modified = modified;
    stamp.hash = QCryptographicHash::hash(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())),
                                          QCryptographicHash::Sha256);
    return stamp;
}

} // namespace korvel
