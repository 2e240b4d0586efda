#include "cli_run.h"
#include "pod_writer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using namespace korvel::testing;

namespace {

class CliArchive : public CliFolder {
protected:
    QString trucks(const QString& name = "TRUCKS.POD") {
        PodWriter pod;
        pod.comment("Stock trucks").add("TRUCK\\B.TRK", "bravo").add("ART\\A.RAW", std::string(1200, 'a'));
        return write(name, pod.pod1());
    }
};

TEST_F(CliArchive, listPrintsTheInformationLinesAndTabSeparatedRows) {
    CliRun run = succeeds({"list", trucks()});
    EXPECT_EQ(run.out.toStdString(), "POD Name: Stock trucks\nPOD Size: 1,369\nPOD Type: Truck\n"
                                     "Editor Used: TrackEd\nTotal Files: 2\n\n"
                                     "TRUCK\\B.TRK\t5\t164\t169\nART\\A.RAW\t1,200\t169\t1,369\n");
    run = cli({"list", "--sort", path("TRUCKS.POD")});
    EXPECT_TRUE(run.out.endsWith("ART\\A.RAW\t1,200\t169\t1,369\nTRUCK\\B.TRK\t5\t164\t169\n"));
    EXPECT_EQ(cli({"list", path("MISSING.POD")}).status, 1);
}

TEST_F(CliArchive, listJsonCarriesTheBoxTextsAndNumericEntries) {
    PodWriter pod;
    pod.comment("Caf\xe9 track").add("T.SIT", trackInfoText(12, "3")).add("W\xc9.BIN", "w");
    const CliRun run = succeeds({"list", "--json", write("RALLY.POD", pod.pod2())});
    QJsonObject object = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_TRUE(object.take("status").toString().startsWith("Contents of RALLY.POD listed in "));
    EXPECT_EQ(object, QJsonDocument::fromJson(R"x({"archive":"RALLY.POD","comment":"Caf\u00e9 track",
        "editor":"TrackEd","entries":[{"end":280,"name":"T.SIT","size":131,"start":149},
        {"end":281,"name":"W\u00c9.BIN","size":1,"start":280}],"format":"POD2","size":281,"total":2,
        "type":"Rally (POD2)"})x")
                          .object())
        << run.out.toStdString();
}

TEST_F(CliArchive, extractMakesFoldersReplacesFilesAndPrintsTheSummary) {
    const QString archive = trucks();
    write("out/TRUCK/B.TRK", std::string(50, '#'));
    CliRun run = succeeds({"extract", archive, "--to", path("out")});
    EXPECT_TRUE(QRegularExpression("^2 files \\(1,205 bytes\\) extracted in [0-9.]+s!\n$").match(run.out).hasMatch())
        << run.out.toStdString();
    EXPECT_EQ(read("out/TRUCK/B.TRK"), "bravo");
    EXPECT_EQ(read("out/ART/A.RAW").size(), 1200);

    run = succeeds({"extract", archive, "--to", path("one"), "truck\\b.trk"});
    EXPECT_TRUE(run.out.startsWith("1 files (5 bytes)"));
    EXPECT_FALSE(QFile::exists(path("one/ART")));
    EXPECT_EQ(cli({"extract", archive, "--to", path("one"), "NOPE.BIN"}).status, 1);
}

TEST_F(CliArchive, archiveCommandsStartWithoutLoadingQtNetworkWhichOnlyTheTrackUpdateLoads) {
#ifndef Q_OS_LINUX
    GTEST_SKIP() << "the dynamic loader's trace is read on Linux";
#else
    const QString archive = trucks();
    const QStringList trace{"LD_DEBUG=libs"};
    const std::vector<QStringList> commands = {{"--version"},
                                               {"list", archive},
                                               {"list", "--json", archive},
                                               {"extract", archive, "--to", path("out")},
                                               {"export", archive}};
    for (const QStringList& command : commands) {
        const CliRun run = cli(command, trace);
        EXPECT_EQ(run.status, 0) << command.join(' ').toStdString();
        EXPECT_TRUE(run.err.contains("calling init")) << "the loader's trace is read";
        EXPECT_FALSE(run.err.contains("libQt6Network")) << command.join(' ').toStdString() << " loads Qt Network";
    }
    // The download module brings it in, and only there (nothing listens at the address).
    const CliRun update = cli({"tracks", "update"}, trace);
    EXPECT_EQ(update.status, 1);
    EXPECT_TRUE(update.err.contains("korvel_track_fetch")) << update.err.right(2000).toStdString();
    EXPECT_TRUE(update.err.contains("libQt6Network"));
#endif
}

TEST_F(CliArchive, exportWritesTheTextFileBesideTheArchive) {
    const CliRun run = succeeds({"export", trucks("A.B.POD")});
    EXPECT_EQ(run.out.trimmed(), QDir::toNativeSeparators(path("A.txt")) + " successfully created!");
    EXPECT_TRUE(read("A.txt").startsWith("// Stock trucks\r\nTRUCK\\B.TRK"));
    EXPECT_EQ(cli({"export", path("NONE.POD")}).status, 1);
}

TEST_F(CliArchive, convertAndCompatiblizePatchTheNamedEntryInPlace) {
    PodWriter pod;
    pod.add("T.SIT", trackInfoText(18, "2")).add("K.TRK", "truck\r\nversion =4\r\n");
    const std::string before = pod.pod1();
    const QString archive = write("MIX.POD", before);
    CliRun run = succeeds({"convert", archive, "t.sit", "bomb-tag"});
    run = succeeds({"compatiblize", archive, "K.TRK"});
    EXPECT_EQ(run.out.trimmed(), "The selected truck should now be compatible with the original 4x4 Evolution.");
    const QByteArray after = read("MIX.POD");
    ASSERT_EQ(after.size(), qsizetype(before.size()));
    EXPECT_TRUE(after.contains("Track Race Type\r\n5\r\n"));
    EXPECT_TRUE(after.contains("version =6"));
    EXPECT_EQ(cli({"compatiblize", archive, "NONE.TRK"}).status, 1);
    EXPECT_EQ(cli({"convert", archive, "NONE.SIT", "rally"}).status, 1);
    EXPECT_EQ(read("MIX.POD"), after);
}

TEST_F(CliArchive, paletteShowsOneLineOrJsonTriplePerColour) {
    std::string bytes;
    for (int i = 0; i < 768; ++i)
        bytes += char(i % 256);
    const CliRun run = succeeds({"palette", write("P.ACT", bytes)});
    const QStringList lines = run.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 256);
    EXPECT_EQ(lines[0] + "|" + lines[255], "C0: (0, 1, 2)|C255: (255, 0, 1)");
    const QJsonArray colors = QJsonDocument::fromJson(cli({"palette", "--json", path("P.ACT")}).out.toUtf8()).array();
    ASSERT_EQ(colors.size(), 256);
    EXPECT_EQ(colors[10].toArray()[2].toInt(), 12);
}

} // namespace
