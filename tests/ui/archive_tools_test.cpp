#include "mounter/widgets/check_pods_window.h"
#include "mounter/widgets/check_results_model.h"
#include "mounter/widgets/conflict_models.h"
#include "mounter/widgets/conflict_tracker.h"
#include "mounter/widgets/conflicts_window.h"
#include "mounter/widgets/mounted_model.h"
#include "platform/game_codec.h"
#include "pod/pod_check.h"
#include "pod/pod_directory.h"
#include "pod/widgets/create_pod_dialog.h"
#include "pod/widgets/extractor_pane.h"
#include "pod/widgets/listing_model.h"
#include "pod_writer.h"
#include "ui/main_menus.h"
#include "ui_rig.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

#include <gtest/gtest.h>

namespace korvel::testing {
namespace {

constexpr const char* kGame = "MTM2";

// Mounted in this order: A and B hold the same sky picture (B spells it in other case, with "/" and
// a trailing blank) and the same shared text; C holds a sky of the same size with other bytes;
// BROKEN cannot be listed, GONE is not there, E shares nothing.
GameLayout overlappingGame() {
    const std::string sky(999, 'k');
    const std::string shared(1000, 's');
    GameLayout layout;
    layout.podIni = {"A.POD", "B.POD", "C.POD", "BROKEN.POD", "GONE.POD", "E.POD"};
    layout.archives = {
        {"A.POD", PodWriter().add("ART\\SKY.RAW", sky).add("SHARED.TXT", shared).add("A.TRK", "a").pod1()},
        {"B.POD", PodWriter().add("art/sky.raw ", sky).add("shared.txt", shared).add("UNIQUE.BIN", "b").pod1()},
        {"C.POD", PodWriter().add("Art\\Sky.raw", std::string(999, 'K')).pod2()},
        {"BROKEN.POD", "POD"},
        {"E.POD", PodWriter().add("ONLY.E", "e").pod1()},
    };
    return layout;
}

class ConflictsTest : public ::testing::Test {
protected:
    void SetUp() override {
        rig.addGame(kGame, overlappingGame());
        for (std::string_view name : {settings::kAsPod, settings::kAsChange, settings::kAsExit})
            rig.store.writeProfile(kGame, name, "0");
        ASSERT_TRUE(rig.start());
        mounted = rig.list("lstMounted");
        ASSERT_NE(mounted, nullptr);
    }

    MounterPane& pane() { return rig.pane(); }
    void selectMounted(int row) {
        mounted->setFocus();
        mounted->selectionModel()->setCurrentIndex(mounted->model()->index(row, 0),
                                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    // Opens the window from the mounted list's context menu, for the row selected there.
    ConflictsWindow* openFromContextMenu(int row) {
        selectMounted(row);
        auto* entry = pane().findChild<QAction*>(QStringLiteral("mnuConflictsMounted"));
        EXPECT_NE(entry, nullptr);
        entry->trigger();
        ConflictsWindow* window = pane().conflictsWindow();
        // Its models pass the model tester through every refresh, selection and filter that follows.
        if (window && testers.empty()) {
            for (QAbstractItemModel* model : std::initializer_list<QAbstractItemModel*>{
                     &window->archivesModel(), &window->pathsModel(), window->pathsView()->model()})
                testers.push_back(std::make_unique<QAbstractItemModelTester>(
                    model, QAbstractItemModelTester::FailureReportingMode::Fatal));
        }
        return window;
    }
    void settle() {
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
    }
    // The rows of the paths view as the user sees them: "path | size | earlier | later | content".
    static std::vector<std::string> shownPaths(const ConflictsWindow& window) {
        std::vector<std::string> rows;
        const QAbstractItemModel* model = window.pathsView()->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < model->columnCount(); ++column)
                cells << model->index(row, column).data().toString();
            rows.push_back(cells.join(QStringLiteral(" | ")).toStdString());
        }
        return rows;
    }
    static QString archiveCell(const ConflictsWindow& window, int row, int column) {
        return window.archivesModel().index(row, column).data().toString();
    }
    static QString selectedArchive(const ConflictsWindow& window) {
        const QModelIndex current = window.archivesView()->currentIndex();
        return current.isValid() ? archiveCell(window, current.row(), ConflictArchivesModel::ArchiveColumn) : QString();
    }
    std::vector<bool> marks() {
        std::vector<bool> out;
        for (int row = 0; row < mounted->model()->rowCount(); ++row)
            out.push_back(mounted->model()->index(row, 0).data(MountedModel::MarkedRole).toBool());
        return out;
    }

