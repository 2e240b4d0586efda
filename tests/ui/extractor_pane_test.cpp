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
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

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
    f.listTrucks();
    EXPECT_EQ(f.text("txtName"), "My trucks");
    EXPECT_EQ(f.text("txtType"), "Truck");
    EXPECT_EQ(f.text("txtTotal"), "3");
    EXPECT_EQ(f.text("txtSize").toStdString(), korvel::AddCommas(double(f.drive.read(kGame + "\\TRUCKS.POD").size())));
    ASSERT_EQ(f.pane->model().rowCount(), 3);
    // Autosort on: by name, without regard to case.
    EXPECT_EQ(f.cell(0, 0), "A.BIN");
    EXPECT_EQ(f.cell(1, 0), "ART\\C.RAW");
    EXPECT_EQ(f.cell(2, 0), "b.trk");
    EXPECT_TRUE(f.child<QLabel>("lblExtract")->text().startsWith("Contents of TRUCKS.POD listed in "));
    EXPECT_EQ(f.recent().entries().value(0), "C:\\Games\\MTM2\\TRUCKS.POD");
    EXPECT_EQ(f.pane->listedArchive(), kGame + "\\TRUCKS.POD");
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
    EXPECT_EQ(f.drive.dialogs().lastMessage().text, korvel::unreadablePodText());
    EXPECT_EQ(f.pane->model().rowCount(), 0);
    EXPECT_EQ(f.text("txtTotal"), "2");
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
        // Rows go in the order the list shows them: A.BIN is written before the bad Z.BIN stops it all.
        {"corrupt",
         korvel::MessageAnswer::Yes,
         {{"A.BIN", "good"}, {"Z.BIN", ""}, {"SHARED.TXT", ""}},
         "This POD appears to be corrupt!",
         true},
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
