#include "app_rig.h"
#include "pod/widgets/extractor_pane.h"
#include "pod/widgets/file_browser.h"
#include "pod/widgets/listing_model.h"

#include "pod/extraction.h"
#include "pod/pod_directory.h"
#include "pod_writer.h"
#include "startup/session.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"
#include "ui/main_menus.h"
#include "ui/recent_archives.h"
#include "ui/widgets/gold_button.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QProgressBar>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

using korvel::ExtractorPane;
using korvel::ListingModel;
using korvel::MessageAnswer;
using korvel::MessageIcon;
using korvel::testing::PodWriter;

namespace {

const std::string kGame = "C:\\Games\\MTM2";

// A track-information text whose race-type code (line 18) sits right after the conversion marker.
std::string convertibleTrackInfo(const std::string& code) {
    std::string text;
    for (int i = 0; i < 20; ++i) {
        text += i == 17 ? std::string("Track Race Type") : i == 18 ? code : "line " + std::to_string(i);
        text += "\r\n";
    }
    return text;
}

struct PaneFixture {
    explicit PaneFixture(const std::string& autosort = "1") : store(drive.registry(), drive.dialogs()) {
        session.currentGame = "MTM2";
        session.location = kGame;
        session.configurator = true;
        store.CreateKey(korvel::settings::profileKey("MTM2"));
        store.writeProfile("MTM2", korvel::settings::kAutosort, autosort);
        drive.makeFolder(kGame);
        pane = std::make_unique<ExtractorPane>(drive.services(), session, store);
        recent = std::make_unique<korvel::ui::RecentArchives>(drive.files(), *pane);
        pane->setRecentArchives(recent.get());
        pane->startBrowsingAtGameFolder();
        pane->prepareExtractionProgress();
        pane->show();
    }