    AppRig rig;
    QAbstractItemView* mounted = nullptr;
    std::vector<std::unique_ptr<QAbstractItemModelTester>> testers;
};

TEST_F(ConflictsTest, showsEachArchivesSharedFilesAndThePathsOfTheArchiveSelectedInTheMountedList) {
    ConflictsWindow* window = openFromContextMenu(1);
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->objectName(), QStringLiteral("frmConflicts"));
    // Every mounted row, in mount order, with its count, or why it has none.
    const std::vector<std::pair<QString, QString>> archives = {
        {"A.POD", "2"}, {"B.POD", "2"}, {"C.POD", "1"}, {"BROKEN.POD", "Damaged"}, {"GONE.POD", "Not found"},
        {"E.POD", "0"}};
    ASSERT_EQ(window->archivesModel().rowCount(), int(archives.size()));
    for (size_t row = 0; row < archives.size(); ++row) {
        SCOPED_TRACE(row);
        EXPECT_EQ(archiveCell(*window, int(row), ConflictArchivesModel::OrderColumn), QString::number(row + 1));
        EXPECT_EQ(archiveCell(*window, int(row), ConflictArchivesModel::ArchiveColumn), archives[row].first);
        EXPECT_EQ(archiveCell(*window, int(row), ConflictArchivesModel::SharedColumn), archives[row].second);
    }
    EXPECT_EQ(archiveCell(*window, 0, ConflictArchivesModel::AlsoInColumn), "B.POD (2), C.POD (1)");
    // The archive selected in the mounted list is the one shown; its paths sorted, holders split by
    // mount order, the same size with other bytes told apart from the same bytes.
    EXPECT_EQ(selectedArchive(*window), "B.POD");
    EXPECT_EQ(shownPaths(*window), (std::vector<std::string>{"ART\\SKY.RAW | 999 | A.POD | C.POD | differs",
                                                             "SHARED.TXT | 1,000 | A.POD |  | identical"}));
    EXPECT_TRUE(window->findChild<QLabel*>(QStringLiteral("lblConflicts"))->text().startsWith("2 files are in more"));
    // Sizes sort as numbers, not as their texts ("1,000" before "999").
    window->pathsView()->sortByColumn(ConflictPathsModel::SizeColumn, Qt::AscendingOrder);
    EXPECT_EQ(shownPaths(*window).front().substr(0, 11), "ART\\SKY.RAW");
    window->pathsView()->sortByColumn(ConflictPathsModel::SizeColumn, Qt::DescendingOrder);
    EXPECT_EQ(shownPaths(*window).front().substr(0, 10), "SHARED.TXT");
    // Choosing another archive on the left shows its paths.
    window->archivesView()->setCurrentIndex(window->archivesModel().index(2, 0));
    EXPECT_EQ(shownPaths(*window), std::vector<std::string>{"ART\\SKY.RAW | 999 | A.POD, B.POD |  | differs"});
    window->archivesView()->setCurrentIndex(window->archivesModel().index(5, 0));
    EXPECT_TRUE(shownPaths(*window).empty());
    // The filter keeps rows with the text in any column, without regard to case.
    window->archivesView()->setCurrentIndex(window->archivesModel().index(0, 0));
    window->pathsView()->sortByColumn(ConflictPathsModel::PathColumn, Qt::AscendingOrder);
    const struct {
        const char* typed;
        std::vector<std::string> paths;
    } filters[] = {
        {"shared", {"SHARED.TXT"}},    {"sky", {"ART\\SKY.RAW"}}, {"c.pod", {"ART\\SKY.RAW"}}, // a holder's name
        {"DIFFERS", {"ART\\SKY.RAW"}}, {"nothing like it", {}},   {"", {"ART\\SKY.RAW", "SHARED.TXT"}},
    };
    for (const auto& c : filters) {
        SCOPED_TRACE(c.typed);
        window->filterBox()->clear();
        QTest::keyClicks(window->filterBox(), c.typed);
        std::vector<std::string> paths;
        for (const std::string& row : shownPaths(*window))
            paths.push_back(row.substr(0, row.find(" | ")));
        EXPECT_EQ(paths, c.paths);
    }
}

TEST_F(ConflictsTest, aReorderRefreshesTheOpenWindowKeepingTheSelectedArchive) {
    ConflictsWindow* window = openFromContextMenu(1);
    selectMounted(1);
    QTest::keyClick(mounted, Qt::Key_T, Qt::ControlModifier); // B to the top
    settle();
    EXPECT_EQ(archiveCell(*window, 0, ConflictArchivesModel::ArchiveColumn), "B.POD");
    EXPECT_EQ(selectedArchive(*window), "B.POD");
    // The path is named as the archive loaded earliest spells it: now B.
    EXPECT_EQ(shownPaths(*window), (std::vector<std::string>{"art/sky.raw | 999 |  | A.POD, C.POD | differs",
                                                             "shared.txt | 1,000 |  | A.POD | identical"}));
    // Unmounting C leaves the skies of A and B, which are the same bytes.
    selectMounted(2);
    ASSERT_EQ(mounted->model()->index(2, 0).data().toString(), "C.POD");
    QTest::keyClick(mounted, Qt::Key_Delete);
    settle();
    EXPECT_EQ(shownPaths(*window), (std::vector<std::string>{"art/sky.raw | 999 |  | A.POD | identical",
                                                             "shared.txt | 1,000 |  | A.POD | identical"}));
    // Refresh reads a changed archive again.
    rig.drive.write("C:\\Games\\MTM2\\E.POD", PodWriter().add("SHARED.TXT", "other").pod1());
    window->findChild<QPushButton*>(QStringLiteral("cmdConflictsRefresh"))->click();
    EXPECT_EQ(shownPaths(*window).back(), "shared.txt | 1,000 |  | A.POD, E.POD | differs");
    // With nothing mounted the window empties, filtered or not.
    QTest::keyClicks(window->filterBox(), "sky");
    ASSERT_TRUE(pane().mounter().UnmountAll().ok());
    settle();
    EXPECT_EQ(window->archivesModel().rowCount(), 0);
    EXPECT_EQ(window->pathsModel().rowCount(), 0);
}

TEST_F(ConflictsTest, mountedRowsThatShareFilesAreMarkedOnceAskedWithoutChangingTheList) {
    const std::string podIni = rig.podIni();
    EXPECT_EQ(marks(), std::vector<bool>(6, false));
    // The keyboard's way in: the Mounter menu's key, wherever the focus is in the window.
    rig.window().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&rig.window()));
    QTest::keyClick(&rig.window(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_NE(pane().conflictsWindow(), nullptr);
    EXPECT_TRUE(pane().conflictsWindow()->isVisible());
    EXPECT_EQ(marks(), (std::vector<bool>{true, true, true, false, false, false}));
    const QModelIndex a = mounted->model()->index(0, 0), e = mounted->model()->index(5, 0);
    EXPECT_NE(a.data(Qt::DecorationRole).value<QIcon>().cacheKey(),
              e.data(Qt::DecorationRole).value<QIcon>().cacheKey());
    EXPECT_TRUE(a.data(Qt::ToolTipRole).toString().contains("other mounted PODs also hold"));
    EXPECT_FALSE(e.data(Qt::ToolTipRole).toString().contains("other mounted PODs also hold"));
    EXPECT_EQ(a.data().toString(), "A.POD"); // the texts stay
    // The marks follow the list after the window is closed: without B and C, A shares nothing.
    pane().conflictsWindow()->reject();
    for (int row : {2, 1}) {
        selectMounted(row);
        QTest::keyClick(mounted, Qt::Key_Delete);
        settle();
    }
    EXPECT_EQ(marks(), (std::vector<bool>{false, false, false, false}));
    EXPECT_EQ(rig.podIni(), podIni); // nothing was saved along the way
}

// Mounted: a sound archive, one that cannot be listed, one whose entry runs past its end, one that
// is not there.
GameLayout checkedGame() {
    PodWriter truncated;
    truncated.add(PodWriter::Entry{"BIG.BIN", "short", 50000, {}});
    GameLayout layout;
    layout.podIni = {"FINE.POD", "BROKEN.POD", "CUT.POD", "GONE.POD"};
    layout.archives = {
        {"FINE.POD", PodWriter().add("A.TXT", "a").pod1()}, {"BROKEN.POD", "POD"}, {"CUT.POD", truncated.pod1()}};
    return layout;
}

TEST(CheckPods, listsEveryMountedArchiveWithWhatIsWrongAndCanLeaveOnlyTheProblems) {
    AppRig rig;
    rig.addGame(kGame, checkedGame());
    ASSERT_TRUE(rig.start());
    rig.window().menus().checkPods()->trigger();
    CheckPodsWindow* window = rig.pane().checkPodsWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    QAbstractItemModelTester tester(&window->model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    auto results = [window] {
        QStringList rows;
        const QAbstractItemModel* shown = window->view()->model();
        for (int row = 0; row < shown->rowCount(); ++row)
            rows << shown->index(row, CheckResultsModel::ArchiveColumn).data().toString() + QStringLiteral(": ") +
                        shown->index(row, CheckResultsModel::ResultColumn).data().toString();
        return rows;
    };
    const QStringList all = results();
    ASSERT_EQ(all.size(), 4);
    EXPECT_EQ(all[0], "FINE.POD: Fine");
    EXPECT_TRUE(all[1].startsWith("BROKEN.POD: ") && all[1] != "BROKEN.POD: Fine") << all[1].toStdString();
    EXPECT_TRUE(all[2].startsWith("CUT.POD: Truncated")) << all[2].toStdString();
    EXPECT_EQ(all[3], "GONE.POD: Not found");
    EXPECT_EQ(window->summary()->text(), "3 of the 4 mounted PODs are not fine.");
    window->problemsOnly()->click();
    EXPECT_EQ(results(), all.mid(1));
    window->problemsOnly()->click();
    EXPECT_EQ(results(), all);
    // Checking again after a repair shows the new findings in the same window.
    rig.drive.write("C:\\Games\\MTM2\\CUT.POD", PodWriter().add("BIG.BIN", "whole").pod1());
    rig.window().menus().checkPods()->trigger();
    EXPECT_EQ(rig.pane().checkPodsWindow(), window);
    EXPECT_EQ(results()[2], "CUT.POD: Fine");
    EXPECT_EQ(window->summary()->text(), "2 of the 4 mounted PODs are not fine.");
}

// File > Create POD... and Check POD.
constexpr const char* kFolder = "C:\\Mods\\TRUCK";
constexpr const char* kTarget = "C:\\Mods\\TRUCK.POD";

class CreatePodTest : public ::testing::Test {
protected:
    void SetUp() override {
        rig.addGame("MTM2");
        ASSERT_TRUE(rig.start());
        rig.drive.write(std::string(kFolder) + "\\a.txt", "alpha");
        rig.drive.write(std::string(kFolder) + "\\ART\\b.raw", std::string(300, 'b'));
    }
    std::vector<std::string> listedNames() {
        std::vector<std::string> names;
        for (int row = 0; row < rig.extractor().model().rowCount(); ++row)
            names.push_back(rig.extractor().model().index(row, 0).data().toString().toStdString());
        return names;
    }
    // File > Create POD... with the dialog filled in as given (a folder of nullptr is chosen with
    // Browse... from the scripted folder answer).
    void createFromMenu(const char* folder, const QString& format, const QString& comment) {
        whenShown(QStringLiteral("frmCreatePod"), [=](QWidget* form) {
            auto* dialog = static_cast<CreatePodDialog*>(form);
            if (folder)
                dialog->folderBox()->setText(folder);
            else
                child<QPushButton>(dialog, "cmdPackBrowse")->click();
            dialog->formatBox()->setCurrentIndex(dialog->formatBox()->findText(format));
            dialog->commentBox()->setText(comment);
            child<QPushButton>(dialog, "cmdPackCreate")->click();
        });
        rig.window().menus().createPod()->trigger();
    }

    AppRig rig;
};

TEST_F(CreatePodTest, packsAFolderIntoTheFormatChosenReplacingAnArchiveOnlyOnYesAndListsTheNewOne) {
    rig.drive.write(kTarget, "old archive");
    rig.dialogs().chooseFolder(std::string(kFolder)).answer(MessageAnswer::No);
    createFromMenu(nullptr, QStringLiteral("POD1"), QString());
    EXPECT_EQ(rig.drive.read(kTarget), "old archive");
    EXPECT_EQ(rig.last().buttons, MessageButtons::YesNo);
    EXPECT_TRUE(rig.last().text.contains("already exists"));
    EXPECT_TRUE(rig.extractor().listedArchive().empty() || rig.extractor().listedArchive() != kTarget);
    rig.dialogs().chooseFolder(std::string(kFolder)).answer(MessageAnswer::Yes);
    createFromMenu(nullptr, QStringLiteral("POD1"), QString());
    Result<PodDirectory> written = ListPOD(rig.drive.files(), kTarget);
    ASSERT_TRUE(written);
    EXPECT_FALSE(written->pod2);

    rig.dialogs().answer(MessageAnswer::Yes);
    createFromMenu(kFolder, QStringLiteral("POD2"), QStringLiteral("My truck"));
    EXPECT_TRUE(rig.last().text.contains("2 files")) << rig.dialogs().messageTexts().join("\n").toStdString();
    written = ListPOD(rig.drive.files(), kTarget);
    ASSERT_TRUE(written);
    EXPECT_TRUE(written->pod2);
    EXPECT_TRUE(checkArchive(rig.drive.files(), kTarget).fine()); // checksums as written
    // The new archive is the one the Extractor lists, in the Extractor's pane.
    EXPECT_EQ(rig.extractor().listedArchive(), kTarget);
    EXPECT_EQ(rig.window().currentMode(), ui::Mode::Extractor);
    EXPECT_EQ(listedNames(), (std::vector<std::string>{"a.txt", "ART\\b.raw"}));
    EXPECT_EQ(rig.find<QLineEdit>("txtName")->text(), "My truck");
}

TEST_F(CreatePodTest, checkPodReportsTheListedArchivesFindings) {
    rig.window().menus().checkPod()->trigger(); // nothing listed yet
    EXPECT_TRUE(rig.last().text.contains("List a POD first"));
    rig.drive.write("C:\\Games\\MTM2\\CUT.POD",
                    PodWriter().add(PodWriter::Entry{"BIG.BIN", "short", 50000, {}}).pod1());
    rig.extractor().ListPOD("C:\\Games\\MTM2\\", "CUT.POD");
    rig.window().menus().checkPod()->trigger();
    EXPECT_TRUE(rig.last().text.contains("Truncated", Qt::CaseInsensitive)) << rig.last().text.toStdString();
    EXPECT_EQ(rig.last().icon, MessageIcon::Exclamation);
    rig.drive.write("C:\\Games\\MTM2\\CUT.POD", PodWriter().add("BIG.BIN", "whole").pod1()); // repaired
    rig.window().menus().checkPod()->trigger();
    EXPECT_EQ(rig.last().icon, MessageIcon::Information);
}

TEST(CreatePodDialog, proposesAnArchiveNamedAfterTheFolderAndRefusesWhatCannotBeCreated) {
    TempDrive drive;
    const std::pair<const char*, const char*> proposals[] = {{"C:\\Mods\\TRUCK\\", "C:\\Mods\\TRUCK.POD"},
                                                             {"C:\\Mods\\TRUCK", "C:\\Mods\\TRUCK.POD"},
                                                             {"C:\\", "C:\\NEW.POD"},
                                                             {"", ""}};
    for (const auto& [folder, target] : proposals)
        EXPECT_EQ(CreatePodDialog::proposedTarget(folder), target) << folder;
    CreatePodDialog dialog(drive.dialogs(), "C:\\Games\\MTM2\\");
    EXPECT_EQ(dialog.folderBox()->text(), "C:\\Games\\MTM2");
    EXPECT_EQ(dialog.targetBox()->text(), "C:\\Games\\MTM2.POD");
    dialog.folderBox()->setText("C:\\Mods\\RED");
    EXPECT_EQ(dialog.targetBox()->text(), "C:\\Mods\\RED.POD");
    QTest::keyClicks(dialog.targetBox(), "X"); // typed by the user: the proposals stop
    dialog.folderBox()->setText("C:\\Mods\\BLUE");
    EXPECT_EQ(dialog.request().target, "C:\\Mods\\RED.PODX");
    EXPECT_EQ(dialog.request().folder, "C:\\Mods\\BLUE");

    ScopedGameCodec western(GameCodec{});
    const struct {
        const char* folder;
        const char* target; // nullptr: the proposed one
        QString comment;
        const char* refusal;
    } cases[] = {
        {"", "C:\\X.POD", QString(), "Choose the folder"},
        {"Mods", "C:\\X.POD", QString(), "whole path"},
        {"C:\\Mods", "", QString(), "Type the path"},
        {"C:\\Mods", "X.POD", QString(), "whole path"},
        {"C:\\Mods", nullptr, QStringLiteral("Трасса"), "cannot represent the comment"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.refusal);
        drive.dialogs().clear();
        CreatePodDialog refusing(drive.dialogs(), "C:\\");
        refusing.folderBox()->setText(c.folder);
        if (c.target)
            refusing.targetBox()->setText(c.target);
        refusing.commentBox()->setText(c.comment);
        refusing.accept();
        EXPECT_NE(refusing.result(), QDialog::Accepted);
        ASSERT_EQ(drive.dialogs().messages().size(), 1u);
        EXPECT_TRUE(drive.dialogs().lastMessage().text.contains(c.refusal))
            << drive.dialogs().lastMessage().text.toStdString();
    }
}

} // namespace
} // namespace korvel::testing
