#include "cli_run.h"
#include "pod_writer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace korvel::testing;

namespace {

class CliPack : public CliFolder {
protected:
    void SetUp() override {
        write("mod/data/One.bin", "one");
        write("mod/Two.BIN", std::string(500, '2'));
    }
};

TEST_F(CliPack, packListCheckAddAndRemoveAnArchive) {
    CliRun run = succeeds({"pack", path("mod"), "--to", path("NEW.POD"), "--format", "pod2", "--comment", "My mod"});
    EXPECT_EQ(run.out.toStdString(), "Packed 2 files into " + path("NEW.POD").toStdString() + " (660 bytes).\n");
    run = cli({"list", path("NEW.POD")});
    EXPECT_TRUE(run.out.startsWith("POD Name: My mod\nPOD Size: 660\nPOD Type: Other (POD2)\n"))
        << run.out.toStdString();
    run = cli({"check", path("NEW.POD")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.toStdString(), path("NEW.POD").toStdString() + "\tFine\n");

    const QByteArray packed = read("NEW.POD");
    run = cli({"pack", path("mod"), "--to", path("NEW.POD")});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.contains("already exists; use --force")) << run.err.toStdString();
    EXPECT_EQ(read("NEW.POD"), packed);

    write("extra.txt", "extra");
    run = succeeds({"add", path("NEW.POD"), path("extra.txt"), "--as", "docs/extra.txt"});
    EXPECT_EQ(run.out.trimmed(), "Stored docs/extra.txt; the archive holds 3 files.");
    run = succeeds({"remove", path("NEW.POD"), "TWO.bin"});
    EXPECT_EQ(run.out.trimmed(), "Removed TWO.bin; the archive holds 2 files.");

    run = succeeds({"pack", path("mod"), "--to", path("NEW.POD"), "--force"});
    EXPECT_TRUE(cli({"list", path("NEW.POD")}).out.contains("POD Type: Other\n"));
}

TEST_F(CliPack, checkReportsAProblemAsJsonWithStatusOne) {
    PodWriter pod;
    pod.add("..\\EVIL.BIN", "e");
    write("BAD.POD", pod.pod1());
    const CliRun run = cli({"check", "--json", path("BAD.POD")});
    EXPECT_EQ(run.status, 1);
    const QJsonObject object = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_EQ(object.value("fine").toBool(true), false);
    EXPECT_EQ(object.value("problems").toArray().at(0).toObject(),
              (QJsonObject{{"kind", "unsafe-names"}, {"text", "Unsafe entry names: ..\\EVIL.BIN"}}));
    EXPECT_EQ(cli({"check", path("NONE.POD")}).out.trimmed(), path("NONE.POD") + "\tNot found");
}

TEST_F(CliPack, mounterConflictsAndCheckReportTheMountedArchives) {
    PodWriter a, b;
    a.add("DATA\\X.BIN", "same").add("A.BIN", "a");
    b.add("data/x.bin", "same").add("B.BIN", "b");
    write("game/A.POD", a.pod1());
    write("game/ADDON/B.POD", b.pod1());
    write("game/POD.INI", "3\r\nA.POD\r\nADDON\\B.POD\r\nGONE.POD\r\n");
    const QByteArray ini = read("game/POD.INI");

    CliRun run = succeeds({"mounter", "--game", path("game"), "conflicts"});
    EXPECT_EQ(run.out.toStdString(), "1 paths are held by more than one mounted archive.\n\n"
                                     "DATA\\X.BIN\tidentical\n"
                                     "\tloaded earliest\t1\tA.POD\t4 bytes\n"
                                     "\tloaded later\t2\tADDON\\B.POD\t4 bytes\tidentical\n\n"
                                     "Archives in mount order:\n"
                                     "1\tA.POD\t1 of 2 files also in ADDON\\B.POD (1)\n"
                                     "2\tADDON\\B.POD\t1 of 2 files also in A.POD (1)\n"
                                     "3\tGONE.POD\tNot found\n");
    EXPECT_FALSE(run.out.contains("wins"));
    const QJsonObject report =
        QJsonDocument::fromJson(cli({"mounter", "--game", path("game"), "conflicts", "--json"}).out.toUtf8()).object();
    const QJsonObject path0 = report.value("paths").toArray().at(0).toObject();
    EXPECT_EQ(path0.value("name").toString(), "DATA\\X.BIN");
    EXPECT_TRUE(path0.value("identical").toBool());
    EXPECT_EQ(path0.value("holders").toArray().at(1).toObject().value("row").toInt(), 2);
    EXPECT_EQ(report.value("archives").toArray().at(2).toObject().value("state").toString(), "not-found");

    run = cli({"mounter", "--game", path("game"), "check"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out.toStdString(), "A.POD\tFine\nADDON\\B.POD\tFine\nGONE.POD\tNot found\n");
    write("game/POD.INI", "2\r\nA.POD\r\nADDON\\B.POD\r\n");
    EXPECT_EQ(cli({"mounter", "--game", path("game"), "check", "--json"}).status, 0);
    EXPECT_EQ(cli({"mounter", "--game", path("game"), "conflicts", "EXTRA"}).status, 2);
}

} // namespace
