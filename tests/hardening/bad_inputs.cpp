#include "bad_inputs.h"

#include "pod_writer.h"

#include <cstdint>

// The files of tests/data/bad/ are built here and committed; BadInputCorpus checks that the two agree
// and rewrites the folder when KORVEL_WRITE_BAD_INPUTS=1 is set (see bad_input_test.cpp).

namespace korvel::testing {

namespace {

const QString kUnreadable =
    QStringLiteral("Sorry, but Korvel was unable to read this POD. Please note that POD3 files are not yet supported.");
const QString kCorrupt = QStringLiteral("This POD appears to be corrupt!");

QString runtimeError(int number, const char* description) {
    return QStringLiteral("Sorry, but an error of type %1 has occurred: %2")
        .arg(number)
        .arg(QLatin1String(description));
}

// Reproducible noise: a linear congruential sequence.
std::string noise(size_t length, std::uint32_t seed) {
    std::string bytes(length, '\0');
    for (char& byte : bytes) {
        seed = seed * 1664525u + 1013904223u;
        byte = static_cast<char>(seed >> 24);
    }
    return bytes;
}

PodWriter soundArchive() {
    PodWriter writer;
    writer.comment("Hardening sample").add("DATA\\FIRST.BIN", "first entry data").add("SECOND.TXT", "second");
    return writer;
}

std::string withEntry(PodWriter writer, size_t index, PodWriter::Entry change, bool pod2) {
    PodWriter::Entry& entry = writer.entries().at(index);
    if (!change.name.empty())
        entry.name = change.name;
    if (change.size)
        entry.size = change.size;
    if (change.start)
        entry.start = change.start;
    return pod2 ? writer.pod2() : writer.pod1();
}

// An archive whose second entry is named `name`, after a sound first entry.
std::string escaping(const std::string& name, bool pod2) {
    PodWriter writer;
    writer.add("SAFE.TXT", "inside").add(name, "escaped");
    return pod2 ? writer.pod2() : writer.pod1();
}

std::string pod1TruncatedHeader() {
    return soundArchive().pod1().substr(0, 9);
}
std::string pod2TruncatedHeader() {
    return soundArchive().pod2().substr(0, 16);
}
std::string pod1NegativeCount() {
    return soundArchive().count(-1).pod1();
}
std::string pod1HugeCount() {
    return soundArchive().count(0x7FFFFFFF).pod1();
}
std::string pod2HugeCount() {
    return soundArchive().count(0x7FFFFFFF).pod2();
}
std::string pod2NegativeCount() {
    return soundArchive().count(-5).pod2();
}
std::string pod1StartPastEnd() {
    return withEntry(soundArchive(), 1, {"", "", {}, 1000000}, false);
}
std::string pod1EndPastEnd() {
    return withEntry(soundArchive(), 1, {"", "", 4096, {}}, false);
}
std::string pod1EndOverflow() {
    return withEntry(soundArchive(), 0, {"", "", 0x1000, 0x7FFFFF00}, false);
}
std::string pod1Size2Gb() {
    return withEntry(soundArchive(), 0, {"", "", 0x7FFFFF00, {}}, false);
}
std::string pod2Size2Gb() {
    return withEntry(soundArchive(), 1, {"", "", 0x7FFFFF00, {}}, true);
}
std::string pod1NegativeSize() {
    return withEntry(soundArchive(), 0, {"", "", -16, {}}, false);
}
std::string pod1NegativeStart() {
    return withEntry(soundArchive(), 1, {"", "", {}, -100}, false);
}
std::string pod1Overlapping() {
    // Both entries share their data, and the second also covers the whole directory.
    PodWriter writer;
    writer.add("A.BIN", "shared bytes").add(PodWriter::Entry{"B.BIN", "", 84 + 80 + 12, 0});
    return writer.pod1();
}
std::string pod2NameTableOverrun() {
    return withEntry(soundArchive(), 0, {"", "", {}, 1000000}, true);
}
std::string pod2NameTableShort() {
    // Three records, then a name table without a single separator.
    std::string bytes = soundArchive().add("THIRD.DAT", "3").pod2();
    const size_t table = 96 + 3 * 20;
    const size_t firstStart = size_t(getInt32(bytes, 96 + 8));
    for (size_t i = table; i < firstStart; ++i)
        bytes[i] = 'N';
    return bytes;
}
std::string pod2NameTableNegative() {
    return withEntry(soundArchive(), 0, {"", "", {}, 50}, true);
}
std::string pod3() {
    return soundArchive().magic("POD3").pod2();
}
std::string dotDotEntry() {
    return escaping("..\\..\\ESCAPE.TXT", false);
}
std::string dotDotInside() {
    return escaping("DATA\\..\\..\\ESCAPE.TXT", true);
}
std::string dotsEntry() {
    return escaping("...\\ESCAPE.TXT", true);
}
std::string driveLetterEntry() {
    return escaping("C:\\ESCAPE.TXT", false);
}
std::string driveRelativeEntry() {
    return escaping("C:ESCAPE.TXT", false);
}
std::string uncEntry() {
    return escaping("\\\\SERVER\\SHARE\\ESCAPE.TXT", true);
}
std::string rootedEntry() {
    return escaping("\\ESCAPE.TXT", false);
}
std::string slashRootedEntry() {
    return escaping("/tmp/ESCAPE.TXT", true);
}
std::string trackInfoHuge() {
    // A track-information entry whose size claims 2 GB; only the bytes present can be read.
    PodWriter writer;
    writer.add(PodWriter::Entry{"TRACK.SIT", trackInfoText(18, "3"), 0x7FFFFF00, {}});
    return writer.pod1();
}
std::string podIniGarbage() {
    std::string text = "2\r\n";
    text += noise(2000, 7);
    text += std::string(70000, 'X') + "\r\n\x1b\r\n\r\r";
    text += std::string("TRUCKS\\A.POD\0B.POD\r\n", 20);
    return text;
}
std::string podIniHugeCount() {
    return "2147483648000\r\nMISSING\\ONE.POD\r\n-7\r\n";
}
std::string monsterGarbage() {
    return noise(3000, 11);
}
std::string monsterNoLineBreaks() {
    return "[Game]\r\nshowHiddenTrack=0\r\nkookyHornFlag=1\r\ngLocalizationFile=UI\\MTM2.loc";
}
std::string playerGarbage() {
    return noise(500, 13);
}
std::string playerHugeCount() {
    return "103\r\n99999999999\r\n1\r\nBob\r\n1\r\n2\r\n";
}
std::string playerNegativeCount() {
    return "103\r\n-4\r\n1\r\n";
}
std::string paletteShort() {
    return noise(767, 17);
}
std::string paletteLong() {
    return noise(769, 19);
}
std::string settingsGarbage() {
    return "{\"HKEY_CURRENT_USER\": {\"Software\": " + noise(300, 23);
}

} // namespace

QString badInputFolder() {
    return QStringLiteral(KORVEL_TEST_DATA "/bad");
}

const std::vector<BadInput>& badInputs() {
    using U = BadInputUse;
    static const std::vector<BadInput> rows = {
        {"pod1_truncated_header.pod", "9 bytes of a POD1 header", pod1TruncatedHeader, U::List, 1, kUnreadable},
        {"pod2_truncated_header.pod", "16 bytes of a POD2 header", pod2TruncatedHeader, U::List, 1,
         runtimeError(5, "Invalid procedure call or argument")},
        {"pod1_negative_count.pod", "count -1", pod1NegativeCount, U::List, 0, QStringLiteral("Total Files: -1")},
        {"pod1_huge_count.pod", "count 2147483647 in a small file", pod1HugeCount, U::List, 1, kUnreadable},
        {"pod2_huge_count.pod", "count 2147483647 in a small file", pod2HugeCount, U::List, 1, kUnreadable},
        {"pod2_negative_count.pod", "count -5", pod2NegativeCount, U::List, 1, runtimeError(63, "Bad record number")},
        {"pod1_start_past_end.pod", "an entry starting 1 MB past the end", pod1StartPastEnd, U::Extract, 1, kCorrupt},
        {"pod1_end_past_end.pod", "an entry running past the end", pod1EndPastEnd, U::Extract, 1, kCorrupt},
        {"pod1_end_overflow.pod", "start + size beyond 32 bits", pod1EndOverflow, U::List, 1, kUnreadable},
        {"pod1_size_2gb.pod", "a 2 GB size field", pod1Size2Gb, U::Extract, 1, kCorrupt},
        {"pod2_size_2gb.pod", "a 2 GB size field, listed", pod2Size2Gb, U::List, 0, QStringLiteral("2,147,483,392")},
        {"pod1_negative_size.pod", "size -16", pod1NegativeSize, U::Extract, 1, kCorrupt},
        {"pod1_negative_start.pod", "start -100", pod1NegativeStart, U::Extract, 1, kCorrupt},
        {"pod1_overlapping_entries.pod", "entries sharing bytes and covering the directory", pod1Overlapping,
         U::Extract, 0, QStringLiteral("2 files (188 bytes) extracted")},
        {"pod2_name_table_overrun.pod", "a name table running 1 MB past the end", pod2NameTableOverrun, U::List, 1,
         kUnreadable},
        {"pod2_name_table_short.pod", "a name table with fewer names than entries", pod2NameTableShort, U::List, 1,
         runtimeError(9, "Subscript out of range")},
        {"pod2_name_table_negative.pod", "a negative name-table length", pod2NameTableNegative, U::List, 1,
         runtimeError(5, "Invalid procedure call or argument")},
        {"pod3.pod", "a POD3 archive", pod3, U::List, 1, kUnreadable},
        {"entry_dotdot.pod", "an entry named ..\\..\\ESCAPE.TXT", dotDotEntry, U::Extract, 1, kCorrupt},
        {"entry_dotdot_inside.pod", "an entry named DATA\\..\\..\\ESCAPE.TXT", dotDotInside, U::Extract, 1, kCorrupt},
        {"entry_dots.pod", "an entry named ...\\ESCAPE.TXT", dotsEntry, U::Extract, 1, kCorrupt},
        {"entry_drive_letter.pod", "an entry named C:\\ESCAPE.TXT", driveLetterEntry, U::Extract, 1, kCorrupt},
        {"entry_drive_relative.pod", "an entry named C:ESCAPE.TXT", driveRelativeEntry, U::Extract, 1, kCorrupt},
        {"entry_unc.pod", "an entry named \\\\SERVER\\SHARE\\ESCAPE.TXT", uncEntry, U::Extract, 1, kCorrupt},
        {"entry_rooted.pod", "an entry named \\ESCAPE.TXT", rootedEntry, U::Extract, 1, kCorrupt},
        {"entry_slash_rooted.pod", "an entry named /tmp/ESCAPE.TXT", slashRootedEntry, U::Extract, 1, kCorrupt},
        {"track_info_2gb.pod", "a track-information entry claiming 2 GB", trackInfoHuge, U::List, 0,
         QStringLiteral("POD Type: Rally")},
        {"pod_ini_garbage.ini", "binary garbage and a 70,000-character line", podIniGarbage, U::PodIni, 0, {}},
        {"pod_ini_huge_count.ini", "a count line beyond 64 bits", podIniHugeCount, U::PodIni, 0,
         QStringLiteral("Not found")},
        {"monster_garbage.ini", "binary garbage", monsterGarbage, U::Monster, 1,
         QStringLiteral("The entry \"showHiddenTrack\" is missing.")},
        {"monster_no_line_breaks.ini", "the last entry without a line break", monsterNoLineBreaks, U::Monster, 1,
         QStringLiteral("The entry \"gLocalizationFile\" is not followed by a line break.")},
        {"player_garbage.pro", "binary garbage", playerGarbage, U::Drivers, 1,
         QStringLiteral("This is not a driver file: its first line is not \"103\".")},
        {"player_huge_count.pro", "a driver count of 99999999999", playerHugeCount, U::Drivers, 1,
         QStringLiteral("The file ends inside driver 1 of")},
        {"player_negative_count.pro", "a driver count of -4", playerNegativeCount, U::Drivers, 1,
         QStringLiteral("The driver count on line 2 is not a number.")},
        {"palette_short.pal", "767 bytes", paletteShort, U::Palette, 1, QStringLiteral("Unrecognized palette format!")},
        {"palette_long.pal", "769 bytes", paletteLong, U::Palette, 1, QStringLiteral("Unrecognized palette format!")},
        {"settings_garbage.json", "a settings file cut off in binary garbage", settingsGarbage, U::Settings, 1,
         QStringLiteral("was damaged. It has been kept as")},
    };
    return rows;
}

} // namespace korvel::testing
