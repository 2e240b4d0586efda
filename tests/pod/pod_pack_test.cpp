#include "pod/extraction.h"
#include "pod/pod_check.h"
#include "pod/pod_crc.h"
#include "pod/pod_directory.h"
#include "pod/pod_pack.h"

#include "pod_writer.h"
#include "temp_game.h"

#include <QDateTime>
#include <QFile>

#include <gtest/gtest.h>

#include <random>

using namespace korvel;
using korvel::testing::getInt32;
using korvel::testing::PodWriter;
using korvel::testing::TempDrive;

namespace {

const std::string kFolder = "C:\\Mod";
const std::string kArchive = "C:\\Game\\NEW.POD";

// CRC-32/MPEG-2 one bit at a time, as a reference for the table-driven code.
quint32 bitwiseCrc(std::string_view data) {
    quint32 crc = 0xFFFFFFFFu;
    for (unsigned char byte : data) {
        crc ^= quint32(byte) << 24;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x80000000u) ? (crc << 1) ^ 0x04C11DB7u : crc << 1;
    }
    return crc;
}

quint32 field(const std::string& bytes, size_t offset) {
    return static_cast<quint32>(getInt32(bytes, offset));
}

std::vector<std::string> names(const PodDirectory& listing) {
    std::vector<std::string> out;
    for (const PodEntry entry : listing.entries)
        out.emplace_back(entry.name);
    return out;
}

std::string refusal(const Result<std::string>& result) {
    return result ? "ok:" + *result : result.failure().message.toStdString();
}

// A mod folder with nested files, an empty file and one larger than a copy chunk, and the folder
// the archive goes to.
void writeModFolder(TempDrive& drive) {
    drive.makeFolder("C:\\Game");
    drive.write(kFolder + "\\Zeta.bin", "zeta");
    drive.write(kFolder + "\\alpha\\One.bin", "one");
    drive.write(kFolder + "\\alpha\\sub\\two.bin", "two!");
    drive.write(kFolder + "\\Beta.BIN", "beta");
    drive.write(kFolder + "\\empty.bin", "");
    std::string big(3 << 20, '\0');
    for (size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<char>((i * 131) >> 3);
    drive.write(kFolder + "\\big.bin", big);
}

} // namespace

TEST(PodCrc, matchesTheCheckValueAndJoinsPiecesAsTheWholeWould) {
    EXPECT_EQ(podCrc("123456789", 9), 0x0376E6E7u);
    std::mt19937 random(7);
    std::string data(5000, '\0');
    for (char& c : data)
        c = static_cast<char>(random());
    for (size_t length : {size_t(0), size_t(1), size_t(7), size_t(8), size_t(9), size_t(63), size_t(5000)}) {
        const std::string_view whole(data.data(), length);
        EXPECT_EQ(podCrc(whole.data(), whole.size()), bitwiseCrc(whole)) << length;
        for (size_t split : {size_t(0), length / 3, length}) {
            const std::string_view a = whole.substr(0, split), b = whole.substr(split);
            EXPECT_EQ(podCrcUpdate(podCrc(a.data(), a.size()), b.data(), b.size()), bitwiseCrc(whole));
            EXPECT_EQ(podCrcShift(podCrc(a.data(), a.size()), qint64(b.size())) ^ podCrcUpdate(0, b.data(), b.size()),
                      bitwiseCrc(whole))
                << length << " split at " << split;
        }
    }
}

TEST(PackEntryName, turnsHostPathsIntoGameNamesAndRefusesWhatCouldNotComeBack) {
    const std::string name31(31, 'N'), name32(32, 'N');
    const struct {
        QString relative;
        PodFormat format;
        std::string expected; // "ok:" + the name, or a part of the refusal
    } rows[] = {
        {"DATA/SUB/X.BIN", PodFormat::Pod1, "ok:DATA\\SUB\\X.BIN"},
        {QString::fromUtf8("caf\u00e9.txt"), PodFormat::Pod1, "ok:caf\xe9.txt"},
        {QString::fromUtf8("\u20acuro.bin"), PodFormat::Pod2, "ok:\x80uro.bin"},
        {QString::fromUtf8("\u65e5\u672c.bin"), PodFormat::Pod2, "code page cannot represent"},
        {QString::fromUtf8("\u0100.bin"), PodFormat::Pod2, "code page cannot represent"},
        {"a\\b.bin", PodFormat::Pod2, "holding \"\\\""},
        {" lead.bin", PodFormat::Pod2, "would not write this name back"},
        {"trail.bin ", PodFormat::Pod2, "would not write this name back"},
        {"x:y.bin", PodFormat::Pod2, "would not write this name back"},
        {"DIR/../x.bin", PodFormat::Pod2, "would not write this name back"},
        {QString::fromStdString(name31), PodFormat::Pod1, "ok:" + name31},
        {QString::fromStdString(name32), PodFormat::Pod1, "limited to 31 bytes; this one has 32"},
        {"D/" + QString::fromStdString(name31), PodFormat::Pod1, "limited to 31 bytes; this one has 33"},
        {QString::fromStdString(name32), PodFormat::Pod2, "ok:" + name32},
        {QString(81, 'L'), PodFormat::Pod2, "limited to 80 bytes"},
    };
    for (const auto& row : rows) {
        const std::string got = refusal(packEntryName(row.relative, row.format));
        if (row.expected.rfind("ok:", 0) == 0) {
            EXPECT_EQ(got, row.expected) << row.relative.toStdString();
        } else {
            EXPECT_NE(got.find(row.expected), std::string::npos) << row.relative.toStdString() << ": " << got;
            EXPECT_NE(got.find(row.relative.left(20).toStdString()), std::string::npos) << "names the file: " << got;
        }
    }
}

