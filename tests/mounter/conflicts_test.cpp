#include "mounter/conflicts.h"
#include "mounter/mounted_archives.h"

#include "pod_writer.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::PodWriter;
using korvel::testing::TempDrive;

namespace {

const std::string kGame = "C:\\Games\\MTM2";

// Five mounted rows: a POD1 add-on, a missing archive, a POD2 archive, a damaged one and an
// archive outside the game folder. The add-on and the POD2 archive hold X (same bytes), Y (other
// bytes of the same size) and Z (same bytes); the outside archive holds X at another size and Y as
// the add-on has it.
class Conflicts : public ::testing::Test {
protected:
    void SetUp() override {
        PodWriter a, b, c;
        a.add("DATA\\X.BIN", "same").add("Data/y.bin", "one").add("Z.BIN", "zz").add("A_ONLY.BIN", "a");
        b.add("data\\x.bin  ", "same").add("DATA\\Y.BIN", "two").add("z.bin", "zz").add("B_ONLY.BIN", "b");
        c.add("data\\x.bin", "longer").add(" data\\y.bin", "one");
        m_drive.write(kGame + "\\ADDON\\A.POD", a.pod1());
        m_drive.write(kGame + "\\B.POD", b.pod2());
        m_drive.write(kGame + "\\BAD.POD", PodWriter().add("Q.BIN", "q").count(99999).pod1());
        m_drive.write("C:\\Elsewhere\\C.POD", c.pod1());
    }

    std::string holdersText(const ConflictReport& report, const std::string& name) {
        for (const ConflictPath& path : report.paths) {
            if (conflictKey(path.name) != conflictKey(name))
                continue;
            std::string text = path.name + (path.identical ? " identical:" : " differs:");
            for (const ConflictHolder& holder : path.holders)
                text += " " + std::to_string(holder.archive) + "/" + std::to_string(holder.size) +
                        (sameContent(holder, path.holders.front()) ? "=" : "");
            return text;
        }
        return "not a conflict";
    }

    TempDrive m_drive;
    std::vector<std::string> m_mounted = {"ADDON\\A.POD", "MISSING.POD", "B.POD", "BAD.POD", "C:\\Elsewhere\\C.POD"};
};

} // namespace

TEST(ConflictKey, foldsCaseSeparatorsAndOuterBlanksOnly) {
    EXPECT_EQ(conflictKey("  data/Sub\\caf\xe9.bin "), "DATA\\SUB\\CAF\xc9.BIN");
    EXPECT_NE(conflictKey("A B.BIN"), conflictKey("AB.BIN"));
    EXPECT_NE(conflictKey("X.BIN."), conflictKey("X.BIN"));
}

TEST_F(Conflicts, listsEveryPathTwoMountedArchivesHoldWithItsHoldersInMountOrder) {
    ConflictFinder finder(m_drive.files());
    const Result<ConflictReport> report = finder.find(kGame, m_mounted);
    ASSERT_TRUE(report.ok()) << report.failure().message.toStdString();
    ASSERT_EQ(report->paths.size(), 3u);
    EXPECT_EQ(holdersText(*report, "X"), "not a conflict");
    EXPECT_EQ(holdersText(*report, "DATA\\X.BIN"), "DATA\\X.BIN differs: 0/4= 2/4= 4/6");
    EXPECT_EQ(holdersText(*report, "data\\y.bin"), "Data/y.bin differs: 0/3= 2/3 4/3=");
    EXPECT_EQ(holdersText(*report, "Z.BIN"), "Z.BIN identical: 0/2= 2/2=");
    EXPECT_EQ(report->paths[0].name, "DATA\\X.BIN") << "sorted by the folded path";

    const auto& rows = report->archives;
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_EQ(rows[0].state, MountedArchiveState::Listed);
    EXPECT_EQ(rows[0].entryCount, 4);
    EXPECT_EQ(rows[0].sharedCount, 3);
    EXPECT_EQ(rows[0].sharedWith, (std::vector<std::pair<int, int>>{{2, 3}, {4, 2}}));
    EXPECT_EQ(rows[0].paths.size(), 3u);
    EXPECT_EQ(rows[1].state, MountedArchiveState::NotFound);
    EXPECT_EQ(rows[2].archivePath, kGame + "\\B.POD");
    EXPECT_EQ(rows[3].state, MountedArchiveState::Damaged);
    EXPECT_NE(rows[3].error.indexOf("unable to read this POD"), -1);
    EXPECT_EQ(rows[4].sharedWith, (std::vector<std::pair<int, int>>{{0, 2}, {2, 2}}));
    EXPECT_EQ(finder.listingsRead(), 4);
    EXPECT_EQ(finder.entriesHashed(), 7) << "X of the 6-byte holder is never read";
}

