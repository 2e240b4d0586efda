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
#include "ui_rig.h"

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
#include <functional>
#include <numeric>

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
        tester = std::make_unique<QAbstractItemModelTester>(&pane->model(),
                                                            QAbstractItemModelTester::FailureReportingMode::Fatal);
        pane->startBrowsingAtGameFolder();
        pane->prepareExtractionProgress();
        pane->show();
    }
    template <typename T = QWidget> T* child(const char* name) const {
        return korvel::testing::child<T>(pane.get(), name);
    }
    void extract() { korvel::testing::click(child("cmdExtract")); }
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
    std::unique_ptr<QAbstractItemModelTester> tester; // through every listing and sort
};

} // namespace

TEST(ExtractorPane, listingFillsTheBoxesRowsStatusLineAndRecentListAndAnUnreadableOneClearsTheRows) {
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
    // An archive that cannot be read clears the rows and keeps the boxes of the one before.
    f.drive.write(kGame + "\\BROKEN.POD", PodWriter().add("X.BIN", "x").magic("POD3").pod2());
    EXPECT_FALSE(f.pane->ListPOD(kGame + "\\", "BROKEN.POD"));
    EXPECT_EQ(f.drive.dialogs().lastMessage().text,
              "Sorry, but Korvel was unable to read this POD. Please note that POD3 files are not yet supported.");
    EXPECT_EQ(f.pane->model().rowCount(), 0);
    EXPECT_EQ(f.text("txtTotal"), "3");
}

TEST(ExtractorPane, extractButtonWritesTheSelectedRowsWithProgress) {
    PaneFixture f;
    f.listTrucks();
    f.drive.write(kGame + "\\keep.txt", "x"); // the folder already holds a file
    f.drive.write(kGame + "\\b.trk", std::string(100, '#'));
    f.selectRows({0, 1, 2});
    f.extract();
    EXPECT_EQ(f.drive.read(kGame + "\\A.BIN"), std::string(1000, 'a'));
    EXPECT_EQ(f.drive.read(kGame + "\\ART\\C.RAW"), "ccc");
    // A longer file there is written over in place, not truncated.
    EXPECT_EQ(f.drive.read(kGame + "\\b.trk"), "truck version 4" + std::string(85, '#'));
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
    f.extract();
    EXPECT_FALSE(f.drive.exists(kGame + "\\A.BIN"));
    // Enter extracts nothing then, and the bar is idle rather than busy without end.
    QTest::keyClick(f.list(), Qt::Key_Return);
    auto* bar = f.child<QProgressBar>("prgExtract");
    EXPECT_GT(bar->maximum(), bar->minimum());
    EXPECT_EQ(bar->value(), bar->minimum());
    EXPECT_TRUE(f.child<QLabel>("lblExtract")->text().startsWith("0 files (0 bytes) extracted in "));
}

TEST(ExtractorPane, everyFailedExtractionIsReportedAndThePaneWorksAgain) {
    for (const bool corrupt : {true, false}) {
        SCOPED_TRACE(corrupt ? "the entry ends past the archive's end" : "a folder stands in the entry's way");
        PaneFixture f("0");
        PodWriter writer;
        writer.add("GOOD.BIN", "good");
        if (corrupt)
            writer.add({"Z.BIN", "bad", std::nullopt, 1 << 20});
        else
            writer.add("Z.BIN", "zz");
        f.drive.write(kGame + "\\BAD.POD", writer.pod1());
        if (!corrupt)
            f.drive.makeFolder(kGame + "\\Z.BIN");
        ASSERT_TRUE(f.pane->ListPOD(kGame + "\\", "BAD.POD"));
        f.selectRows({0, 1});
        f.extract();
        ASSERT_EQ(f.messages().size(), 1);
        const auto& shown = f.drive.dialogs().lastMessage();
        EXPECT_EQ(shown.title, corrupt ? "Read Error" : "Unexpected Error");
        EXPECT_EQ(shown.icon, korvel::MessageIcon::Critical);
        EXPECT_TRUE(corrupt ? shown.text == "This POD appears to be corrupt!" : !shown.text.isEmpty());
        EXPECT_EQ(f.drive.read(kGame + "\\GOOD.BIN"), "good"); // rows before the failing one are written
        // The four controls and the busy flag are back, and the next listing works at once.
        EXPECT_FALSE(f.pane->archiveBusy());
        for (const char* name : {"cmdExtract", "cmdExport", "fileBox"})
            EXPECT_TRUE(f.child(name)->isEnabled()) << name;
        EXPECT_TRUE(f.recent().combo()->isEnabled());
        EXPECT_TRUE(f.pane->ListPOD(kGame + "\\", "BAD.POD"));
        EXPECT_EQ(f.messages().size(), 1);
    }
}

