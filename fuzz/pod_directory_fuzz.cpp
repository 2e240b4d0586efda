// Feeds arbitrary bytes to the archive directory reader: it must return a listing or a failure,
// never crash, hang or allocate without bound.

#include "pod/pod_directory.h"

#include <QBuffer>
#include <QByteArray>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    korvel::Result<korvel::PodDirectory> listing = korvel::listPodFrom(buffer, "C:\\FUZZ\\FUZZ.POD");
    if (listing.ok()) {
        for (const korvel::PodEntry entry : listing->entries) {
            if (entry.end != static_cast<qint64>(entry.start) + entry.size)
                __builtin_trap();
        }
        (void)korvel::displayOrder(*listing, true);
    }
    return 0;
}
