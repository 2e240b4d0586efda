// Feeds arbitrary names to the packer's name rules: host paths beneath a packed folder and names
// typed for `add`. Every name they accept must come back unchanged through extraction's rules, use
// "\" separators only, fit its format and read back as the text it came from.
#include "platform/game_text.h"
#include "pod/entry_path.h"
#include "pod/pod_pack.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void checkAccepted(const std::string& name, korvel::PodFormat format) {
    if (name.empty() || name.find('/') != std::string::npos || name.find('\0') != std::string::npos)
        std::abort();
    if (korvel::entryRelativePath(name) != name)
        std::abort();
    if (format == korvel::PodFormat::Pod1 && name.size() > korvel::kPod1NameLimit)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const korvel::PodFormat format = (data[0] & 1) ? korvel::PodFormat::Pod2 : korvel::PodFormat::Pod1;
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data + 1), static_cast<qsizetype>(size - 1));

    if (const korvel::Result<std::string> name = korvel::packEntryName(text, format)) {
        checkAccepted(*name, format);
        QString separated = text;
        separated.replace(QLatin1Char('/'), QLatin1Char('\\'));
        if (korvel::fromGameText(*name) != separated)
            std::abort();
    }
    if (const korvel::Result<std::string> typed = korvel::typedEntryName(text, format))
        checkAccepted(*typed, format);
    if (const korvel::Result<std::string> comment = korvel::podComment(text)) {
        if (comment->size() > korvel::kCommentLimit || korvel::fromGameText(*comment) != text)
            std::abort();
    }
    return 0;
}
