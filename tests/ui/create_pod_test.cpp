#include "platform/game_codec.h"
#include "pod/pod_check.h"
#include "pod/pod_directory.h"
#include "pod/widgets/create_pod_dialog.h"
#include "pod/widgets/extractor_pane.h"
#include "pod/widgets/listing_model.h"
#include "pod_writer.h"
#include "ui/main_menus.h"
#include "ui_rig.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace korvel::testing {
namespace {

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
    ExtractorPane& extractor() { return *rig.window().findChild<ExtractorPane*>(); }
    std::vector<std::string> listedNames() {
        std::vector<std::string> names;
        for (int row = 0; row < extractor().model().rowCount(); ++row)
            names.push_back(extractor().model().index(row, 0).data().toString().toStdString());
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

TEST_F(CreatePodTest, packsAFolderIntoTheFormatChosenAndListsTheNewArchive) {
    createFromMenu(kFolder, QStringLiteral("POD2"), QStringLiteral("My truck"));
    ASSERT_TRUE(rig.drive.exists(kTarget)) << rig.dialogs().messageTexts().join("\n").toStdString();
    EXPECT_TRUE(rig.last().text.contains("2 files"));
    Result<PodDirectory> written = ListPOD(rig.drive.files(), kTarget);
    ASSERT_TRUE(written);
    EXPECT_TRUE(written->pod2);
    EXPECT_TRUE(checkArchive(rig.drive.files(), kTarget).fine()); // checksums as written
    // The new archive is the one the Extractor lists, in the Extractor's pane.
    EXPECT_EQ(extractor().listedArchive(), kTarget);
    EXPECT_EQ(rig.window().currentMode(), ui::Mode::Extractor);
    EXPECT_EQ(listedNames(), (std::vector<std::string>{"a.txt", "ART\\b.raw"}));
    EXPECT_EQ(rig.find<QLineEdit>("txtName")->text(), "My truck");
}

TEST_F(CreatePodTest, anExistingArchiveIsReplacedOnlyWhenTheUserSaysYes) {
    rig.drive.write(kTarget, "old archive");
    rig.dialogs().chooseFolder(std::string(kFolder)).answer(MessageAnswer::No);
    createFromMenu(nullptr, QStringLiteral("POD1"), QString());
    EXPECT_EQ(rig.drive.read(kTarget), "old archive");
    EXPECT_EQ(rig.last().buttons, MessageButtons::YesNo);
    EXPECT_TRUE(rig.last().text.contains("already exists"));
    EXPECT_TRUE(extractor().listedArchive().empty() || extractor().listedArchive() != kTarget);

    rig.dialogs().chooseFolder(std::string(kFolder)).answer(MessageAnswer::Yes);
    createFromMenu(nullptr, QStringLiteral("POD1"), QString());
    Result<PodDirectory> written = ListPOD(rig.drive.files(), kTarget);
    ASSERT_TRUE(written);
    EXPECT_FALSE(written->pod2);
    EXPECT_EQ(extractor().listedArchive(), kTarget);
    EXPECT_EQ(listedNames().size(), 2u);
}

TEST_F(CreatePodTest, checkPodReportsTheListedArchivesFindings) {
    rig.window().menus().checkPod()->trigger(); // nothing listed yet
    EXPECT_TRUE(rig.last().text.contains("List a POD first"));
    const struct {
        const char* file;
        std::string bytes;
        const char* finding;
        MessageIcon icon;
    } cases[] = {
        {"FINE.POD", PodWriter().add("A.TXT", "a").pod1(), "Fine", MessageIcon::Information},
        {"CUT.POD", PodWriter().add(PodWriter::Entry{"BIG.BIN", "short", 50000, {}}).pod1(), "Truncated",
         MessageIcon::Exclamation},
        {"WRONG.POD", PodWriter().add("A.TXT", "a").pod2(), "checksum", MessageIcon::Exclamation},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        rig.drive.write(std::string("C:\\Games\\MTM2\\") + c.file, c.bytes);
        extractor().ListPOD("C:\\Games\\MTM2\\", c.file);
        rig.window().menus().checkPod()->trigger();
        EXPECT_TRUE(rig.last().text.contains(QString::fromLatin1(c.finding), Qt::CaseInsensitive))
            << rig.last().text.toStdString();
        EXPECT_EQ(rig.last().icon, c.icon);
    }
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
