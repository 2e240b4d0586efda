#include "ui/recent_archives.h"
#include "ui/widgets/gold_button.h"
#include "window_fixture.h"

#include <QComboBox>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace {

struct RecentFixture {
    RecentFixture() : recent(drive.files(), hooks) {}
    korvel::testing::TempDrive drive;
    korvel::testing::RecordingHooks hooks;
    korvel::ui::RecentArchives recent;
};

} // namespace

TEST(RecentArchives, rememberPutsTheArchiveFirstOnceAndKeepsEight) {
    RecentFixture f;
    f.recent.setEntries({"c:\\games\\A.POD", "C:\\GAMES\\B.POD"});
    f.recent.remember("c:\\games\\", "A.POD");
    EXPECT_EQ(f.recent.entries(), QStringList({"C:\\games\\A.POD", "C:\\GAMES\\B.POD"}));
    f.recent.remember("C:\\games\\", "A.POD"); // the same text now: replaced, not doubled
    EXPECT_EQ(f.recent.entries().size(), 2);
    for (int i = 0; i < 10; ++i)
        f.recent.remember("C:\\x\\", std::to_string(i) + ".POD");
    EXPECT_EQ(f.recent.entries().size(), 8);
    EXPECT_EQ(f.recent.entries().front(), "C:\\x\\9.POD");
    EXPECT_EQ(f.recent.combo()->currentIndex(), 0);
}

TEST(RecentArchives, choosingListsAnotherArchiveAndRemoveSelectsTheFirst) {
    RecentFixture f;
    f.recent.setEntries({"C:\\A\\ONE.POD", "C:\\B\\TWO.POD", "C:\\C\\THREE.POD"});
    f.hooks.current = "C:\\A\\ONE.POD";
    emit f.recent.combo()->activated(0);
    EXPECT_TRUE(f.hooks.listed.empty());
    emit f.recent.combo()->activated(1);
    EXPECT_EQ(f.hooks.listed, std::vector<std::string>{"C:\\B\\TWO.POD"});

    f.recent.combo()->setCurrentIndex(2);
    QTest::mouseClick(f.recent.removeButton(), Qt::LeftButton);
    EXPECT_EQ(f.recent.entries(), QStringList({"C:\\A\\ONE.POD", "C:\\B\\TWO.POD"}));
    EXPECT_EQ(f.recent.combo()->currentIndex(), 0);
    EXPECT_EQ(f.hooks.listed.size(), 1u); // removing lists nothing
}

TEST(RecentArchives, enterListsATypedPathOnlyWhenItExistsAndIsNotListed) {
    RecentFixture f;
    f.drive.write("C:\\Games\\TRUCKS.POD", "POD1");
    f.recent.show();
    QLineEdit* edit = f.recent.combo()->lineEdit();
    edit->setText("C:\\Games\\NOPE.POD");
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_TRUE(f.hooks.listed.empty());

    f.hooks.current = "C:\\GAMES\\TRUCKS.POD";
    edit->setText("c:\\games\\trucks.pod");
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_TRUE(f.hooks.listed.empty()); // the same archive, compared in upper case

    f.hooks.current.clear();
    QTest::keyClick(edit, Qt::Key_Enter);
    EXPECT_EQ(f.hooks.listed, std::vector<std::string>{"c:\\games\\trucks.pod"});
    EXPECT_EQ(f.recent.combo()->count(), 0); // typing adds no entry by itself
}
