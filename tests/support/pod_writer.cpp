#include "pod_writer.h"

#include <algorithm>

namespace korvel::testing {

void putInt32(std::string& bytes, size_t offset, std::int32_t value) {
    if (bytes.size() < offset + 4)
        bytes.resize(offset + 4, '\0');
    auto v = static_cast<std::uint32_t>(value);
    for (int i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
}

std::int32_t getInt32(const std::string& bytes, size_t offset) {
    std::uint32_t v = 0;
    for (int i = 0; i < 4; ++i)
        v |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[offset + i])) << (8 * i);
    return static_cast<std::int32_t>(v);
}

namespace {

std::string fixedField(const std::string& text, size_t width) {
    std::string field = text.substr(0, width);
    field.resize(width, '\0');
    return field;
}

} // namespace

std::string PodWriter::pod1() const {
    std::string out;
    putInt32(out, 0, m_count.value_or(static_cast<std::int32_t>(m_entries.size())));
    out += fixedField(m_comment, 80);
    size_t dataOffset = 84 + 40 * m_entries.size();
    std::string data;
    for (const Entry& entry : m_entries) {
        out += fixedField(entry.name, 32);
        std::string numbers;
        putInt32(numbers, 0, entry.size.value_or(static_cast<std::int32_t>(entry.data.size())));
        putInt32(numbers, 4, entry.start.value_or(static_cast<std::int32_t>(dataOffset + data.size())));
        out += numbers;
        data += entry.data;
    }
    return out + data;
}

std::string PodWriter::pod2() const {
    std::string out = fixedField(m_magic, 4);
    putInt32(out, 4, 0x12345678); // checksum, not read
    out += fixedField(m_comment, 80);
    putInt32(out, 88, m_count.value_or(static_cast<std::int32_t>(m_entries.size())));
    putInt32(out, 92, 0);
    std::string names;
    std::vector<size_t> nameOffsets;
    for (const Entry& entry : m_entries) {
        nameOffsets.push_back(names.size());
        names += entry.name;
        names.push_back('\0');
    }
    const size_t dataOffset = 96 + 20 * m_entries.size() + names.size();
    std::string data;
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const Entry& entry = m_entries[i];
        std::string record;
        putInt32(record, 0, static_cast<std::int32_t>(nameOffsets[i]));
        putInt32(record, 4, entry.size.value_or(static_cast<std::int32_t>(entry.data.size())));
        putInt32(record, 8, entry.start.value_or(static_cast<std::int32_t>(dataOffset + data.size())));
        putInt32(record, 12, 0x5EED);
        putInt32(record, 16, 0);
        out += record;
        data += entry.data;
    }
    return out + names + data;
}

std::string trackInfoText(int raceLine, const std::string& raceCode, const std::string& line4) {
    std::string text;
    for (int i = 0; i <= std::max(raceLine, 4) + 2; ++i) {
        if (i == raceLine)
            text += raceCode;
        else if (i + 1 == raceLine && i != 4)
            text += "Track Race Type"; // the race-type conversion patches the third byte after it
        else if (i == 4)
            text += line4;
        else
            text += "line " + std::to_string(i);
        text += "\r\n";
    }
    return text;
}

} // namespace korvel::testing
