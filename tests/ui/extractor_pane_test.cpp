#include "pod/widgets/extractor_pane.h"
#include "pod/widgets/file_browser.h"
#include "pod/widgets/listing_model.h"

#include "pod/extraction.h"
#include "pod/pod_directory.h"
#include "pod_writer.h"
#include "ui/recent_archives.h"
#include "ui/widgets/gold_button.h"
#include "window_fixture.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QProgressBar>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

using korvel::ExtractorPane;
using korvel::testing::PodWriter;

namespace {

const std::string kGame = "C:\\Games\\MTM2";

struct PaneFixture : korvel::testing::WindowFixture {
    explicit PaneFixture(const std::string& autosort = "1") {
        set(korvel::settings::kAutosort, autosort);
        drive.makeFolder(kGame);
        pane = std::make_unique<ExtractorPane>(drive.services(), session, store);
        recent = std::make_unique<korvel::ui::RecentArchives>(drive.files(), *pane);
        pane->setRecentArchives(recent.get());
        pane->startBrowsingAtGameFolder();
        pane->prepareExtractionProgress();
        pane->show();
    }
    template <typename T> T* child(const char* name) const { return pane->findChild<T*>(QString::fromLatin1(name)); }
    QString text(const char* name) const { return child<QLineEdit>(name)->text(); }
    QTableView* list() const { return child<QTableView>("lstFiles"); }
    QString cell(int row, int column) const { return pane->model().index(row, column).data().toString(); }
    void selectRows(std::initializer_list<int> rows) {
        list()->clearSelection();
        for (int row : rows)
            list()->selectionModel()->select(pane->model().index(row, 0),
                                             QItemSelectionModel::Select | QItemSelectionModel::Rows);
        list()->selectionModel()->setCurrentIndex(pane->model().index(*rows.begin(), 0), QItemSelectionModel::NoUpdate);
    }
    void listTrucks() {
        drive.write(kGame + "\\TRUCKS.POD", PodWriter()
                                                .comment("My trucks")
                                                .add("b.trk", "truck version 4")
                                                .add("A.BIN", std::string(1000, 'a'))
                                                .add("ART\\C.RAW", "ccc")
                                                .pod1());
        ASSERT_TRUE(pane->ListPOD(kGame + "\\", "TRUCKS.POD"));
    }
    QStringList messages() { return drive.dialogs().messageTexts(); }

    std::unique_ptr<ExtractorPane> pane;
    std::unique_ptr<korvel::ui::RecentArchives> recent;
};

} // namespace

TEST(ExtractorPane, listingFillsTheBoxesRowsStatusLineAndRecentList) {
    PaneFixture f;
    f.drive.makeFolder(kGame + "\\ART");
    f.listTrucks();
    EXPECT_EQ(f.text("txtName"), "My trucks");
    EXPECT_EQ(f.text("txtType"), "Truck");
    EXPECT_EQ(f.text("txtTotal"), "3");
    EXPECT_EQ(f.text("txtSize"), "1,222");
    ASSERT_EQ(f.pane->model().rowCount(), 3);
    // Autosort on: by name, without regard to case.
    EXPECT_EQ(f.cell(0, 0), "A.BIN");
    EXPECT_EQ(f.cell(1, 0), "ART\\C.RAW");
    EXPECT_EQ(f.cell(2, 0), "b.trk");
    EXPECT_TRUE(f.child<QLabel>("lblExtract")->text().startsWith("Contents of TRUCKS.POD listed in "));
    EXPECT_EQ(f.recent->entries().value(0), "C:\\Games\\MTM2\\TRUCKS.POD");
    EXPECT_EQ(f.pane->listedArchive(), kGame + "\\TRUCKS.POD");
    // The folder list: the chain down to the archive's folder, then its subfolders, without "." and "..".
    QStringList folders;
    for (int i = 0; i < f.child<QListWidget>("dirBox")->count(); ++i)
        folders << f.child<QListWidget>("dirBox")->item(i)->text().trimmed();
    EXPECT_EQ(folders, QStringList({"C:\\", "Games", "MTM2", "ART"}));
    PaneFixture unsorted("0");
    unsorted.listTrucks();
    EXPECT_EQ(unsorted.cell(0, 0), "b.trk");
}