    template <typename T> T* child(const char* name) const {
        T* found = pane->findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
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

    korvel::testing::TempDrive drive;
    korvel::SettingsStore store;
    korvel::Session session;
    std::unique_ptr<ExtractorPane> pane;
    std::unique_ptr<korvel::ui::RecentArchives> recent;
};

} // namespace

TEST(ExtractorPane, listingFillsTheBoxesRowsStatusLineAndRecentList) {
    PaneFixture f;
    f.listTrucks();
    EXPECT_EQ(f.text("txtName"), "My trucks");
    EXPECT_EQ(f.text("txtType"), "Truck");
    EXPECT_EQ(f.text("txtEditor"), "TrackEd");
    EXPECT_EQ(f.text("txtTotal"), "3");
    EXPECT_EQ(f.text("txtSize").toStdString(), korvel::AddCommas(double(f.drive.read(kGame + "\\TRUCKS.POD").size())));
    ASSERT_EQ(f.pane->model().rowCount(), 3);
    // Autosort on: by name, without regard to case.
    EXPECT_EQ(f.cell(0, 0), "A.BIN");
    EXPECT_EQ(f.cell(1, 0), "ART\\C.RAW");
    EXPECT_EQ(f.cell(2, 0), "b.trk");
    EXPECT_EQ(f.cell(0, ListingModel::SizeColumn), "1,000");
    EXPECT_EQ(f.list()->currentIndex().row(), 0);
    EXPECT_TRUE(f.child<QLabel>("lblExtract")->text().startsWith("Contents of TRUCKS.POD listed in "));
    EXPECT_EQ(f.recent->entries().value(0), "C:\\Games\\MTM2\\TRUCKS.POD");
    EXPECT_EQ(f.pane->listedArchive(), kGame + "\\TRUCKS.POD");
    EXPECT_EQ(f.pane->browser().path(), kGame);
    EXPECT_EQ(f.child<QListWidget>("fileBox")->item(0)->text(), "TRUCKS.POD");
    EXPECT_FALSE(f.pane->archiveBusy());

    PaneFixture unsorted("0");
    unsorted.listTrucks();
    EXPECT_EQ(unsorted.cell(0, 0), "b.trk");
    EXPECT_EQ(unsorted.cell(2, 0), "ART\\C.RAW");
}

TEST(ExtractorPane, failedListingsClearTheRowsAndKeepTheBoxes) {
    PaneFixture f;
    f.listTrucks();
    f.drive.write(kGame + "\\BROKEN.POD", PodWriter().add("X.BIN", "x").magic("POD3").pod2());
    EXPECT_FALSE(f.pane->ListPOD(kGame + "\\", "BROKEN.POD"));
    EXPECT_EQ(f.drive.dialogs().lastMessage().title, "Read Error");
    EXPECT_EQ(f.drive.dialogs().lastMessage().text, korvel::unreadablePodText());
    EXPECT_EQ(f.pane->model().rowCount(), 0);
    EXPECT_EQ(f.text("txtName"), "My trucks");
    EXPECT_FALSE(f.pane->archiveBusy());

    EXPECT_FALSE(f.pane->ListPOD(kGame + "\\", "MISSING.POD"));
    EXPECT_EQ(f.drive.dialogs().lastMessage().title, "Unexpected Error");
}

TEST(ExtractorPane, extractButtonWritesTheSelectedRowsWithProgress) {
    PaneFixture f;
    f.listTrucks();
    f.drive.write(kGame + "\\keep.txt", "x"); // the folder already holds a file
    f.drive.makeFolder(kGame + "\\ART");
    f.drive.write(kGame + "\\ART\\old.txt", "x");
    f.selectRows({0, 1, 2});
    QTest::mouseClick(f.child<korvel::ui::GoldButton>("cmdExtract"), Qt::LeftButton);

    EXPECT_EQ(f.drive.read(kGame + "\\A.BIN"), std::string(1000, 'a'));
    EXPECT_EQ(f.drive.read(kGame + "\\ART\\C.RAW"), "ccc");
    EXPECT_EQ(f.drive.read(kGame + "\\b.trk"), "truck version 4");
    auto* progress = f.child<QProgressBar>("prgExtract");
    EXPECT_EQ(progress->maximum(), 3);
    EXPECT_EQ(progress->value(), 3);
    EXPECT_TRUE(f.child<QLabel>("lblExtract")->text().startsWith("3 files (1,018 bytes) extracted in "));
    EXPECT_FALSE(f.pane->archiveBusy());
    EXPECT_TRUE(f.child<korvel::ui::GoldButton>("cmdExtract")->isEnabled());
    EXPECT_TRUE(f.recent->combo()->isEnabled());
    EXPECT_TRUE(f.messages().isEmpty());

    // Enter on the list extracts again; with nothing selected the button does nothing.
    f.drive.remove(kGame + "\\A.BIN");
    f.selectRows({0});
    QTest::keyClick(f.list(), Qt::Key_Return);
    EXPECT_TRUE(f.drive.exists(kGame + "\\A.BIN"));
    f.drive.remove(kGame + "\\A.BIN");
    f.list()->clearSelection();
    QTest::mouseClick(f.child<korvel::ui::GoldButton>("cmdExtract"), Qt::LeftButton);
    EXPECT_FALSE(f.drive.exists(kGame + "\\A.BIN"));
}

TEST(ExtractorPane, corruptArchiveStopsTheRunAndHoldsTheWindowUntilTheNextListing) {
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
}

TEST(ExtractorPane, faultsEndSilentlyFromTheButtonAndAreReportedFromTheMenu) {
    // The destination folder exists but holds no ordinary file: making it again fails.
    PaneFixture f;
    f.listTrucks();
    f.drive.makeFolder("C:\\Empty");
    f.pane->browser().setPath("C:\\Empty");
    f.selectRows({0});
    f.pane->extractHere();
    ASSERT_EQ(f.messages().size(), 1);
    EXPECT_EQ(f.drive.dialogs().lastMessage().title, "Unexpected Error");
    EXPECT_FALSE(f.pane->archiveBusy());
    EXPECT_TRUE(f.child<korvel::ui::GoldButton>("cmdExtract")->isEnabled());

    QTest::mouseClick(f.child<korvel::ui::GoldButton>("cmdExtract"), Qt::LeftButton);
    EXPECT_EQ(f.messages().size(), 1);
    EXPECT_TRUE(f.pane->archiveBusy());
    EXPECT_FALSE(f.recent->combo()->isEnabled());
}

TEST(ExtractorPane, extractToAsksForAFolderStartingAtTheGameFolder) {
    PaneFixture f;
    f.listTrucks();
    f.drive.write("C:\\Out\\x.txt", "x");
    f.drive.dialogs().chooseFolder(std::nullopt).chooseFolder(std::string("C:\\Out"));
    f.selectRows({0});
    f.pane->extractTo();
    EXPECT_FALSE(f.drive.exists("C:\\Out\\A.BIN"));
    f.pane->extractTo();
    EXPECT_TRUE(f.drive.exists("C:\\Out\\A.BIN"));
    const auto& asked = f.drive.dialogs().asked();
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(asked[0].title, "Extract to...");
    EXPECT_EQ(asked[0].start, kGame);
}

TEST(ExtractorPane, massExtractionAsksThenUnpacksEveryArchiveIntoTheGameFolder) {
    PaneFixture f;
    f.drive.write(kGame + "\\keep.txt", "x");
    f.drive.write(kGame + "\\ONE.POD", PodWriter().add("ONE.BIN", "1").pod1());
    f.drive.write(kGame + "\\TWO.POD", PodWriter().add("TWO.BIN", "22").pod2());
    f.pane->browser().refreshFiles();
    f.drive.dialogs().answer(MessageAnswer::No).answer(MessageAnswer::Yes);
    f.pane->massExtract();
    const auto& question = f.drive.dialogs().lastMessage();
    EXPECT_EQ(question.text, "All 2 PODs in \"C:\\Games\\MTM2\" will be extracted. Are you sure you wish to continue?");
    EXPECT_EQ(question.title, "Question");
    EXPECT_EQ(question.icon, MessageIcon::Question);
    EXPECT_FALSE(f.drive.exists(kGame + "\\ONE.BIN"));

    f.pane->massExtract();
    EXPECT_EQ(f.drive.read(kGame + "\\ONE.BIN"), "1");
    EXPECT_EQ(f.drive.read(kGame + "\\TWO.BIN"), "22");
    EXPECT_EQ(f.pane->listedArchive(), kGame + "\\TWO.POD");
    EXPECT_EQ(f.messages().size(), 2);
}

TEST(ExtractorPane, exportWritesTheListInItsShownOrderAndConfirms) {
    PaneFixture f;
    f.pane->exportClicked(); // nothing listed: nothing happens
    EXPECT_TRUE(f.messages().isEmpty());
    f.listTrucks();
    QTest::mouseClick(f.child<korvel::ui::GoldButton>("cmdExport"), Qt::LeftButton);
    EXPECT_EQ(f.drive.dialogs().lastMessage().title, "Information");
    EXPECT_EQ(f.drive.dialogs().lastMessage().icon, MessageIcon::Information);
    EXPECT_EQ(f.drive.dialogs().lastMessage().text, "C:\\Games\\MTM2\\TRUCKS.txt successfully created!");
    const std::string text = f.drive.read(kGame + "\\TRUCKS.txt");
    EXPECT_EQ(text.rfind("// My trucks\r\n", 0), 0u);
    EXPECT_LT(text.find("A.BIN"), text.find("b.trk"));
    EXPECT_NE(text.find("// Total Files: 3\r\n"), std::string::npos);
}

TEST(ExtractorPane, trackToolsPatchTheArchiveAndConversionListsItAgain) {
    PaneFixture f("0");
    f.drive.write(
        kGame + "\\TRACK.POD",
        PodWriter().add("TRACK.SIT", convertibleTrackInfo("2")).add("TRUCK.TRK", "model version 14 x").pod1());
    ASSERT_TRUE(f.pane->ListPOD(kGame + "\\", "TRACK.POD"));
    EXPECT_EQ(f.text("txtType"), "Merged");
    const std::string before = f.drive.read(kGame + "\\TRACK.POD");
    const size_t digit = before.find("Track Race Type") + 17;
    EXPECT_EQ(before[digit], '2');

    f.selectRows({0});
    f.pane->fileMenu()->findChild<QAction*>("mnuConvertTo_5")->trigger();
    const std::string converted = f.drive.read(kGame + "\\TRACK.POD");
    EXPECT_EQ(converted[digit], '5');
    EXPECT_EQ(converted.size(), before.size());
    EXPECT_EQ(f.pane->model().rowCount(), 2); // listed again
    EXPECT_EQ(f.recent->entries().size(), 1);

    f.selectRows({1});
    f.pane->fileMenu()->findChild<QAction*>("mnuCompatiblize")->trigger();
    const std::string patched = f.drive.read(kGame + "\\TRACK.POD");
    EXPECT_EQ(patched[patched.find("version") + 9], '6');
    EXPECT_EQ(f.drive.dialogs().lastMessage().text,
              "The selected truck should now be compatible with the original 4x4 Evolution.");
    EXPECT_EQ(f.drive.dialogs().lastMessage().title, "Information");
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
    EXPECT_TRUE(visible("mnuFilesSep1") && visible("mnuConvert") && visible("mnuCompatiblize"));
}

TEST(ExtractorPane, fileAndDriveBoxesOpenArchivesAndFallBackToTheGameFolder) {
    PaneFixture f;
    f.drive.write(kGame + "\\TRUCKS.POD", PodWriter().add("A.BIN", "a").pod1());
    f.pane->browser().refreshFiles();
    QListWidget* files = f.child<QListWidget>("fileBox");
    ASSERT_EQ(files->count(), 1);
    f.drive.remove(kGame + "\\TRUCKS.POD");
    f.pane->browser().openFile("TRUCKS.POD");
    EXPECT_EQ(f.drive.dialogs().lastMessage().text, "File not found!");
    EXPECT_EQ(files->count(), 0); // refreshed

    f.drive.write(kGame + "\\TRUCKS.POD", PodWriter().add("A.BIN", "a").pod1());
    f.pane->browser().refreshFiles();
    emit files->itemDoubleClicked(files->item(0));
    EXPECT_EQ(f.pane->listedArchive(), kGame + "\\TRUCKS.POD");

    f.pane->browser().setPath("C:\\");
    f.pane->browser().changeDrive('Q'); // a drive the map does not know
    EXPECT_EQ(f.pane->browser().path(), kGame);
    EXPECT_EQ(f.child<QComboBox>("driveBox")->currentText(), "c:");
    EXPECT_EQ(f.messages().size(), 1);
}

TEST(ExtractorPane, theApplicationListsAnOpenedArchiveAndShowsThePaletteViewer) {
    korvel::testing::AppRig rig;
    korvel::testing::GameLayout layout;
    layout.archives = {{"TRUCKS.POD", PodWriter().add("A.BIN", "a").add("B.TRK", "b").pod1()}};
    rig.addGame("MTM2", layout);
    ASSERT_TRUE(rig.start({rig.drive.host(kGame + "\\TRUCKS.POD")}));
    EXPECT_EQ(rig.window().windowTitle(), "Korvel - MTM2 - [Extractor]");
    EXPECT_EQ(rig.find<QTableView>("lstFiles")->model()->rowCount(), 2);
    EXPECT_EQ(rig.find<QLineEdit>("txtType")->text(), "Truck");
    EXPECT_EQ(rig.find<QComboBox>("cmbRecent")->itemText(0), "C:\\Games\\MTM2\\TRUCKS.POD");
    EXPECT_EQ(rig.find<QListWidget>("fileBox")->count(), 1);

    rig.window().menus().palette()->trigger();
    QWidget* palette = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == "frmPalette")
            palette = widget;
    }
    ASSERT_NE(palette, nullptr);
    EXPECT_TRUE(palette->isVisible());
    palette->close();
    rig.window().close();
}