TEST(TypedEntryName, acceptsEitherSeparatorAndRefusesNamesThatEscape) {
    EXPECT_EQ(refusal(typedEntryName("data/new.bin", PodFormat::Pod1)), "ok:data\\new.bin");
    EXPECT_EQ(refusal(typedEntryName("  X.BIN ", PodFormat::Pod1)), "ok:X.BIN");
    for (const char* escaping : {"..\\evil.bin", "a\\..\\..\\b.bin", "\\abs.bin", "/etc/passwd", "C:\\x.bin", "", "  "})
        EXPECT_NE(refusal(typedEntryName(escaping, PodFormat::Pod2)).find("would leave the extraction folder"),
                  std::string::npos)
            << escaping;
    EXPECT_NE(refusal(typedEntryName(QString(32, 'N'), PodFormat::Pod1)).find("31 bytes"), std::string::npos);
    EXPECT_NE(refusal(podComment(QString(80, 'c'))).find("79 bytes"), std::string::npos);
    EXPECT_EQ(refusal(podComment(QString::fromUtf8("Caf\u00e9"))), "ok:Caf\xe9");
    // A NUL would end the comment early when the archive is read back.
    EXPECT_NE(refusal(podComment(QStringLiteral("My") + QChar(0) + QStringLiteral("mod"))).find("cannot represent"),
              std::string::npos);
}

TEST(PackFolder, roundTripsNamesAndBytesThroughListingAndExtractionInBothFormats) {
    for (PodFormat format : {PodFormat::Pod1, PodFormat::Pod2}) {
        SCOPED_TRACE(format == PodFormat::Pod1 ? "POD1" : "POD2");
        TempDrive drive;
        writeModFolder(drive);
        const QDateTime stamp = QDateTime::fromSecsSinceEpoch(981173106); // 2001-02-03
        QFile zeta(drive.host(kFolder + "\\Zeta.bin"));
        ASSERT_TRUE(zeta.open(QIODevice::ReadWrite) && zeta.setFileTime(stamp, QFileDevice::FileModificationTime));
        zeta.close();
        std::vector<std::pair<qint64, qint64>> progress;
        PackOptions options{format, QStringLiteral("My mod"), false};
        const Result<PackSummary> packed =
            packFolder(drive.files(), kFolder, kArchive, options, [&](qint64 d, qint64 t) {
                progress.emplace_back(d, t);
                return true;
            });
        ASSERT_TRUE(packed.ok()) << packed.failure().message.toStdString();
        EXPECT_EQ(packed->entries, 6);
        EXPECT_EQ(progress.back(), std::make_pair(qint64(6), qint64(6)));

        const std::string bytes = drive.read(kArchive);
        EXPECT_EQ(packed->bytes, qint64(bytes.size()));
        const Result<PodDirectory> listing = ListPOD(drive.files(), kArchive);
        ASSERT_TRUE(listing.ok()) << listing.failure().message.toStdString();
        EXPECT_EQ(listing->pod2, format == PodFormat::Pod2);
        EXPECT_EQ(listing->comment, "My mod");
        const std::vector<std::string> files = {"alpha\\One.bin", "alpha\\sub\\two.bin", "Beta.BIN",
                                                "big.bin",        "empty.bin",           "Zeta.bin"};
        EXPECT_EQ(names(*listing), files);
        // Data in directory order, packed without gaps, right after the directory.
        qint32 expectedStart = listing->entries[0].start;
        for (const PodEntry entry : listing->entries) {
            EXPECT_EQ(entry.start, expectedStart) << entry.name;
            expectedStart = entry.end;
        }
        EXPECT_EQ(expectedStart, qint32(bytes.size()));

        ASSERT_TRUE(ExtractFiles(drive.files(), *listing, allRows(*listing), "C:\\Out", {true, true}).ok());
        for (const std::string& file : files)
            EXPECT_EQ(drive.read("C:\\Out\\" + file), drive.read(kFolder + "\\" + file)) << file;
        EXPECT_TRUE(checkArchive(drive.files(), kArchive).fine())
            << checkArchive(drive.files(), kArchive).summary().toStdString();

        if (format == PodFormat::Pod2) {
            EXPECT_EQ(field(bytes, 4), bitwiseCrc(std::string_view(bytes).substr(8)));
            EXPECT_EQ(field(bytes, 88), 6u);
            EXPECT_EQ(field(bytes, 92), 0u) << "no audit records";
            quint32 nameOffset = 0;
            for (size_t i = 0; i < listing->entries.size(); ++i) {
                const PodEntry& entry = listing->entries[i];
                const size_t record = 96 + 20 * i;
                EXPECT_EQ(field(bytes, record), nameOffset) << entry.name;
                EXPECT_EQ(field(bytes, record + 16),
                          bitwiseCrc(std::string_view(bytes).substr(size_t(entry.start), size_t(entry.size))))
                    << entry.name;
                nameOffset += quint32(entry.name.size() + 1);
            }
            EXPECT_EQ(field(bytes, 96 + 20 * 5 + 12), 981173106u) << "Zeta.bin's modification time";
        }
    }
}