TEST(ExtractorPane, extractButtonWritesTheSelectedRowsWithProgress) {
    PaneFixture f;
    f.listTrucks();
    f.drive.write(kGame + "\\keep.txt", "x"); // the folder already holds a file
    f.selectRows({0, 1, 2});
    QTest::mouseClick(f.child<korvel::ui::GoldButton>("cmdExtract"), Qt::LeftButton);
    EXPECT_EQ(f.drive.read(kGame + "\\A.BIN"), std::string(1000, 'a'));
    EXPECT_EQ(f.drive.read(kGame + "\\ART\\C.RAW"), "ccc");
    EXPECT_EQ(f.drive.read(kGame + "\\b.trk"), "truck version 4");
    EXPECT_EQ(f.child<QProgressBar>("prgExtract")->value(), 3);
    EXPECT_TRUE(f.child<QLabel>("lblExtract")->text().startsWith("3 files (1,018 bytes) extracted in "));
    EXPECT_FALSE(f.pane->archiveBusy());
    EXPECT_TRUE(f.recent->combo()->isEnabled());
    EXPECT_TRUE(f.messages().isEmpty());
    f.drive.remove(kGame + "\\A.BIN"); // Enter on the list extracts again
    f.selectRows({0});
    QTest::keyClick(f.list(), Qt::Key_Return);
    EXPECT_TRUE(f.drive.exists(kGame + "\\A.BIN"));
    f.drive.remove(kGame + "\\A.BIN"); // with nothing selected the button does nothing
    f.list()->clearSelection();
    QTest::mouseClick(f.child<korvel::ui::GoldButton>("cmdExtract"), Qt::LeftButton);
    EXPECT_FALSE(f.drive.exists(kGame + "\\A.BIN"));
}

TEST(ExtractorPane, corruptOrUnreadableArchivesAreReportedAndTheWindowHeldUntilTheNextListing) {
    PaneFixture f("0");
    PodWriter writer;
    writer.add("GOOD.BIN", "good").add({"BAD.BIN", "bad", std::nullopt, 1 << 20});
    f.drive.write(kGame + "\\BAD.POD", writer.pod1());
    f.drive.write(kGame + "\\keep.txt", "x");
    ASSERT_TRUE(f.pane->ListPOD(kGame + "\\", "BAD.POD"));
    f.selectRows({0, 1});
    QTest::mouseClick(f.child<korvel::ui::GoldButton>("cmdExtract"), Qt::LeftButton);
    EXPECT_EQ(f.drive.dialogs().lastMessage().title, "Read Error");
    EXPECT_EQ(f.drive.dialogs().lastMessage().text, "This POD appears to be corrupt!");
    EXPECT_EQ(f.drive.read(kGame + "\\GOOD.BIN"), "good"); // rows before the bad one are written
    EXPECT_FALSE(f.drive.exists(kGame + "\\BAD.BIN"));
    EXPECT_TRUE(f.pane->archiveBusy());
    EXPECT_FALSE(f.child<korvel::ui::GoldButton>("cmdExtract")->isEnabled());
    EXPECT_FALSE(f.child<QListWidget>("fileBox")->isEnabled());
    // The next listing finds the archive still held, reports it and lets go; the one after works.
    EXPECT_FALSE(f.pane->ListPOD(kGame + "\\", "BAD.POD"));
    EXPECT_EQ(f.drive.dialogs().lastMessage().title, "Unexpected Error");
    EXPECT_FALSE(f.pane->archiveBusy());
    EXPECT_TRUE(f.pane->ListPOD(kGame + "\\", "BAD.POD"));
    // An unreadable archive clears the rows and keeps the boxes.
    f.drive.write(kGame + "\\BROKEN.POD", PodWriter().add("X.BIN", "x").magic("POD3").pod2());
    EXPECT_FALSE(f.pane->ListPOD(kGame + "\\", "BROKEN.POD"));
    EXPECT_EQ(f.drive.dialogs().lastMessage().text,
              "Sorry, but Korvel was unable to read this POD. Please note that POD3 files are not yet supported.");
    EXPECT_EQ(f.pane->model().rowCount(), 0);
    EXPECT_EQ(f.text("txtTotal"), "2");
}

TEST(ExtractorPane, recentListKeepsTheEightArchivesListedLastNewestFirstEachOnce) {
    PaneFixture f;
    for (int i = 1; i <= 9; ++i) {
        const std::string name = "P" + std::to_string(i) + ".POD";
        f.drive.write(kGame + "\\" + name, PodWriter().add("A.BIN", "a").pod1());
        // The drive letter is shown upper-cased, however the folder was written.
        ASSERT_TRUE(f.pane->ListPOD(i == 2 ? "c:\\Games\\MTM2\\" : kGame + "\\", name));
    }
    ASSERT_TRUE(f.pane->ListPOD(kGame + "\\", "P5.POD")); // listed again: moves to the top
    EXPECT_EQ(f.recent->entries(),
              QStringList({"C:\\Games\\MTM2\\P5.POD", "C:\\Games\\MTM2\\P9.POD", "C:\\Games\\MTM2\\P8.POD",
                           "C:\\Games\\MTM2\\P7.POD", "C:\\Games\\MTM2\\P6.POD", "C:\\Games\\MTM2\\P4.POD",
                           "C:\\Games\\MTM2\\P3.POD", "C:\\Games\\MTM2\\P2.POD"}));
    EXPECT_EQ(f.recent->combo()->currentIndex(), 0);
}

