#include "pod_writer.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using korvel::testing::PodWriter;
using korvel::testing::trackInfoText;

namespace {

struct CliRun {
    int status = -1;
    QString out;
    QString err;
};

CliRun cli(const QStringList& args) {
    QProcess process;
    process.start(QStringLiteral(KORVEL_CLI_PATH), args);
    process.waitForFinished(60000);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

class CliArchive : public ::testing::Test {
protected:
    QString write(const QString& name, const std::string& bytes) {
        const QString path = m_dir.filePath(name);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes.data(), static_cast<qint64>(bytes.size()));
        return path;
    }
    QByteArray read(const QString& name) {
        QFile file(m_dir.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QString path(const QString& name) const { return m_dir.filePath(name); }

    std::string trucks() {
        PodWriter pod;
        pod.comment("Stock trucks").add("TRUCK\\B.TRK", "bravo").add("ART\\A.RAW", std::string(1200, 'a'));
        return pod.pod1();
    }

    QTemporaryDir m_dir;
};

} // namespace

TEST_F(CliArchive, listPrintsTheInformationLinesAndTabSeparatedRows) {
    const QString archive = write("TRUCKS.POD", trucks());
    CliRun run = cli({"list", archive});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_EQ(run.out.toStdString(), "POD Name: Stock trucks\n"
                                     "POD Size: 1,369\n"
                                     "POD Type: Truck\n"
                                     "Editor Used: TrackEd\n"
                                     "Total Files: 2\n"
                                     "\n"
                                     "TRUCK\\B.TRK\t5\t164\t169\n"
                                     "ART\\A.RAW\t1,200\t169\t1,369\n");
    run = cli({"list", "--sort", archive});
    EXPECT_TRUE(run.out.endsWith("ART\\A.RAW\t1,200\t169\t1,369\nTRUCK\\B.TRK\t5\t164\t169\n"));
}

TEST_F(CliArchive, listJsonCarriesTheBoxTextsAndNumericEntries) {
    PodWriter pod;
    pod.comment("Caf\xe9 track").add("T.SIT", trackInfoText(12, "3")).add("W\xc9.BIN", "w");
    CliRun run = cli({"list", "--json", write("RALLY.POD", pod.pod2())});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const QJsonObject object = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_EQ(object["archive"].toString(), "RALLY.POD");
    EXPECT_EQ(object["format"].toString(), "POD2");
    EXPECT_EQ(object["comment"].toString(), QString::fromUtf8("Caf\u00e9 track"));
    EXPECT_EQ(object["type"].toString(), "Rally (POD2)");
    EXPECT_EQ(object["editor"].toString(), "TrackEd");
    EXPECT_EQ(object["total"].toInt(), 2);
    EXPECT_TRUE(object["size"].isDouble());
    EXPECT_TRUE(object["status"].toString().startsWith("Contents of RALLY.POD listed in "));
    const QJsonArray entries = object["entries"].toArray();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[1].toObject()["name"].toString(), QString::fromUtf8("W\u00c9.BIN"));
    EXPECT_EQ(entries[1].toObject()["end"].toInt() - entries[1].toObject()["start"].toInt(), 1);
}

TEST_F(CliArchive, refusesUnreadableArchivesAndBadUsageWithTheirExitCodes) {
    PodWriter pod;
    pod.add(PodWriter::Entry{"X.BIN", "x", 0x7FFFFFFF, std::nullopt});
    CliRun run = cli({"list", write("BAD.POD", pod.pod1())});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err.trimmed(), "Sorry, but Korvel was unable to read this POD. Please note that POD3 files are "
                                 "not yet supported.");
    EXPECT_EQ(cli({"list"}).status, 2);
    EXPECT_EQ(cli({"extract", path("BAD.POD")}).status, 2);
    EXPECT_EQ(cli({"convert", path("BAD.POD"), "X.BIN", "sprint"}).status, 2);
    EXPECT_EQ(cli({"list", "--help"}).status, 0);
    EXPECT_EQ(cli({"list", path("MISSING.POD")}).status, 1);
}