TEST(ExtractorPane, massExtractionAsksThenUnpacksEveryArchivePastUnreadableOnesAndStopsAtAMissingOne) {
    PaneFixture f("0");
    f.drive.write(kGame + "\\A.POD", PodWriter().add("ART\\A.RAW", "first").add("SHARED.TXT", "a").pod1());
    f.drive.write(kGame + "\\B.POD", PodWriter().add("X.BIN", "x").magic("POD3").pod2());
    f.drive.write(kGame + "\\C.POD", PodWriter().add("SHARED.TXT", "c").pod2());
    f.drive.write(kGame + "\\D.POD", PodWriter().add("D.TXT", "d").pod1());
    f.drive.write(kGame + "\\E.POD", PodWriter().add("E.TXT", "ee").pod1());
    f.drive.write(kGame + "\\ART\\seed", "s");
    f.pane->browser().refreshFiles();
    QSignalSpy shown(f.pane.get(), &ExtractorPane::showRequested);
    const QString question = "All 5 PODs in \"C:\\Games\\MTM2\" will be extracted. Are you sure you wish to continue?";
    f.drive.dialogs().answer(korvel::MessageAnswer::No);
    f.pane->massExtract();
    EXPECT_EQ(f.messages(), QStringList{question});
    EXPECT_FALSE(f.drive.exists(kGame + "\\SHARED.TXT"));
    EXPECT_EQ(shown.count(), 0);
    // While the report on B.POD is up, D.POD is deleted elsewhere.
    f.drive.dialogs().clear();
    f.drive.dialogs().answer(korvel::MessageAnswer::Yes);
    f.drive.dialogs().whileShown = [&](const korvel::testing::ScriptedDialogs::Shown& up) {
        if (up.text.startsWith("Sorry"))
            f.drive.remove(kGame + "\\D.POD");
    };
    f.pane->massExtract();
    EXPECT_EQ(f.messages(), QStringList({question, korvel::unreadablePodText(), "File not found!"}));
    EXPECT_EQ(f.drive.dialogs().lastMessage().title, "Read Error");
    EXPECT_EQ(f.drive.read(kGame + "\\ART\\A.RAW"), "first");
    EXPECT_EQ(f.drive.read(kGame + "\\SHARED.TXT"), "c"); // the later archive wins
    EXPECT_FALSE(f.drive.exists(kGame + "\\E.TXT"));
    EXPECT_FALSE(f.pane->archiveBusy());
    EXPECT_EQ(shown.count(), 1);
    // Without the missing one the run ends with the last archive listed.
    f.drive.dialogs().whileShown = nullptr;
    f.drive.dialogs().answer(korvel::MessageAnswer::Yes);
    f.pane->browser().refreshFiles();
    f.pane->massExtract();
    EXPECT_EQ(f.drive.read(kGame + "\\E.TXT"), "ee");
    EXPECT_EQ(f.recent().entries().value(0), "C:\\Games\\MTM2\\E.POD");
    EXPECT_TRUE(f.child<QLabel>("lblExtract")->text().startsWith("1 files (2 bytes) extracted in "));

    // Rows go in the order the list shows them: A.BIN is written before the bad Z.BIN stops it all.
    PaneFixture corrupt;
    corrupt.drive.write(kGame + "\\BAD.POD",
                        PodWriter().add({"Z.BIN", "z", std::nullopt, 1 << 20}).add("A.BIN", "good").pod1());
    corrupt.drive.write(kGame + "\\ONE.POD", PodWriter().add("SHARED.TXT", "one").pod1());
    corrupt.pane->browser().refreshFiles();
    corrupt.drive.dialogs().answer(korvel::MessageAnswer::Yes);
    corrupt.pane->massExtract();
    EXPECT_EQ(corrupt.drive.dialogs().lastMessage().text, "This POD appears to be corrupt!");
    EXPECT_EQ(corrupt.drive.read(kGame + "\\A.BIN"), "good");
    EXPECT_FALSE(corrupt.drive.exists(kGame + "\\Z.BIN") || corrupt.drive.exists(kGame + "\\SHARED.TXT"));
    EXPECT_FALSE(corrupt.pane->archiveBusy());
}

TEST(ExtractorPaneRecentArchives, keepsTheEightListedLastNewestFirstEachOnceAndAreChosenTypedAndRemoved) {
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

TEST(ExtractorPaneTrackTools, convertAndCompatiblizeChangeOneByteOfADemoArchiveInPlace) {
    const std::string bigfoot6 = korvel::testing::truckText("BIGFOOT", '6');
    const struct {
        const char* archive;
        const char* entry;
        const char* action;
        const char* before;
        const char* after;   // the type shown once the archive is listed again
        std::string written; // text the archive holds afterwards
        QString message;
    } cases[] = {{"TRAXX.POD", "TRAXX.SIT", "mnuConvertTo_5", "Circuit", "Bomb Tag", "", ""},
                 {"TRUCKS.POD", "TRUCK\\BIGFOOT.TRK", "mnuCompatiblize", "Truck", "Truck", bigfoot6,
                  korvel::compatiblizedText()}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.archive);
        PaneFixture f;
        for (const korvel::testing::DemoFile& file : korvel::testing::demoGameFiles()) {
            std::string path = file.path;
            std::replace(path.begin(), path.end(), '/', '\\');
            f.drive.write(kGame + "\\" + path, file.bytes);
        }
        const std::string path = kGame + "\\" + c.archive;
        const std::string before = f.drive.read(path);
        const std::string folder = path.substr(0, path.rfind('\\') + 1);
        ASSERT_TRUE(f.pane->ListPOD(folder, path.substr(folder.size())));
        EXPECT_EQ(f.text("txtType"), c.before);
        int row = 0;
        while (row < f.pane->model().rowCount() && f.cell(row, 0) != c.entry)
            ++row;
        ASSERT_LT(row, f.pane->model().rowCount());
        f.selectRows({row});
        f.pane->fileMenu()->findChild<QAction*>(c.action)->trigger();
        EXPECT_EQ(f.text("txtType"), c.after);
        const std::string after = f.drive.read(path);
        ASSERT_EQ(after.size(), before.size());
        EXPECT_EQ(
            std::inner_product(after.begin(), after.end(), before.begin(), 0, std::plus<>(), std::not_equal_to<>()), 1);
        EXPECT_NE(after.find(c.written), std::string::npos);
        EXPECT_EQ(f.messages(), c.message.isEmpty() ? QStringList() : QStringList{c.message});
        EXPECT_TRUE(c.message.isEmpty() || f.drive.dialogs().lastMessage().icon == korvel::MessageIcon::Information);
    }
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