TEST(ExtractorPane, massExtractionUnpacksEveryArchivePastUnreadableOnesAndStopsAtAMissingOne) {
    PaneFixture f("0");
    f.drive.write(kGame + "\\A.POD", PodWriter().add("ART\\A.RAW", "first").add("SHARED.TXT", "a").pod1());
    f.drive.write(kGame + "\\B.POD", PodWriter().add("X.BIN", "x").magic("POD3").pod2());
    f.drive.write(kGame + "\\C.POD", PodWriter().add("SHARED.TXT", "c").pod2());
    f.drive.write(kGame + "\\D.POD", PodWriter().add("D.TXT", "d").pod1());
    f.drive.write(kGame + "\\E.POD", PodWriter().add("E.TXT", "e").pod1());
    f.drive.write(kGame + "\\ART\\seed", "s");
    f.pane->startBrowsingAtGameFolder();
    f.drive.dialogs().answer(korvel::MessageAnswer::Yes);
    // While the report on B.POD is up, D.POD is deleted elsewhere.
    f.drive.dialogs().whileShown = [&](const korvel::testing::ScriptedDialogs::Shown& shown) {
        if (shown.text.startsWith("Sorry"))
            f.drive.remove(kGame + "\\D.POD");
    };
    f.pane->massExtract();
    const QStringList texts = f.messages();
    ASSERT_EQ(texts.size(), 3);
    EXPECT_EQ(texts[0], "All 5 PODs in \"C:\\Games\\MTM2\" will be extracted. Are you sure you wish to continue?");
    EXPECT_EQ(texts[1],
              "Sorry, but Korvel was unable to read this POD. Please note that POD3 files are not yet supported.");
    EXPECT_EQ(texts[2], "File not found!");
    EXPECT_EQ(f.drive.dialogs().lastMessage().title, "Read Error");
    EXPECT_EQ(f.drive.read(kGame + "\\ART\\A.RAW"), "first");
    EXPECT_EQ(f.drive.read(kGame + "\\SHARED.TXT"), "c"); // the later archive wins
    EXPECT_FALSE(f.drive.exists(kGame + "\\E.TXT"));
    EXPECT_FALSE(f.pane->archiveBusy());
}

TEST(ExtractorPane, contextMenuShowsTheTrackToolsByTheSelectedEntrysSuffix) {
    PaneFixture f("0");
    f.drive.write(kGame + "\\MIX.POD", PodWriter()
                                           .add("map.sit  ", korvel::testing::trackInfoText(18, "1"))
                                           .add("CAR.TRK", "y")
                                           .add("README.TXT", "z")
                                           .pod1());
    ASSERT_TRUE(f.pane->ListPOD(kGame + "\\", "MIX.POD"));
    QMenu* menu = f.pane->fileMenu();
    EXPECT_EQ(menu->defaultAction()->objectName(), "mnuExtract");
    auto visible = [&](const char* name) { return menu->findChild<QAction*>(name)->isVisible(); };
    auto shown = [&](int row) {
        f.selectRows({row});
        f.pane->showFileMenu(f.pane->mapToGlobal(QPoint(10, 10)));
        const std::vector<bool> state{visible("mnuFilesSep1"), visible("mnuConvert"), visible("mnuCompatiblize")};
        menu->hide();
        return state;
    };
    EXPECT_EQ(shown(0), (std::vector<bool>{true, true, false}));
    EXPECT_EQ(shown(1), (std::vector<bool>{true, true, true}));
    EXPECT_EQ(shown(2), (std::vector<bool>{false, false, false}));
    // "to Bomb Tag" writes the digit 5 into the track's information.
    f.drive.write(kGame + "\\TRACK.POD", PodWriter().add("T.TRK", "Track Race Type = 2\r\n").pod1());
    ASSERT_TRUE(f.pane->ListPOD(kGame + "\\", "TRACK.POD"));
    f.selectRows({0});
    menu->findChild<QAction*>("mnuConvertTo_5")->trigger();
    const std::string converted = f.drive.read(kGame + "\\TRACK.POD");
    const size_t marker = converted.find("Track Race Type");
    ASSERT_NE(marker, std::string::npos);
    EXPECT_EQ(converted[marker + 17], '5');
}

TEST(ListingModel, aHundredThousandRowsListSortAndScrollQuickly) {
    korvel::PodDirectory listing;
    for (qint32 i = 0; i < 100000; ++i)
        listing.entries.push_back(
            {"FILE" + std::to_string((i * 7919) % 100000) + ".BIN", 10, 100 + 10 * i, 110 + 10 * i});
    listing.headerCount = 100000;
    korvel::ListingModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QTableView view;
    view.setModel(&model);
    view.resize(600, 400);
    view.show();
    QElapsedTimer clock;
    clock.start();
    model.setListing(std::move(listing), true);
    view.scrollToBottom();
    view.scrollToTop();
    view.repaint();
    EXPECT_LT(clock.elapsed(), 5000); // a Debug build on a busy machine; well under a second in Release
    ASSERT_EQ(model.rowCount(), 100000);
    EXPECT_EQ(model.index(0, 0).data().toString(), "FILE0.BIN");
    EXPECT_EQ(model.index(99999, 0).data().toString(), "FILE99999.BIN");
}
