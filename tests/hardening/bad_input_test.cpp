#include "child_run.h"
#include "pod_writer.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <cstdint>

#include <gtest/gtest.h>

// Every file of tests/data/bad/ goes through korvel-cli, the same cores the window uses, in a child
// process with a deadline and a memory limit: it must give its message, and must neither hang, crash,
// grow without bound nor write outside the destination of an extraction. The files are built by the
// generators below; KORVEL_WRITE_BAD_INPUTS=1 rewrites the folder from them.

namespace korvel::testing {

// How a bad file reaches the program: where it is placed and the command run on it
// (%f the placed file, %g the game folder, %o the destination of an extraction).
enum class Use { List, Extract, PodIni, Monster, Drivers, Palette, Settings };
constexpr const char* kPlace[] = {
    "", "", "game/POD.INI", "game/system/monster.ini", "game/player.pro", "", "registry.json"};
constexpr const char* kCommand[] = {"list %f",           "extract %f --to %o",     "mounter --game %g show",
                                    "monster --game %g", "drivers --game %g list", "palette %f",
                                    "settings show"};

struct BadInput {
    const char* file; // name under tests/data/bad/
    const char* what;
    std::string (*make)(); // its bytes; the committed file must equal them
    Use use;
    int exitCode;    // 0 accepted, 1 refused
    QString message; // on stderr (refused) or stdout (accepted); empty: no check
};

void PrintTo(const BadInput& row, std::ostream* out) {
    *out << row.file << " (" << row.what << ")";
}

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

// The sound archive with entry `index`'s size and/or start replaced.
std::string changed(size_t index, std::optional<std::int32_t> size, std::optional<std::int32_t> start, bool pod2) {
    PodWriter writer = soundArchive();
    PodWriter::Entry& entry = writer.entries().at(index);
    if (size)
        entry.size = size;
    if (start)
        entry.start = start;
    return pod2 ? writer.pod2() : writer.pod1();
}

// An archive whose second entry is named `name`, after a sound first entry.
std::string escaping(const std::string& name, bool pod2) {
    PodWriter writer;
    writer.add("SAFE.TXT", "inside").add(name, "escaped");
    return pod2 ? writer.pod2() : writer.pod1();
}

std::string pod2NameTableShort() {
    // Three records, then a name table without a single separator.
    std::string bytes = soundArchive().add("THIRD.DAT", "3").pod2();
    for (size_t i = 96 + 3 * 20; i < size_t(getInt32(bytes, 96 + 8)); ++i)
        bytes[i] = 'N';
    return bytes;
}

std::string podIniGarbage() {
    return "2\r\n" + noise(2000, 7) + std::string(70000, 'X') + "\r\n\x1b\r\n\r\r" +
           std::string("TRUCKS\\A.POD\0B.POD\r\n", 20);
}

const std::vector<BadInput>& badInputs() {
    using U = Use;
    static const std::vector<BadInput> rows = {
        {"pod1_truncated_header.pod", "9 bytes of a POD1 header", [] { return soundArchive().pod1().substr(0, 9); },
         U::List, 1, kUnreadable},
        {"pod2_truncated_header.pod", "16 bytes of a POD2 header", [] { return soundArchive().pod2().substr(0, 16); },
         U::List, 1, runtimeError(5, "Invalid procedure call or argument")},
        {"pod1_negative_count.pod", "count -1", [] { return soundArchive().count(-1).pod1(); }, U::List, 0,
         QStringLiteral("Total Files: -1")},
        {"pod1_huge_count.pod", "count 2147483647 in a small file",
         [] { return soundArchive().count(0x7FFFFFFF).pod1(); }, U::List, 1, kUnreadable},
        {"pod2_huge_count.pod", "count 2147483647 in a small file",
         [] { return soundArchive().count(0x7FFFFFFF).pod2(); }, U::List, 1, kUnreadable},
        {"pod2_negative_count.pod", "count -5", [] { return soundArchive().count(-5).pod2(); }, U::List, 1,
         runtimeError(63, "Bad record number")},
        {"pod1_start_past_end.pod", "an entry starting 1 MB past the end", [] { return changed(1, {}, 1000000, 0); },
         U::Extract, 1, kCorrupt},
        {"pod1_end_past_end.pod", "an entry running past the end", [] { return changed(1, 4096, {}, 0); }, U::Extract,
         1, kCorrupt},
        {"pod1_end_overflow.pod", "start + size beyond 32 bits", [] { return changed(0, 0x1000, 0x7FFFFF00, 0); },
         U::List, 1, kUnreadable},
        {"pod1_size_2gb.pod", "a 2 GB size field", [] { return changed(0, 0x7FFFFF00, {}, 0); }, U::Extract, 1,
         kCorrupt},
        {"pod2_size_2gb.pod", "a 2 GB size field, listed", [] { return changed(1, 0x7FFFFF00, {}, 1); }, U::List, 0,
         QStringLiteral("2,147,483,392")},
        {"pod1_negative_size.pod", "size -16", [] { return changed(0, -16, {}, 0); }, U::Extract, 1, kCorrupt},
        {"pod1_negative_start.pod", "start -100", [] { return changed(1, {}, -100, 0); }, U::Extract, 1, kCorrupt},
        {"pod1_overlapping_entries.pod", "entries sharing bytes and covering the directory",
         [] {
             return PodWriter().add("A.BIN", "shared bytes").add({"B.BIN", "", 84 + 80 + 12, 0}).pod1();
         },
         U::Extract, 0, QStringLiteral("2 files (188 bytes) extracted")},
        {"pod2_name_table_overrun.pod", "a name table running 1 MB past the end",
         [] { return changed(0, {}, 1000000, 1); }, U::List, 1, kUnreadable},
        {"pod2_name_table_short.pod", "a name table with fewer names than entries", pod2NameTableShort, U::List, 1,
         runtimeError(9, "Subscript out of range")},
        {"pod2_name_table_negative.pod", "a negative name-table length", [] { return changed(0, {}, 50, 1); }, U::List,
         1, runtimeError(5, "Invalid procedure call or argument")},
        {"pod3.pod", "a POD3 archive", [] { return soundArchive().magic("POD3").pod2(); }, U::List, 1, kUnreadable},
        {"entry_dotdot.pod", "..\\..\\ESCAPE.TXT", [] { return escaping("..\\..\\ESCAPE.TXT", 0); }, U::Extract, 1,
         kCorrupt},
        {"entry_dotdot_inside.pod", "DATA\\..\\..\\ESCAPE.TXT", [] { return escaping("DATA\\..\\..\\ESCAPE.TXT", 1); },
         U::Extract, 1, kCorrupt},
        {"entry_dots.pod", "...\\ESCAPE.TXT", [] { return escaping("...\\ESCAPE.TXT", 1); }, U::Extract, 1, kCorrupt},
        {"entry_drive_letter.pod", "C:\\ESCAPE.TXT", [] { return escaping("C:\\ESCAPE.TXT", 0); }, U::Extract, 1,
         kCorrupt},
        {"entry_drive_relative.pod", "C:ESCAPE.TXT", [] { return escaping("C:ESCAPE.TXT", 0); }, U::Extract, 1,
         kCorrupt},
        {"entry_unc.pod", "\\\\SERVER\\SHARE\\ESCAPE.TXT", [] { return escaping("\\\\SERVER\\SHARE\\ESCAPE.TXT", 1); },
         U::Extract, 1, kCorrupt},
        {"entry_rooted.pod", "\\ESCAPE.TXT", [] { return escaping("\\ESCAPE.TXT", 0); }, U::Extract, 1, kCorrupt},
        {"entry_slash_rooted.pod", "/tmp/ESCAPE.TXT", [] { return escaping("/tmp/ESCAPE.TXT", 1); }, U::Extract, 1,
         kCorrupt},
        {"track_info_2gb.pod", "a track-information entry claiming 2 GB; only the bytes present are read",
         [] {
             return PodWriter().add({"TRACK.SIT", trackInfoText(18, "3"), 0x7FFFFF00, {}}).pod1();
         },
         U::List, 0, QStringLiteral("POD Type: Rally")},
        {"pod_ini_garbage.ini", "binary garbage and a 70,000-character line", podIniGarbage, U::PodIni, 0, {}},
        {"pod_ini_huge_count.ini", "a count line beyond 64 bits",
         [] { return std::string("2147483648000\r\nMISSING\\ONE.POD\r\n-7\r\n"); }, U::PodIni, 0,
         QStringLiteral("Not found")},
        {"monster_garbage.ini", "binary garbage", [] { return noise(3000, 11); }, U::Monster, 1,
         QStringLiteral("The entry \"showHiddenTrack\" is missing.")},
        {"monster_no_line_breaks.ini", "the last entry without a line break",
         [] { return std::string("[Game]\r\nshowHiddenTrack=0\r\nkookyHornFlag=1\r\ngLocalizationFile=UI\\MTM2.loc"); },
         U::Monster, 1, QStringLiteral("The entry \"gLocalizationFile\" is not followed by a line break.")},
        {"player_garbage.pro", "binary garbage", [] { return noise(500, 13); }, U::Drivers, 1,
         QStringLiteral("This is not a driver file: its first line is not \"103\".")},
        {"player_huge_count.pro", "a driver count of 99999999999",
         [] { return std::string("103\r\n99999999999\r\n1\r\nBob\r\n1\r\n2\r\n"); }, U::Drivers, 1,
         QStringLiteral("The file ends inside driver 1 of")},
        {"player_negative_count.pro", "a driver count of -4", [] { return std::string("103\r\n-4\r\n1\r\n"); },
         U::Drivers, 1, QStringLiteral("The driver count on line 2 is not a number.")},
        {"palette_short.pal", "767 bytes", [] { return noise(767, 17); }, U::Palette, 1,
         QStringLiteral("Unrecognized palette format!")},
        {"palette_long.pal", "769 bytes", [] { return noise(769, 19); }, U::Palette, 1,
         QStringLiteral("Unrecognized palette format!")},
        {"settings_garbage.json", "a settings file cut off in binary garbage",
         [] { return "{\"HKEY_CURRENT_USER\": {\"Software\": " + noise(300, 23); }, U::Settings, 1,
         QStringLiteral("was damaged. It has been kept as")},
    };
    return rows;
}

const QString kFolder = QStringLiteral(KORVEL_TEST_DATA "/bad/");

QStringList contentsOf(const QString& folder) {
    QStringList paths;
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        paths << QDir(folder).relativeFilePath(it.next());
    paths.sort();
    return paths;
}

TEST(BadInputFiles, areTheCommittedOutputOfTheirGenerators) {
    const bool write = qEnvironmentVariableIntValue("KORVEL_WRITE_BAD_INPUTS") == 1;
    QStringList names;
    for (const BadInput& row : badInputs()) {
        const std::string bytes = row.make();
        EXPECT_LE(bytes.size(), 100000u) << row.file << ": the corpus stays small";
        names << QLatin1String(row.file);
        if (write) {
            ASSERT_TRUE(writeFile(kFolder + QLatin1String(row.file), bytes));
        }
        EXPECT_EQ(readFile(kFolder + QLatin1String(row.file)).toStdString(), bytes)
            << row.file << " differs from its generator";
    }
    names.sort();
    EXPECT_EQ(QDir(kFolder).entryList(QDir::Files, QDir::Name), names) << "every file of the folder has its row";
}

class BadInputCorpus : public ::testing::TestWithParam<BadInput> {};

TEST_P(BadInputCorpus, givesItsMessageWithinBoundedTimeAndMemory) {
    const BadInput& row = GetParam();
    QTemporaryDir temp;
    ASSERT_TRUE(temp.isValid());
    const QString root = temp.path();
    QDir().mkpath(root + QStringLiteral("/game/system"));
    QDir().mkpath(root + QStringLiteral("/deep/er")); // "..\\..\\X" from the destination stays in the folder

    const QString place = QLatin1String(*kPlace[int(row.use)] ? kPlace[int(row.use)] : row.file);
    const QString placed = root + QLatin1Char('/') + place;
    ASSERT_TRUE(QFile::copy(kFolder + QLatin1String(row.file), placed)) << row.file;

    QStringList args = QString::fromLatin1(kCommand[int(row.use)]).split(QLatin1Char(' '));
    args.replaceInStrings(QStringLiteral("%f"), placed)
        .replaceInStrings(QStringLiteral("%g"), root + QStringLiteral("/game"))
        .replaceInStrings(QStringLiteral("%o"), root + QStringLiteral("/deep/er/out"));
    ChildLimits limits;
    limits.timeout = std::chrono::seconds(15);
    limits.addressSpace = qint64(768) << 20;
    limits.environment.insert(QStringLiteral("KORVEL_REGISTRY"), root + QStringLiteral("/registry.json"));
    // Started inside a folder of its own, so that a name escaping upwards lands where it is seen.
    limits.workingDirectory = root + QStringLiteral("/game/system");
    const QStringList before = contentsOf(root);

    const ChildResult result = runChild(cliProgram(), args, limits);
    ASSERT_TRUE(result.started);
    ASSERT_FALSE(result.timedOut) << row.file << " still ran after the deadline";
    ASSERT_FALSE(result.crashed) << row.file << " crashed:\n" << result.err.toStdString();
    EXPECT_EQ(result.exitCode, row.exitCode) << result.err.toStdString();
    const QString said = QString::fromUtf8(row.exitCode == 0 ? result.out : result.err);
    EXPECT_TRUE(said.contains(row.message)) << row.file << " said:\n" << said.toStdString();
    if (row.exitCode != 0) {
        EXPECT_FALSE(result.err.contains("error of type 6 ")) << "an overflow must be refused as an unreadable POD";
    }
    if (row.use == Use::Extract) {
        QStringList after = contentsOf(root);
        after.removeIf([](const QString& path) {
            return path == QLatin1String("deep/er/out") || path.startsWith(QLatin1String("deep/er/out/"));
        });
        EXPECT_EQ(after, before) << row.file << " wrote outside the destination";
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFile, BadInputCorpus, ::testing::ValuesIn(badInputs()),
                         [](const auto& info) { return paramName(info.param.file); });

} // namespace
} // namespace korvel::testing
