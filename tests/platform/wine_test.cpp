#include "fake_wine.h"
#include "platform/game_codec.h"
#include "platform/wine.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

namespace {

const std::vector<RegFileValue> kValues = {
    {"HKEY_LOCAL_MACHINE\\SOFTWARE\\Game\\2.0", "InstalledPath", "C:\\Games\\MTM2"},
    {"HKEY_LOCAL_MACHINE\\SOFTWARE\\Game\\2.0", "Quote", "say \"hi\""},
    {"HKEY_LOCAL_MACHINE\\SOFTWARE\\Lobby", "CommandLine", ""},
};

} // namespace

TEST(RegFile, isUtf16WithAByteOrderMarkAndEscapesBackslashesAndQuotesAndCarriesTheCodePagesText) {
    const QByteArray bytes = regFileText(kValues);
    ASSERT_TRUE(bytes.startsWith("\xFF\xFE"));
    ASSERT_EQ(bytes.size() % 2, 0);
    EXPECT_EQ(fromUtf16File(bytes), "Windows Registry Editor Version 5.00\r\n"
                                    "\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Game\\2.0]\r\n"
                                    "\"InstalledPath\"=\"C:\\\\Games\\\\MTM2\"\r\n"
                                    "\"Quote\"=\"say \\\"hi\\\"\"\r\n"
                                    "\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Lobby]\r\n"
                                    "\"CommandLine\"=\"\"\r\n\r\n");
    ScopedGameCodec cyrillic(*GameCodec::forCodePage(1251));
    const QString text =
        fromUtf16File(regFileText({{"HKEY_LOCAL_MACHINE\\SOFTWARE\\G", "Path", "C:\\\xc8\xe3\xf0\xfb"}}));
    EXPECT_TRUE(text.contains(QStringLiteral("\"Path\"=\"C:\\\\Игры\""))) << text.toStdString();
}

TEST(WineRegistryImport, runsRegeditSilentlyInThePrefixOrOffersTheFileWhenWineIsMissingOrFails) {
    QTemporaryDir dir;
    const QString regFile = dir.filePath("game.reg");
    {
        ScopedEnvironment wine("KORVEL_WINE", writeFakeWine(dir).toUtf8());
        const RegImportOutcome outcome = importIntoWinePrefix(kValues, regFile, dir.filePath("prefix"));
        ASSERT_TRUE(outcome.imported) << outcome.message.toStdString();
        const QString zPath = "Z:" + QString(regFile).replace('/', '\\');
        EXPECT_EQ(QString::fromUtf8(fileBytes(dir.filePath("wine-args"))).split('\n'),
                  (QStringList{dir.filePath("prefix"), "regedit", "/S", zPath, ""}));
        EXPECT_EQ(fileBytes(dir.filePath("imported.reg")), regFileText(kValues));
        EXPECT_TRUE(outcome.message.contains(dir.filePath("prefix")));
        EXPECT_TRUE(outcome.message.contains("HKEY_LOCAL_MACHINE\\SOFTWARE\\Lobby"));
    }
    const std::pair<QByteArray, const char*> failures[] = {
        {dir.filePath("no-such-wine").toUtf8(), "Wine was not found"},
        {writeFakeWine(dir, 3).toUtf8(), "ended with status 3"},
    };
    for (const auto& [program, reason] : failures) {
        SCOPED_TRACE(reason);
        ScopedEnvironment wine("KORVEL_WINE", program);
        QFile::remove(regFile);
        const RegImportOutcome outcome = importIntoWinePrefix(kValues, regFile, dir.filePath("prefix"));
        EXPECT_FALSE(outcome.imported);
        EXPECT_TRUE(outcome.message.contains(reason)) << outcome.message.toStdString();
        EXPECT_TRUE(outcome.message.contains("wine regedit " + regFile)) << outcome.message.toStdString();
        EXPECT_EQ(fileBytes(regFile), regFileText(kValues));
    }
}

TEST(GameLaunch, startsTheExecutableThroughWineOrTheLaunchCommandInThePrefix) {
    QTemporaryDir dir;
    const QString exe = dir.filePath("MTM2.EXE");
    QFile(exe).open(QIODevice::WriteOnly);
    const QString fakeWine = writeFakeWine(dir);
    ScopedEnvironment wine("KORVEL_WINE", fakeWine.toUtf8());

    const Result<GameLaunchPlan> plain = planGameLaunch(exe, dir.path(), QString(), dir.filePath("prefix"));
    ASSERT_TRUE(plain) << plain.failure().message.toStdString();
    EXPECT_EQ(plain->program, fakeWine);
    EXPECT_EQ(plain->arguments, QStringList{exe});
    EXPECT_EQ(plain->workingFolder, dir.path());
    EXPECT_EQ(plain->environment.value("WINEPREFIX"), dir.filePath("prefix"));

    const Result<GameLaunchPlan> wrapped =
        planGameLaunch(exe, dir.path(), "env \"LABEL=my game\" WINEDEBUG=-all", dir.filePath("prefix"));
    ASSERT_TRUE(wrapped) << wrapped.failure().message.toStdString();
    EXPECT_TRUE(wrapped->program.endsWith("/env"));
    EXPECT_EQ(wrapped->arguments, (QStringList{"LABEL=my game", "WINEDEBUG=-all", exe}));

    const std::pair<Result<GameLaunchPlan>, const char*> refusals[] = {
        {planGameLaunch(dir.filePath("NONE.EXE"), dir.path(), QString(), QString()), "executable was not found"},
        {planGameLaunch(exe, dir.path(), "no-such-launcher --go", QString()), "\"no-such-launcher\" was not found"},
    };
    for (const auto& [plan, reason] : refusals) {
        ASSERT_FALSE(plan) << reason;
        EXPECT_TRUE(plan.failure().message.contains(reason)) << plan.failure().message.toStdString();
    }
    ScopedEnvironment noWine("KORVEL_WINE", dir.filePath("no-such-wine").toUtf8());
    const Result<GameLaunchPlan> missing = planGameLaunch(exe, dir.path(), QString(), QString());
    ASSERT_FALSE(missing);
    EXPECT_TRUE(missing.failure().message.contains("Wine was not found"));
}
