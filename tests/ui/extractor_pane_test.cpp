#include "pod/widgets/extractor_pane.h"
#include "pod/widgets/file_browser.h"
#include "pod/widgets/listing_model.h"
#include "pod/widgets/recent_archives_box.h"

#include "configurator/track_tools.h"
#include "demo_game.h"
#include "pod/extraction.h"
#include "pod/pod_directory.h"
#include "pod_writer.h"
#include "ui/kit/gold_button.h"
#include "window_fixture.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QToolTip>

#include <algorithm>

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

    korvel::RecentArchivesBox& recent() const { return pane->recentArchives(); }

    std::unique_ptr<ExtractorPane> pane;
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
    EXPECT_EQ(f.recent().entries().value(0), "C:\\Games\\MTM2\\TRUCKS.POD");
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
    EXPECT_TRUE(f.recent().combo()->isEnabled());
    EXPECT_TRUE(f.messages().isEmpty());
    f.drive.remove(kGame + "\\A.BIN"); // Enter on the list extracts again
    f.selectRows({0});
    QTest::keyClick(f.list(), Qt::Key_Return);
    EXPECT_TRUE(f.drive.exists(kGame + "\\A.BIN"));
    f.drive.remove(kGame + "\\A.BIN"); // with nothing selected the button does nothing
    f.list()->clearSelection();
    QTest::mouseClick(f.child<korvel::ui::GoldButton>("cmdExtract"), Qt::LeftButton);
    EXPECT_FALSE(f.drive.exists(kGame + "\\A.BIN"));
    // Enter extracts nothing then, and the bar is idle rather than busy without end.
    QTest::keyClick(f.list(), Qt::Key_Return);
    auto* bar = f.child<QProgressBar>("prgExtract");
    EXPECT_GT(bar->maximum(), bar->minimum());
    EXPECT_EQ(bar->value(), bar->minimum());
    EXPECT_TRUE(f.child<QLabel>("lblExtract")->text().startsWith("0 files (0 bytes) extracted in "));
}