TEST(PackFolder, refusesCaseTwinsEmptyFoldersAndExistingTargetsAndCanBeCancelled) {
    TempDrive drive;
    drive.makeFolder(kFolder);
    drive.makeFolder("C:\\Game");
    const PackOptions keep{PodFormat::Pod2, QString(), false};
    EXPECT_NE(packFolder(drive.files(), kFolder, kArchive, keep).failure().message.indexOf("holds no files"), -1);
    EXPECT_NE(packFolder(drive.files(), "C:\\Nowhere", kArchive, keep).failure().message.indexOf("not found"), -1);

    drive.write(kFolder + "\\a.txt", "a");
    drive.write(kArchive, "old");
    EXPECT_NE(packFolder(drive.files(), kFolder, kArchive, keep).failure().message.indexOf("already exists"), -1);
    const Result<PackSummary> cancelled = packFolder(
        drive.files(), kFolder, kArchive, {PodFormat::Pod2, QString(), true}, [](qint64, qint64) { return false; });
    EXPECT_EQ(cancelled.failure().message, cancelledText());
    EXPECT_EQ(drive.read(kArchive), "old") << "neither refusal nor cancelling touches the old file";
    EXPECT_TRUE(packFolder(drive.files(), kFolder, kArchive, {PodFormat::Pod2, QString(), true}).ok());

    QFile twin(drive.root() + "/Mod/A.TXT"); // beside a.txt: the drive's own writes would find a.txt
    ASSERT_TRUE(twin.open(QIODevice::WriteOnly));
    twin.close();
    const Result<PackSummary> twins = packFolder(drive.files(), kFolder, "C:\\Game\\TWINS.POD", keep);
    ASSERT_FALSE(twins.ok());
    EXPECT_NE(twins.failure().message.indexOf("A.TXT"), -1);
    EXPECT_NE(twins.failure().message.indexOf("a.txt"), -1);
    EXPECT_FALSE(drive.exists("C:\\Game\\TWINS.POD"));
}

TEST(PackFolder, leavesOutTheArchiveItWritesIntoTheSameFolderAndFollowsLinksToFilesOnly) {
    TempDrive drive;
    drive.write(kFolder + "\\a.txt", "a");
    drive.write(kFolder + "\\caf\xe9.txt", "c"); // stored in the game's code page, not as on disk
    drive.write("C:\\Outside\\deep\\x.bin", "x");
#ifdef Q_OS_UNIX
    ASSERT_TRUE(QFile::link(drive.root() + "/Outside/deep/x.bin", drive.root() + "/Mod/linked.bin"));
    ASSERT_TRUE(QFile::link(drive.root() + "/Outside", drive.root() + "/Mod/folder-link"));
    ASSERT_TRUE(QFile::link(drive.root() + "/nowhere", drive.root() + "/Mod/dangling"));
#endif
    drive.write(kFolder + "\\SELF.POD", "an older pack");
    ASSERT_TRUE(packFolder(drive.files(), kFolder, kFolder + "\\SELF.POD", {PodFormat::Pod1, QString(), true}).ok());
#ifdef Q_OS_UNIX
    EXPECT_EQ(names(*ListPOD(drive.files(), kFolder + "\\SELF.POD")),
              (std::vector<std::string>{"a.txt", "caf\xe9.txt", "linked.bin"}));
#else
    EXPECT_EQ(names(*ListPOD(drive.files(), kFolder + "\\SELF.POD")),
              (std::vector<std::string>{"a.txt", "caf\xe9.txt"}));
#endif
}

