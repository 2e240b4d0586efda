#include "child_run.h"

#include <gtest/gtest.h>

// The game files that more than one program changes: two korvel-cli commands started together
// over and over never undo each other's change.

namespace korvel::testing {
namespace {

// A file two commands (%g: the game folder) change, as it starts: after they raced over it, it must
// hold every text of `kept` and none of `gone`.
struct EditedFile {
    const char* name;
    const char* target;
    QByteArray start;
    const char* first;
    const char* second;
    QList<QByteArray> kept;
    QList<QByteArray> gone;
};

void PrintTo(const EditedFile& file, std::ostream* out) {
    *out << file.name;
}

const QByteArray kMonster = "showHiddenTrack=0\r\nkookyHornFlag=0\r\ngLocalizationFile=UI\\MTM2.loc\r\n";
const QByteArray kPlayer = "103\r\n3\r\n1\r\nAlice\r\nRAM.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n"
                           "Bob\r\nBIG.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n"
                           "Carol\r\nVAN.TRK\r\n1\r\n2\r\n3\r\n4\r\n5\r\n";

const EditedFile kFiles[] = {
    {"pod_ini",
     "POD.INI",
     "1\r\nTRUCKS.POD\r\n",
     "mounter --game %g mount %g/ADDON/ARENA.POD",
     "mounter --game %g mount %g/ADDON/BOMBTAG.POD",
     {"ADDON\\ARENA.POD\r\n", "ADDON\\BOMBTAG.POD\r\n", "3\r\n"},
     {}},
    {"monster_ini",
     "system/monster.ini",
     kMonster,
     "monster --game %g --horn on",
     "monster --game %g --hidden-track on",
     {"showHiddenTrack=666\r\n", "kookyHornFlag=1\r\n"},
     {}},
    {"player_pro",
     "player.pro",
     kPlayer,
     "drivers --game %g remove Alice",
     "drivers --game %g remove Carol",
     {"Bob\r\n", "103\r\n1\r\n"},
     {"Alice\r\n", "Carol\r\n"}},
    {"settings_file", "registry.json", "", "settings set Mode E", "settings set Lock 2", {"\"Mode\"", "\"Lock\""}, {}},
};

class EditedFiles : public CliGameFolder, public ::testing::TestWithParam<EditedFile> {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_temp.isValid());
        for (const char* name : {"TRUCKS.POD", "ADDON/ARENA.POD", "ADDON/BOMBTAG.POD"})
            ASSERT_TRUE(writeFile(inGame(name), QByteArray("POD")));
        if (!GetParam().start.isEmpty()) {
            ASSERT_TRUE(writeFile(target(), GetParam().start));
        }
    }
    QString target() const { return inGame(GetParam().target); }
};

TEST_P(EditedFiles, twoCommandsStartedTogetherKeepBothChanges) {
    const EditedFile& edit = GetParam();
    int lost = 0;
    QByteArray example;
    for (int round = 0; round < 50; ++round) {
        QFile::remove(target()); // the settings file starts missing
        ASSERT_TRUE(edit.start.isEmpty() || writeFile(target(), edit.start));
        QProcess first, second;
        for (QProcess* process : {&first, &second})
            process->setProcessEnvironment(environment());
        first.start(cliProgram(), command(edit.first));
        second.start(cliProgram(), command(edit.second));
        for (QProcess* process : {&first, &second}) {
            ASSERT_TRUE(process->waitForFinished(30000));
            ASSERT_EQ(process->exitStatus(), QProcess::NormalExit);
            ASSERT_EQ(process->exitCode(), 0) << process->readAllStandardError().toStdString();
        }
        const QByteArray now = readFile(target());
        bool whole = true;
        for (const QByteArray& text : edit.kept)
            whole = whole && now.contains(text);
        for (const QByteArray& text : edit.gone)
            whole = whole && !now.contains(text);
        if (!whole) {
            ++lost;
            example = now;
        }
    }
    EXPECT_EQ(lost, 0) << "one command's change was lost in " << lost << " of 50 rounds, e.g.:\n"
                       << example.toStdString();
}

INSTANTIATE_TEST_SUITE_P(EveryEditedFile, EditedFiles, ::testing::ValuesIn(kFiles),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace korvel::testing
