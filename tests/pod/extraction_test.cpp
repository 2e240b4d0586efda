#include "pod/entry_path.h"
#include "pod/extraction.h"

#include "platform/dialogs.h"
#include "pod_writer.h"
#include "temp_game.h"

#include <QDir>
#include <QDirIterator>

#include <algorithm>

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::PodWriter;
using korvel::testing::TempDrive;

namespace {

const std::string kArchive = "C:\\Games\\MTM2\\TEST.POD";
const std::string kOut = "C:\\Out";

PodDirectory listed(TempDrive& drive, const std::string& bytes) {
    drive.write(kArchive, bytes);
    Result<PodDirectory> listing = ListPOD(drive.files(), kArchive);
    EXPECT_TRUE(listing.ok()) << listing.failure().message.toStdString();
    return listing.ok() ? *listing : PodDirectory{};
}

// Every file under the drive's root, as host paths relative to it.
QStringList filesOnDrive(TempDrive& drive) {
    QStringList found;
    QDirIterator it(drive.root(), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        found << QDir(drive.root()).relativeFilePath(it.next());
    found.sort();
    return found;
}

} // namespace

TEST(EntryPath, keepsSubFoldersAndTrimsBlanksButRejectsNamesThatWouldLeaveTheDestination) {
    for (const char* name :
         {"..\\X.BIN", "A\\..\\..\\X.BIN", "../X.BIN", "A/../../X", "C:\\X.BIN", "C:X.BIN", "\\X.BIN", "/etc/passwd",
          "\\\\server\\share\\X", "  ..\\X.BIN", "A\\...\\X", "X.BIN:s", "A\\\\B", "DIR\\", "", "   ", ". .\\X"})
        EXPECT_FALSE(entryRelativePath(name).has_value()) << name;
    std::string kept;
    for (std::string name : {"ART\\TRUCK.RAW", "  lead.bin  ", "a/b.bin", "..hidden.bin"})
        kept += entryRelativePath(name).value_or("?") + "|";
    EXPECT_EQ(kept, "ART\\TRUCK.RAW|lead.bin|a\\b.bin|..hidden.bin|");
    EXPECT_EQ(entryRelativePath(std::string(90, 'N')), std::string(80, 'N'));
}

TEST(Extraction, copiesSelectedEntriesBeneathTheDestinationAndSumsTheirSizes) {
    TempDrive drive;
    PodWriter pod;
    pod.add("A.BIN", "alpha").add("SUB\\B.BIN", "bravo!").add("C.BIN", std::string(3 << 20, 'c'));
    PodDirectory listing = listed(drive, pod.pod1());
    drive.write(kOut + "\\a.bin", std::string(100, '.')); // the folder test finds an ordinary file
    drive.write(kOut + "\\SUB\\keep.txt", "x");
    std::vector<std::tuple<int, int, std::string>> calls;
    auto done = ExtractFiles(drive.files(), listing, {0, 1, 2}, kOut, {}, [&](int k, int total, std::string_view name) {
        calls.emplace_back(k, total, std::string(name));
    });
    ASSERT_TRUE(done.ok()) << done.failure().message.toStdString();
    EXPECT_EQ(drive.read(kOut + "\\A.BIN"), "alpha" + std::string(95, '.'));                   // overwritten in place
    EXPECT_EQ(QDir(drive.host(kOut)).entryList(QDir::Files), QStringList({"a.bin", "C.BIN"})); // whatever its case
    EXPECT_EQ(drive.read(kOut + "\\SUB\\B.BIN"), "bravo!");
    EXPECT_EQ(drive.read(kOut + "\\C.BIN"), std::string(3 << 20, 'c'));
    EXPECT_EQ(done->files, 3);
    EXPECT_EQ(done->bytes, 11 + (3 << 20));
    ASSERT_EQ(calls.size(), 4u); // one call per file, then the end
    EXPECT_EQ(calls[1], std::make_tuple(1, 3, std::string("SUB\\B.BIN")));
    EXPECT_EQ(calls[3], std::make_tuple(3, 3, std::string()));
    EXPECT_EQ(extractedSummaryText(ExtractSummary{3, 12345, 0.271}), "3 files (12,345 bytes) extracted in 0.27s!");
    // The command line's semantics replace the file whole.
    ASSERT_TRUE(ExtractFiles(drive.files(), listing, {0}, kOut + "\\", ExtractOptions{true, true}).ok());
    EXPECT_EQ(drive.read(kOut + "\\A.BIN"), "alpha");
}

TEST(Extraction, folderTestMakesOnlyOneLevelAndFailsOnAnEmptyExistingFolder) {
    TempDrive drive;
    PodWriter pod;
    pod.add("TOP.BIN", "t").add("DATA\\SUB\\X.BIN", "x");
    PodDirectory listing = listed(drive, pod.pod1());
    // An existing folder without ordinary files: the make-directory call fails on the first entry.
    drive.makeFolder(kOut);
    EXPECT_EQ(ExtractFiles(drive.files(), listing, {0}, kOut).failure().kind, FailureKind::UnexpectedError);
    EXPECT_FALSE(drive.exists(kOut + "\\TOP.BIN"));
    // DATA\SUB\ is made only when DATA\ exists.
    drive.write(kOut + "\\seed.txt", "s");
    ASSERT_FALSE(ExtractFiles(drive.files(), listing, {1}, kOut).ok());
    EXPECT_FALSE(drive.exists(kOut + "\\DATA"));
    drive.makeFolder(kOut + "\\DATA");
    ASSERT_TRUE(ExtractFiles(drive.files(), listing, {0, 1}, kOut).ok());
    EXPECT_EQ(drive.read(kOut + "\\DATA\\SUB\\X.BIN"), "x");
    // The command line makes every missing folder.
    ASSERT_TRUE(ExtractFiles(drive.files(), listing, {1}, "C:\\Fresh\\Deep", ExtractOptions{true, true}).ok());
    EXPECT_EQ(drive.read("C:\\Fresh\\Deep\\DATA\\SUB\\X.BIN"), "x");
}

TEST(Extraction, stopsAtTheFirstRowLyingBeyondTheArchive) {
    TempDrive drive;
    PodWriter pod;
    pod.add("A.BIN", "aaaa").add(PodWriter::Entry{"B.BIN", "bbbb", 4000, std::nullopt}).add("C.BIN", "cc");
    PodDirectory listing = listed(drive, pod.pod1());
    drive.write(kOut + "\\seed.txt", "s");
    auto done = ExtractFiles(drive.files(), listing, allRows(listing), kOut);
    ASSERT_FALSE(done.ok());
    EXPECT_EQ(done.failure().kind, FailureKind::ReadError);
    EXPECT_EQ(done.failure().message, "This POD appears to be corrupt!");
    EXPECT_EQ(drive.read(kOut + "\\A.BIN"), "aaaa");
    EXPECT_FALSE(drive.exists(kOut + "\\B.BIN") || drive.exists(kOut + "\\C.BIN"));
}

TEST(Extraction, refusesTraversalNamesAndWritesNothingOutsideTheDestination) {
    for (const std::string bad : {"..\\EVIL.BIN", "SUB/../../EVIL.BIN", "C:\\EVIL.BIN", "\\EVIL.BIN"}) {
        TempDrive drive;
        PodWriter pod;
        pod.add("GOOD.BIN", "g").add(bad, "evil").add("LATER.BIN", "l");
        PodDirectory listing = listed(drive, pod.pod2());
        drive.write("C:\\Dest\\SUB\\seed.txt", "s");
        for (bool cli : {false, true}) {
            const QStringList before = filesOnDrive(drive);
            auto done =
                ExtractFiles(drive.files(), listing, allRows(listing), "C:\\Dest\\SUB", ExtractOptions{cli, cli});
            ASSERT_FALSE(done.ok()) << bad;
            EXPECT_EQ(done.failure().message, "This POD appears to be corrupt!") << bad;
            QStringList added = filesOnDrive(drive);
            for (const QString& file : before)
                added.removeAll(file);
            EXPECT_TRUE(added.isEmpty() || added == QStringList{QStringLiteral("Dest/SUB/GOOD.BIN")})
                << bad << " " << added.join(',').toStdString();
        }
    }
}

TEST(Extraction, copiesEveryEntryShapeByteForByteUnderBothRules) {
    // Many small entries in folders, entries of every size (one empty), two larger than the read window
    // and copied in the kernel with small ones between, read against the data's order so that every
    // read path is taken.
    std::vector<std::pair<std::string, std::string>> entries = {
        {"BIG1.BIN", std::string(3 << 20, 'x')},
        {"SMALL.TXT", "tiny"},
        {"DEEP\\ER\\BIG2.BIN", std::string((2 << 20) + 7, 'y')}};
    for (int i = 0; i < 600; ++i)
        entries.emplace_back("F" + std::to_string(i % 7) + "\\E" + std::to_string(i) + ".BIN",
                             std::string(size_t(40 + i % 90), char('a' + i % 26)));
    for (int i = 0; i < 12; ++i) {
        std::string data(size_t(i == 5 ? 0 : (1 << (i + 6)) + i), '\0');
        for (size_t b = 0; b < data.size(); ++b)
            data[b] = char((b * 31 + size_t(i)) & 0xFF);
        entries.emplace_back("SIZES\\S" + std::to_string(i) + ".DAT", data);
    }
    PodWriter pod;
    for (const auto& [name, data] : entries)
        pod.add(name, data);
    const std::string bytes = pod.pod1();
    for (bool cli : {false, true}) {
        SCOPED_TRACE(cli ? "command line" : "desktop");
        TempDrive drive;
        PodDirectory listing = listed(drive, bytes);
        std::vector<size_t> rows = allRows(listing);
        std::reverse(rows.begin(), rows.end());
        drive.write(kOut + "\\seed.txt", "s");
        if (!cli) // the desktop makes one folder level only
            drive.makeFolder(kOut + "\\DEEP");
        auto done = ExtractFiles(drive.files(), listing, rows, kOut, ExtractOptions{cli, cli});
        ASSERT_TRUE(done.ok()) << done.failure().message.toStdString();
        EXPECT_EQ(done->files, int(entries.size()));
        for (const auto& [name, data] : entries)
            ASSERT_EQ(drive.read(kOut + "\\" + name), data) << name;
    }
}

TEST(Extraction, entriesEqualButForCaseWriteOneFileAndTheSummarySaysSo) {
    for (bool cli : {false, true}) {
        SCOPED_TRACE(cli);
        TempDrive drive;
        PodWriter pod;
        pod.add("A.TXT", "first, longer").add("SUB\\x.bin", "1").add("a.txt", "second").add("sub\\X.BIN", "2");
        PodDirectory listing = listed(drive, pod.pod2());
        drive.write(kOut + "\\seed.txt", "s");
        auto done = ExtractFiles(drive.files(), listing, allRows(listing), kOut, ExtractOptions{cli, cli});
        ASSERT_TRUE(done.ok()) << done.failure().message.toStdString();
        EXPECT_EQ(done->files, 2);
        EXPECT_EQ(done->overwritten, 2);
        EXPECT_EQ(filesOnDrive(drive).filter(QStringLiteral("Out/")),
                  (QStringList{"Out/A.TXT", "Out/SUB/x.bin", "Out/seed.txt"}));
        // The command line replaces the file whole; the desktop writes over it in place.
        EXPECT_EQ(drive.read(kOut + "\\A.TXT"), cli ? "second" : "second longer");
        EXPECT_EQ(drive.read(kOut + "\\SUB\\x.bin"), "2");
    }
    EXPECT_EQ(extractedSummaryText(ExtractSummary{1, 12, 0.5, 1}),
              "1 files (12 bytes) extracted in 0.5s! 1 file written over by a later entry.");
    EXPECT_EQ(extractedSummaryText(ExtractSummary{4, 12, 0.5, 3}),
              "4 files (12 bytes) extracted in 0.5s! 3 files written over by a later entry.");
}