TEST(ArchiveUpdate, addReplacesInPlaceOrAppendsAndKeepsCommentOrderAndOtherBytes) {
    for (PodFormat format : {PodFormat::Pod1, PodFormat::Pod2}) {
        SCOPED_TRACE(format == PodFormat::Pod1 ? "POD1" : "POD2");
        TempDrive drive;
        drive.makeFolder("C:\\Game");
        drive.write(kFolder + "\\a\\one.bin", "one");
        drive.write(kFolder + "\\b.bin", std::string(3000, 'b'));
        drive.write(kFolder + "\\c.bin", "ccc");
        ASSERT_TRUE(packFolder(drive.files(), kFolder, kArchive, {format, QStringLiteral("Keep me"), false}).ok());
        const std::string before = drive.read(kArchive);
        drive.write("C:\\new.bin", "brand new");

        ASSERT_TRUE(addToArchive(drive.files(), kArchive, "C:\\new.bin", "A/ONE.BIN").ok());
        ASSERT_TRUE(addToArchive(drive.files(), kArchive, "C:\\new.bin", "data\\added.bin").ok());
        const Result<PodDirectory> listing = ListPOD(drive.files(), kArchive);
        ASSERT_TRUE(listing.ok());
        EXPECT_EQ(listing->comment, "Keep me");
        EXPECT_EQ(names(*listing), (std::vector<std::string>{"A\\ONE.BIN", "b.bin", "c.bin", "data\\added.bin"}));
        const std::string after = drive.read(kArchive);
        const std::vector<std::string> data = {"brand new", std::string(3000, 'b'), "ccc", "brand new"};
        for (size_t row = 0; row < data.size(); ++row) {
            const PodEntry entry = listing->entries[row];
            EXPECT_EQ(after.substr(size_t(entry.start), size_t(entry.size)), data[row]) << row;
        }
        EXPECT_TRUE(checkArchive(drive.files(), kArchive).fine())
            << checkArchive(drive.files(), kArchive).summary().toStdString();
        if (format == PodFormat::Pod2) {
            EXPECT_EQ(field(after, 96 + 20 * 1 + 12), field(before, 96 + 20 * 1 + 12)) << "b.bin keeps its timestamp";
        }

        // The names refused are the typed names' rules; a refusal leaves the archive as it was.
        const std::string kept = drive.read(kArchive);
        EXPECT_NE(addToArchive(drive.files(), kArchive, "C:\\new.bin", "C:evil.bin")
                      .failure()
                      .message.indexOf("would leave the extraction folder"),
                  -1);
        EXPECT_FALSE(addToArchive(drive.files(), kArchive, "C:\\missing.bin", "x.bin").ok());
        EXPECT_EQ(drive.read(kArchive), kept);
    }
}

TEST(ArchiveUpdate, removeDropsOneEntryAndRefusesUnknownNamesAndTheLastEntry) {
    TempDrive drive;
    PodWriter pod;
    pod.comment("Stock").add("A.BIN", "alpha").add("SUB\\B.BIN", "bravo").add("C.BIN", "charlie");
    drive.write(kArchive, pod.pod1());
    ASSERT_TRUE(removeFromArchive(drive.files(), kArchive, "sub/b.bin").ok());
    PodWriter expected;
    expected.comment("Stock").add("A.BIN", "alpha").add("C.BIN", "charlie");
    EXPECT_EQ(drive.read(kArchive), expected.pod1()) << "the same bytes a fresh two-entry archive has";

    EXPECT_NE(removeFromArchive(drive.files(), kArchive, "NOPE.BIN").failure().message.indexOf("no file named"), -1);
    ASSERT_TRUE(removeFromArchive(drive.files(), kArchive, "a.bin").ok());
    EXPECT_NE(removeFromArchive(drive.files(), kArchive, "C.BIN").failure().message.indexOf("only file"), -1);
    EXPECT_EQ(names(*ListPOD(drive.files(), kArchive)), std::vector<std::string>{"C.BIN"});
}
