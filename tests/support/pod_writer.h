#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvel::testing {

// Builds POD1 and POD2 archives in memory, sound or deliberately broken.
//
// Data is laid out after the directory in entry order. Every field that a broken archive needs to
// get wrong can be overridden per entry or for the whole header.
class PodWriter {
public:
    struct Entry {
        std::string name; // bytes as stored; may hold "\" separators
        std::string data;
        std::optional<std::int32_t> size;  // stored size instead of data.size()
        std::optional<std::int32_t> start; // stored offset instead of the real one
    };

    PodWriter& comment(std::string text) { return m_comment = std::move(text), *this; }
    PodWriter& add(std::string name, std::string data) { return add(Entry{std::move(name), std::move(data), {}, {}}); }
    PodWriter& add(Entry entry) { return m_entries.push_back(std::move(entry)), *this; }
    // Header count instead of the number of entries.
    PodWriter& count(std::int32_t value) { return m_count = value, *this; }
    // POD2 magic instead of "POD2" (e.g. "pod2" or "POD3").
    PodWriter& magic(std::string value) { return m_magic = std::move(value), *this; }

    std::string pod1() const;
    std::string pod2() const;

    std::vector<Entry>& entries() { return m_entries; }

private:
    std::string m_comment;
    std::vector<Entry> m_entries;
    std::optional<std::int32_t> m_count;
    std::string m_magic = "POD2";
};

// Little-endian helpers for fixtures that patch bytes by hand.
void putInt32(std::string& bytes, size_t offset, std::int32_t value);
std::int32_t getInt32(const std::string& bytes, size_t offset);

// A track-information text whose line `raceLine` (0-based) holds `raceCode` and line 4 `line4`;
// the line before the race-type line holds "Track Race Type", where the race-type conversion
// looks for it.
std::string trackInfoText(int raceLine, const std::string& raceCode, const std::string& line4 = "Some Track");

} // namespace korvel::testing