TEST_F(Conflicts, aReorderRereadsNothingAndAChangedArchiveIsReadAgain) {
    ConflictFinder finder(m_drive.files());
    ASSERT_TRUE(finder.find(kGame, m_mounted).ok());
    std::vector<std::string> reordered = {"C:\\Elsewhere\\C.POD", "B.POD", "MISSING.POD", "ADDON\\A.POD", "BAD.POD"};
    Result<ConflictReport> report = finder.find(kGame, reordered);
    ASSERT_TRUE(report.ok());
    EXPECT_EQ(finder.listingsRead(), 0);
    EXPECT_EQ(finder.entriesHashed(), 0);
    EXPECT_EQ(holdersText(*report, "DATA\\X.BIN"), "data\\x.bin differs: 0/6 1/4 3/4");
    EXPECT_EQ(holdersText(*report, "data\\y.bin"), "data\\y.bin differs: 0/3= 1/3 3/3=");
    EXPECT_EQ(report->archives[0].sharedWith, (std::vector<std::pair<int, int>>{{1, 2}, {3, 2}}));

    m_drive.write(kGame + "\\B.POD", PodWriter().add("DATA\\X.BIN", "same").pod2());
    report = finder.find(kGame, reordered);
    ASSERT_TRUE(report.ok());
    EXPECT_EQ(finder.listingsRead(), 1);
    EXPECT_EQ(holdersText(*report, "DATA\\X.BIN"), "data\\x.bin differs: 0/6 1/4 3/4");
    const std::vector<ConflictHolder>& x = report->paths.front().holders;
    EXPECT_TRUE(sameContent(x[1], x[2])) << "the new B.POD's X was read and matches A.POD's";
    EXPECT_EQ(holdersText(*report, "Z.BIN"), "not a conflict");

    m_mounted.push_back("ADDON\\A.POD");
    report = finder.find(kGame, m_mounted);
    ASSERT_TRUE(report.ok());
    EXPECT_EQ(holdersText(*report, "A_ONLY.BIN"), "A_ONLY.BIN identical: 0/1= 5/1=") << "mounted twice";

    EXPECT_EQ(finder.find(kGame, m_mounted, [](qint64, qint64) { return false; }).failure().message, cancelledText());
}

TEST_F(Conflicts, checkReportsEveryMountedArchiveInMountOrder) {
    std::vector<std::pair<qint64, qint64>> progress;
    const Result<std::vector<MountedCheck>> checks =
        checkMountedArchives(m_drive.files(), kGame, m_mounted, [&](qint64 done, qint64 total) {
            progress.emplace_back(done, total);
            return true;
        });
    ASSERT_TRUE(checks.ok());
    std::vector<std::string> summaries;
    for (const MountedCheck& row : *checks)
        summaries.push_back(row.storedPath + ": " + row.check.summary().left(22).toStdString());
    EXPECT_EQ(summaries,
              (std::vector<std::string>{"ADDON\\A.POD: Fine", "MISSING.POD: Not found", "B.POD: Wrong checksum: header",
                                        "BAD.POD: Sorry, but Korvel was ", "C:\\Elsewhere\\C.POD: Fine"}));
    EXPECT_EQ(progress.front(), std::make_pair(qint64(0), qint64(5)));
    EXPECT_EQ(progress.back(), std::make_pair(qint64(5), qint64(5)));
}