TEST(ExtractorPane, everyFailedExtractionIsReportedAndThePaneWorksAgain) {
    const std::string kOut = "C:\\Out";
    const struct {
        const char* name;
        std::string entry;   // the second entry; the first, GOOD.BIN, always comes first
        bool corrupt;        // the entry ends past the archive's end
        bool extractTo;      // Extract To into C:\Out rather than the button into the game folder
        bool outHoldsAFile;  // C:\Out exists and holds a file (so it counts as there)
        std::string blocker; // a folder in the way of the entry's file
        const char* title;
        const char* text; // empty: any text
    } cases[] = {
        {"corrupt directory", "Z.BIN", true, false, false, "", "Read Error", "This POD appears to be corrupt!"},
        {"Extract To an existing empty folder", "Z.BIN", false, true, false, "", "Unexpected Error", ""},
        {"two folders deep", "DATA\\SUB\\Z.BIN", false, true, true, "", "Unexpected Error", ""},
        {"a destination that cannot be written", "Z.BIN", false, false, false, "\\Z.BIN", "Unexpected Error", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        PaneFixture f("0");
        PodWriter writer;
        writer.add("GOOD.BIN", "good");
        if (c.corrupt)
            writer.add({c.entry, "bad", std::nullopt, 1 << 20});
        else
            writer.add(c.entry, "zz");
        f.drive.write(kGame + "\\BAD.POD", writer.pod1());
        f.drive.write(kGame + "\\keep.txt", "x");
        f.drive.makeFolder(kOut);
        if (c.outHoldsAFile)
            f.drive.write(kOut + "\\keep.txt", "x");
        const std::string destination = c.extractTo ? kOut : kGame;
        if (!c.blocker.empty())
            f.drive.makeFolder(destination + c.blocker);
        ASSERT_TRUE(f.pane->ListPOD(kGame + "\\", "BAD.POD"));
        f.selectRows({0, 1});
        if (c.extractTo) {
            f.drive.dialogs().chooseFolder(kOut);
            f.pane->extractTo();
        } else {
            QTest::mouseClick(f.child<korvel::ui::GoldButton>("cmdExtract"), Qt::LeftButton);
        }
        ASSERT_EQ(f.messages().size(), 1);
        EXPECT_EQ(f.drive.dialogs().lastMessage().title, c.title);
        EXPECT_EQ(f.drive.dialogs().lastMessage().icon, korvel::MessageIcon::Critical);
        if (*c.text) {
            EXPECT_EQ(f.drive.dialogs().lastMessage().text, c.text);
        } else {
            EXPECT_FALSE(f.drive.dialogs().lastMessage().text.isEmpty());
        }
        // Rows before the failing one are written (none when the folder itself fails).
        if (!(c.extractTo && !c.outHoldsAFile)) {
            EXPECT_EQ(f.drive.read(destination + "\\GOOD.BIN"), "good");
        }
        // The four controls and the busy flag are back, and the next listing works at once.
        EXPECT_FALSE(f.pane->archiveBusy());
        EXPECT_TRUE(f.child<korvel::ui::GoldButton>("cmdExtract")->isEnabled());
        EXPECT_TRUE(f.child<korvel::ui::GoldButton>("cmdExport")->isEnabled());
        EXPECT_TRUE(f.child<QListWidget>("fileBox")->isEnabled());
        EXPECT_TRUE(f.recent().combo()->isEnabled());
        EXPECT_TRUE(f.pane->ListPOD(kGame + "\\", "BAD.POD"));
        EXPECT_EQ(f.messages().size(), 1);
    }
}

TEST(ExtractorPane, anUnreadableArchiveClearsTheRowsAndKeepsTheBoxes) {
    PaneFixture f("0");
    f.listTrucks();
    f.drive.write(kGame + "\\BROKEN.POD", PodWriter().add("X.BIN", "x").magic("POD3").pod2());
    EXPECT_FALSE(f.pane->ListPOD(kGame + "\\", "BROKEN.POD"));
    EXPECT_EQ(f.drive.dialogs().lastMessage().text,
              "Sorry, but Korvel was unable to read this POD. Please note that POD3 files are not yet supported.");
    EXPECT_EQ(f.pane->model().rowCount(), 0);
    EXPECT_EQ(f.text("txtTotal"), "3");
}

TEST(ExtractorPane, anExistingLongerFileIsWrittenOverInPlaceNotTruncated) {
    PaneFixture f;
    f.listTrucks();
    f.drive.write(kGame + "\\b.trk", std::string(100, '#'));
    f.selectRows({2});
    QTest::mouseClick(f.child<korvel::ui::GoldButton>("cmdExtract"), Qt::LeftButton);
    EXPECT_EQ(f.drive.read(kGame + "\\b.trk"), "truck version 4" + std::string(85, '#'));
}

TEST(ExtractorPane, massExtractionAsksThenExtractsEveryArchiveInListOrderIntoTheGameFolder) {
    const struct {
        const char* name;
        korvel::MessageAnswer answer;
        std::vector<std::pair<std::string, std::string>> expected; // file in the game folder, its contents
        QString lastMessage;
        bool busy;
    } cases[] = {
        // Later archives write over earlier ones; an unreadable one is reported and skipped.
        {"extracts", korvel::MessageAnswer::Yes, {{"A.RAW", "first"}, {"SHARED.TXT", "two"}}, "", false},
        {"declined", korvel::MessageAnswer::No, {{"A.RAW", ""}, {"SHARED.TXT", ""}}, "", false},
        // Rows go in the order the list shows them: A.BIN is written before the bad Z.BIN stops it
        // all; the pane is back in working order after the message.
        {"corrupt",
         korvel::MessageAnswer::Yes,
         {{"A.BIN", "good"}, {"Z.BIN", ""}, {"SHARED.TXT", ""}},
         "This POD appears to be corrupt!",
         false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        PaneFixture f;
        if (std::string(c.name) == "corrupt") {
            f.drive.write(kGame + "\\BAD.POD",
                          PodWriter().add({"Z.BIN", "z", std::nullopt, 1 << 20}).add("A.BIN", "good").pod1());
        }
        f.drive.write(kGame + "\\BROKEN.POD", PodWriter().add("X.BIN", "x").magic("POD3").pod2());
        f.drive.write(kGame + "\\ONE.POD", PodWriter().add("A.RAW", "first").add("SHARED.TXT", "one").pod1());
        f.drive.write(kGame + "\\TWO.POD", PodWriter().add("SHARED.TXT", "two").pod2());
        f.pane->browser().refreshFiles();
        QSignalSpy shown(f.pane.get(), &ExtractorPane::showRequested);
        f.drive.dialogs().answer(c.answer);
        f.pane->massExtract();
        const QString count = std::string(c.name) == "corrupt" ? "4" : "3";
        EXPECT_EQ(f.drive.dialogs().messages().front().text,
                  "All " + count +
                      " PODs in \"C:\\Games\\MTM2\" will be extracted. Are you sure you wish to continue?");
        for (const auto& [file, contents] : c.expected)
            EXPECT_EQ(f.drive.exists(kGame + "\\" + file) ? f.drive.read(kGame + "\\" + file) : "", contents) << file;
        EXPECT_EQ(f.pane->archiveBusy(), c.busy);
        if (c.answer == korvel::MessageAnswer::No) {
            EXPECT_EQ(shown.count(), 0);
            continue;
        }
        EXPECT_EQ(shown.count(), 1);
        if (!c.lastMessage.isEmpty()) {
            EXPECT_EQ(f.drive.dialogs().lastMessage().text, c.lastMessage);
            continue;
        }
        EXPECT_EQ(f.messages().value(1), korvel::unreadablePodText());
        EXPECT_EQ(f.recent().entries().value(0), "C:\\Games\\MTM2\\TWO.POD");
        EXPECT_TRUE(f.child<QLabel>("lblExtract")->text().startsWith("1 files (3 bytes) extracted in "));
    }
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
    EXPECT_EQ(f.recent().entries(),
              QStringList({"C:\\Games\\MTM2\\P5.POD", "C:\\Games\\MTM2\\P9.POD", "C:\\Games\\MTM2\\P8.POD",
                           "C:\\Games\\MTM2\\P7.POD", "C:\\Games\\MTM2\\P6.POD", "C:\\Games\\MTM2\\P4.POD",
                           "C:\\Games\\MTM2\\P3.POD", "C:\\Games\\MTM2\\P2.POD"}));
    EXPECT_EQ(f.recent().combo()->currentIndex(), 0);
}

TEST(ExtractorPane, massExtractionUnpacksEveryArchivePastUnreadableOnesAndStopsAtAMissingOne) {
    PaneFixture f("0");
    f.drive.write(kGame + "\\A.POD", PodWriter().add("ART\\A.RAW", "first").add("SHARED.TXT", "a").pod1());
    f.drive.write(kGame + "\\B.POD", PodWriter().add("X.BIN", "x").magic("POD3").pod2());
    f.drive.write(kGame + "\\C.POD", PodWriter().add("SHARED.TXT", "c").pod2());
    f.drive.write(kGame + "\\D.POD", PodWriter().add("D.TXT", "d").pod1());
    f.drive.write(kGame + "\\E.POD", PodWriter().add("E.TXT", "e").pod1());
    f.drive.write(kGame + "\\ART\\seed", "s");
    f.pane->browser().refreshFiles();
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

namespace {

// The sample game in the fixture's game folder.
void writeDemoGame(korvel::testing::WindowFixture& f) {
    for (const korvel::testing::DemoFile& file : korvel::testing::demoGameFiles()) {
        std::string path = file.path;
        std::replace(path.begin(), path.end(), '/', '\\');
        f.drive.write(kGame + "\\" + path, file.bytes);
    }
}

int rowNamed(const PaneFixture& f, const QString& name) {
    for (int row = 0; row < f.pane->model().rowCount(); ++row) {
        if (f.cell(row, 0) == name)
            return row;
    }
    return -1;
}

} // namespace

TEST(ExtractorPaneTrackTools, convertingADemoTrackChangesItsTypeInPlace) {
    const struct {
        const char* archive;
        const char* entry;
        const char* action;
        const char* before;
        const char* after;
    } tracks[] = {{"TRAXX.POD", "TRAXX.SIT", "mnuConvertTo_5", "Circuit", "Bomb Tag"},
                  {"RALLY.POD", "MUDRALLY.SIT", "mnuConvertTo_1", "Rally (POD2)", "Drag (POD2)"},
                  {"ADDON\\ARENA.POD", "ARENA.SIT", "mnuConvertTo_3", "Rumble (POD2)", "Rally (POD2)"}};
    for (const auto& track : tracks) {
        SCOPED_TRACE(track.archive);
        PaneFixture f;
        writeDemoGame(f);
        const std::string path = kGame + "\\" + track.archive;
        const std::string before = f.drive.read(path);
        const std::string folder = path.substr(0, path.rfind('\\') + 1);
        ASSERT_TRUE(f.pane->ListPOD(folder, path.substr(folder.size())));
        EXPECT_EQ(f.text("txtType"), track.before);
        const int row = rowNamed(f, QString::fromLatin1(track.entry));
        ASSERT_GE(row, 0);
        f.selectRows({row});
        f.pane->fileMenu()->findChild<QAction*>(track.action)->trigger();
        EXPECT_EQ(f.text("txtType"), track.after); // listed again at once
        const std::string after = f.drive.read(path);
        ASSERT_EQ(after.size(), before.size());
        size_t changed = 0;
        for (size_t i = 0; i < after.size(); ++i)
            changed += after[i] != before[i];
        EXPECT_EQ(changed, 1u);
        EXPECT_TRUE(f.messages().isEmpty());
    }
}

TEST(ExtractorPaneTrackTools, compatiblizingADemoTruckSetsItsVersionDigitToSix) {
    PaneFixture f;
    writeDemoGame(f);
    const std::string path = kGame + "\\TRUCKS.POD";
    const std::string before = f.drive.read(path);
    ASSERT_TRUE(f.pane->ListPOD(kGame + "\\", "TRUCKS.POD"));
    const int row = rowNamed(f, QStringLiteral("TRUCK\\BIGFOOT.TRK"));
    ASSERT_GE(row, 0);
    f.selectRows({row});
    f.pane->fileMenu()->findChild<QAction*>("mnuCompatiblize")->trigger();
    EXPECT_EQ(f.drive.dialogs().lastMessage().text, korvel::compatiblizedText());
    EXPECT_EQ(f.drive.dialogs().lastMessage().icon, korvel::MessageIcon::Information);
    const std::string bigfoot = korvel::testing::truckText("BIGFOOT", '5');
    const size_t at = before.find(bigfoot);
    ASSERT_NE(at, std::string::npos);
    std::string expected = before;
    expected.replace(at, bigfoot.size(), korvel::testing::truckText("BIGFOOT", '6'));
    EXPECT_EQ(f.drive.read(path), expected); // that digit and nothing else
}

TEST(ListingModel, aHundredThousandRowsListSortAndScrollQuickly) {
    korvel::PodDirectory listing;
    for (qint32 i = 0; i < 100000; ++i)
        listing.entries.add("FILE" + std::to_string((i * 7919) % 100000) + ".BIN", 10, 100 + 10 * i);
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

TEST(ExtractorPaneRecentArchives, choosingTypingWithEnterAndRemovingEntries) {
    PaneFixture f("0");
    f.drive.write(kGame + "\\ONE.POD", PodWriter().add("ONE.TXT", "1").pod1());
    f.drive.write(kGame + "\\TWO.POD", PodWriter().add("TWO.TXT", "2").add("MORE.TXT", "3").pod1());
    ASSERT_TRUE(f.pane->ListPOD(kGame + "\\", "ONE.POD"));
    f.recent().setEntries({"C:\\Games\\MTM2\\ONE.POD", "C:\\Games\\MTM2\\TWO.POD", "C:\\Nowhere\\GONE.POD"});
    QComboBox* combo = f.recent().combo();
    combo->setCurrentIndex(0);
    QLabel* status = f.child<QLabel>("lblExtract");

    // Choosing an entry with the keyboard lists it and puts it first.
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Down);
    EXPECT_EQ(f.pane->listedArchive(), kGame + "\\TWO.POD");
    EXPECT_EQ(f.pane->model().rowCount(), 2);
    EXPECT_EQ(f.recent().entries().value(0), "C:\\Games\\MTM2\\TWO.POD");

    const struct {
        const char* typed;
        std::string listed; // afterwards
        bool lists;
    } typed[] = {
        {"C:\\GAMES\\MTM2\\two.pod", kGame + "\\TWO.POD", false}, // the one listed now, in other case
        {"C:\\Games\\MTM2\\MISSING.POD", kGame + "\\TWO.POD", false},
        {"c:\\games\\mtm2\\ONE.POD", "c:\\games\\mtm2\\ONE.POD", true},
    };
    for (const auto& t : typed) {
        SCOPED_TRACE(t.typed);
        status->clear(); // a listing writes its time here
        combo->lineEdit()->setText(QString::fromLatin1(t.typed));
        QTest::keyClick(combo->lineEdit(), Qt::Key_Return);
        EXPECT_EQ(!status->text().isEmpty(), t.lists);
        EXPECT_EQ(f.pane->listedArchive(), t.listed);
    }
    EXPECT_TRUE(f.messages().isEmpty());

    // X removes the selected entry and selects the first one left.
    const QStringList before = f.recent().entries();
    combo->setCurrentIndex(1);
    QTest::mouseClick(f.recent().removeButton(), Qt::LeftButton);
    QStringList expected = before;
    expected.removeAt(1);
    EXPECT_EQ(f.recent().entries(), expected);
    EXPECT_EQ(combo->currentIndex(), 0);
}

TEST(ExtractorPaneNames, growWithThePaneAndShowWholeAsTooltipsWhenCut) {
    PaneFixture f("0");
    const std::string longName = "TEXTURES\\" + std::string(30, 'W') + ".RAW";
    f.drive.write(kGame + "\\LONG.POD", PodWriter().add("A.BIN", "a").add(longName, "w").pod2());
    ASSERT_TRUE(f.pane->ListPOD(kGame + "\\", "LONG.POD"));
    QApplication::processEvents(); // the header lays its columns out
    QTableView* list = f.list();
    const QModelIndex shortName = f.pane->model().index(0, 0);
    const QModelIndex cutName = f.pane->model().index(1, 0);
    EXPECT_EQ(f.pane->nameToolTip(shortName), "");
    EXPECT_EQ(f.pane->nameToolTip(cutName).toStdString(), longName);
    EXPECT_EQ(f.pane->nameToolTip(f.pane->model().index(1, 1)), ""); // the size column has none

    // The tooltip event over the cut name shows it.
    const QPoint at = list->visualRect(cutName).center();
    QHelpEvent help(QEvent::ToolTip, at, list->viewport()->mapToGlobal(at));
    QApplication::sendEvent(list->viewport(), &help);
    EXPECT_EQ(QToolTip::text().toStdString(), longName);
    QToolTip::hideText();

    // A wider pane widens the list and its Name column, and the buttons keep to the right edge.
    const int listWidth = list->width();
    const int nameWidth = list->columnWidth(0);
    auto* extract = f.child<korvel::ui::GoldButton>("cmdExtract");
    const QPoint extractAt = extract->pos();
    f.pane->resize(f.pane->width() + 600, f.pane->height() + 100);
    QApplication::processEvents();
    EXPECT_EQ(list->width(), listWidth + 600);
    EXPECT_GT(list->columnWidth(0), nameWidth + 500); // the name column takes the width gained
    EXPECT_EQ(extract->pos(), extractAt + QPoint(600, 100));
    EXPECT_EQ(f.pane->nameToolTip(cutName), ""); // now it fits
}
