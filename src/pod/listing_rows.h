#pragma once

#include "pod_directory.h"

#include <cstddef>
#include <string_view>

namespace korvel {

// The few facts about a listed entry that the checking, packing and conflict code reads; they read
// a listing only through these.
inline size_t rowCount(const PodDirectory& listing) {
    return listing.entries.size();
}
inline std::string_view rowName(const PodDirectory& listing, size_t row) {
    return listing.entries[row].name;
}
inline qint32 rowSize(const PodDirectory& listing, size_t row) {
    return listing.entries[row].size;
}
inline qint32 rowStart(const PodDirectory& listing, size_t row) {
    return listing.entries[row].start;
}

} // namespace korvel
