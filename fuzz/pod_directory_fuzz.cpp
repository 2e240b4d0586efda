// Feeds arbitrary bytes to the archive directory reader: it must return a listing or a failure,
// never crash, hang or allocate without bound.
//
// The input is the start of an archive; its last byte stretches the archive by that many times
// 16 MiB of zeros (as a sparse file would), so that small inputs reach directories claiming
// millions of entries or name tables of hundreds of megabytes.

#include "pod/pod_directory.h"

#include <QByteArray>
#include <QIODevice>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

class SparseArchive : public QIODevice {
public:
    SparseArchive(const std::uint8_t* data, std::size_t size)
        : m_data(data), m_size(qint64(size)), m_length(qint64(size) + (size > 0 ? qint64(data[size - 1]) << 24 : 0)) {}

    bool isSequential() const override { return false; }
    qint64 size() const override { return m_length; }

protected:
    qint64 readData(char* out, qint64 max) override {
        const qint64 at = pos();
        const qint64 length = std::min(max, m_length - at);
        if (length <= 0)
            return 0;
        const qint64 real = std::clamp<qint64>(m_size - at, 0, length);
        if (real > 0)
            std::memcpy(out, m_data + at, size_t(real));
        std::memset(out + real, 0, size_t(length - real));
        return length;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    const std::uint8_t* m_data;
    qint64 m_size;
    qint64 m_length;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    SparseArchive archive(data, size);
    archive.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    korvel::Result<korvel::PodDirectory> listing = korvel::listPodFrom(archive, "C:\\FUZZ\\FUZZ.POD");
    if (listing.ok()) {
        if (qint64(listing->entries.size()) > korvel::kMaxPodEntries)
            __builtin_trap();
        for (const korvel::PodEntry entry : listing->entries) {
            if (entry.end != static_cast<qint64>(entry.start) + entry.size ||
                qint64(entry.name.size()) > korvel::kMaxPodNameLength)
                __builtin_trap();
        }
        (void)korvel::displayOrder(*listing, true);
    }
    return 0;
}
