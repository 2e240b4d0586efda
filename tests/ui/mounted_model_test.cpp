#include "mounter/mounter.h"
#include "mounter/widgets/mounted_model.h"
#include "platform/short_path.h"
#include "startup/settings_names.h"
#include "temp_game.h"

#include <QAbstractItemModelTester>
#include <QItemSelectionModel>
#include <QMimeData>
#include <QUrl>

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

namespace {

class MountedModelTest : public ::testing::Test {
protected:
    MountedModelTest() : settings(drive.registry(), drive.dialogs()) {
        session.currentGame = "MTM2";
        session.location = "C:\\Games\\MTM2";
        session.locationIni = "C:\\Games\\MTM2\\POD.INI";
        session.mmpa = "99";
        for (const char* name : {"A.POD", "B.POD", "C.POD", "D.POD", "ADDON\\E.POD", "ADDON\\F.POD"})
            drive.write(session.location + "\\" + name, "POD");
        drive.write(session.locationIni, "4\r\nA.POD\r\nB.POD\r\nC.POD\r\nGONE.POD\r\n");
        session.shortGameFolder = ShortPath(drive.files(), "", session.location, true) + "\\";
        settings.CreateKey(settings::profileKey("MTM2"));
        mounter = std::make_unique<Mounter>(session, settings, drive.services());
    }

    std::vector<std::string> column(const QAbstractItemModel& model, int role = MountedModel::PathRole) {
        std::vector<std::string> out;
        for (int row = 0; row < model.rowCount(); ++row)
            out.push_back(model.index(row, 0).data(role).toString().toStdString());
        return out;
    }

    TempDrive drive;
    SettingsStore settings;
    Session session;
    std::unique_ptr<Mounter> mounter;
};

TEST_F(MountedModelTest, followsEveryOperationAndPassesTheModelTester) {
    MountedModel mounted(mounter->mounted());
    MountedModel unmounted(mounter->unmounted());
    QAbstractItemModelTester mountedTester(&mounted, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QAbstractItemModelTester unmountedTester(&unmounted, QAbstractItemModelTester::FailureReportingMode::Fatal);

    ASSERT_TRUE(mounter->refreshBoth().ok());
    EXPECT_EQ(column(mounted), (std::vector<std::string>{"A.POD", "B.POD", "C.POD", "GONE.POD"}));
    EXPECT_EQ(mounted.index(3, MountedModel::StatusColumn).data().toString(), "Not found");
    EXPECT_EQ(unmounted.index(0, MountedModel::NameColumn).data().toString(), "\\ADDON\\E.POD");
    EXPECT_EQ(mounted.headerData(MountedModel::StatusColumn, Qt::Horizontal).toString(), "Status");

    mounter->unmounted().setSelected(1, true);
    mounter->MountSelected();
    mounter->mounted().clearSelection();
    mounter->mounted().setSelected(1, true);
    mounter->mounted().setSelected(3, true);
    mounter->MoveSelectedToTop();
    mounter->MoveSelectedDown();
    mounter->MoveSelectedUp();
    mounter->MoveSelectedToBottom();
    mounter->dropSelectedRows(0);
    mounter->dropFiles({session.location + "\\D.POD"}, 2);
    mounter->CleanMissing();
    mounter->UnmountSelected();
    mounter->MountAll();
    mounter->UnmountAll();
    EXPECT_EQ(mounted.rowCount(), 0);
    EXPECT_EQ(unmounted.rowCount(), 6);
}

TEST_F(MountedModelTest, keepsTheViewSelectionAndTheRowFlagsTheSameBothWays) {
    ASSERT_TRUE(mounter->LoadMountedList().ok());
    MountedModel model(mounter->mounted());
    QItemSelectionModel selection(&model);
    model.bindSelection(&selection);
    EXPECT_TRUE(selection.isRowSelected(0, QModelIndex())); // the load selected the first row

    selection.select(model.index(2, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    EXPECT_EQ(mounter->mounted().selectedRows(), (std::vector<int>{0, 2}));

    mounter->MoveSelectedDown(); // rows 0 and 2 move to 1 and 3
    EXPECT_EQ(mounter->mounted().selectedRows(), (std::vector<int>{1, 3}));
    EXPECT_FALSE(selection.isRowSelected(0, QModelIndex()));
    EXPECT_TRUE(selection.isRowSelected(1, QModelIndex()));
    EXPECT_TRUE(selection.isRowSelected(3, QModelIndex()));

    mounter->UnmountSelected();
    EXPECT_EQ(column(model), (std::vector<std::string>{"B.POD", "GONE.POD"}));
    EXPECT_FALSE(selection.hasSelection());

    EXPECT_TRUE(model.setData(model.index(1, 0), true, MountedModel::SelectedRole));
    EXPECT_TRUE(selection.isRowSelected(1, QModelIndex()));
}

TEST_F(MountedModelTest, handsDropsOnWithTheRowUnderThePointer) {
    ASSERT_TRUE(mounter->LoadMountedList().ok());
    MountedModel model(mounter->mounted());
    QStringList droppedFiles;
    int fileRow = -2, rowsRow = -2;
    QObject::connect(&model, &MountedModel::filesDropped, [&](const QStringList& files, int row) {
        droppedFiles = files;
        fileRow = row;
    });
    QObject::connect(&model, &MountedModel::rowsDropped, [&](int row) { rowsRow = row; });

    std::unique_ptr<QMimeData> rows(model.mimeData({model.index(0, 0)}));
    EXPECT_TRUE(model.dropMimeData(rows.get(), Qt::MoveAction, -1, -1, model.index(2, 0)));
    EXPECT_EQ(rowsRow, 2);

    QMimeData files;
    files.setUrls({QUrl::fromLocalFile("/tmp/X.POD"), QUrl("https://example.org/Y.POD")});
    EXPECT_TRUE(model.dropMimeData(&files, Qt::CopyAction, -1, -1, QModelIndex()));
    EXPECT_EQ(droppedFiles, QStringList{"/tmp/X.POD"});
    EXPECT_EQ(fileRow, -1);
}

} // namespace