TEST_F(CliArchive, extractMakesFoldersReplacesFilesAndPrintsTheSummary) {
    const QString archive = write("TRUCKS.POD", trucks());
    write("out/TRUCK/B.TRK", std::string(50, '#'));
    CliRun run = cli({"extract", archive, "--to", path("out")});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_TRUE(QRegularExpression("^2 files \\(1,205 bytes\\) extracted in [0-9.]+s!\n$").match(run.out).hasMatch())
        << run.out.toStdString();
    EXPECT_EQ(read("out/TRUCK/B.TRK"), "bravo");
    EXPECT_EQ(read("out/ART/A.RAW").size(), 1200);

    run = cli({"extract", archive, "--to", path("one"), "truck\\b.trk"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.startsWith("1 files (5 bytes)"));
    EXPECT_FALSE(QFile::exists(path("one/ART")));
    EXPECT_EQ(cli({"extract", archive, "--to", path("one"), "NOPE.BIN"}).status, 1);
}

TEST_F(CliArchive, extractStopsAtAnEscapingNameWithoutWritingOutside) {
    PodWriter pod;
    pod.add("OK.BIN", "ok").add("..\\..\\ESCAPED.BIN", "evil");
    CliRun run = cli({"extract", write("EVIL.POD", pod.pod2()), "--to", path("deep/dest")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err.trimmed(), "This POD appears to be corrupt!");
    EXPECT_EQ(read("deep/dest/OK.BIN"), "ok");
    EXPECT_FALSE(QFile::exists(path("ESCAPED.BIN")));
    EXPECT_FALSE(QFile::exists(path("deep/ESCAPED.BIN")));
}

TEST_F(CliArchive, exportWritesTheTextFileBesideTheArchive) {
    CliRun run = cli({"export", write("A.B.POD", trucks())});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_EQ(run.out.trimmed(), QDir::toNativeSeparators(path("A.txt")) + " successfully created!");
    const QByteArray text = read("A.txt");
    EXPECT_TRUE(text.startsWith("// Stock trucks\r\nTRUCK\\B.TRK"));
    EXPECT_TRUE(text.endsWith("\r\n\r\n// Editor Used: TrackEd\r\n// POD Size: 1,369\r\n// POD Type: Truck\r\n"
                              "// Total Files: 2\r\n"));
}

TEST_F(CliArchive, convertAndCompatiblizePatchTheNamedEntryInPlace) {
    PodWriter pod;
    pod.add("T.SIT", trackInfoText(18, "2") + "Track Race Type =2\r\n").add("K.TRK", "truck\r\nversion =4\r\n");
    const std::string before = pod.pod1();
    const QString archive = write("MIX.POD", before);
    CliRun run = cli({"convert", archive, "t.sit", "bomb-tag"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    run = cli({"compatiblize", archive, "K.TRK"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_EQ(run.out.trimmed(), "The selected truck should now be compatible with the original 4x4 Evolution.");
    const QByteArray after = read("MIX.POD");
    ASSERT_EQ(after.size(), static_cast<qsizetype>(before.size()));
    EXPECT_TRUE(after.contains("Track Race Type =5"));
    EXPECT_TRUE(after.contains("version =6"));
    EXPECT_EQ(cli({"compatiblize", archive, "NONE.TRK"}).status, 1);
}

TEST_F(CliArchive, paletteShowsTooltipsOrJsonAndRefusesOtherSizes) {
    std::string bytes(768, '\0');
    for (int i = 0; i < 768; ++i)
        bytes[static_cast<size_t>(i)] = static_cast<char>(i % 256);
    CliRun run = cli({"palette", write("P.ACT", bytes)});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const QStringList lines = run.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 256);
    EXPECT_EQ(lines[0], "C0: (0, 1, 2)");
    EXPECT_EQ(lines[255], "C255: (255, 0, 1)");
    run = cli({"palette", "--json", path("P.ACT")});
    const QJsonArray colors = QJsonDocument::fromJson(run.out.toUtf8()).array();
    ASSERT_EQ(colors.size(), 256);
    EXPECT_EQ(colors[10].toArray()[2].toInt(), 12);
    run = cli({"palette", write("SHORT.ACT", std::string(767, 'x'))});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err.trimmed(), "Unrecognized palette format!");
}
