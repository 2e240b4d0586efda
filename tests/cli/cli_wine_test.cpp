#include "cli_run.h"
#include "pod_writer.h"

#include <QStringEncoder>

namespace {

// korvel-cli under the locale "C" (code page 1252 unless told otherwise), with game folders and
// archives named in other alphabets.
class WineCli : public CliFolder {
protected:
    static QByteArray inCodePage(const char* converter, const QString& text) {
        QStringEncoder encoder(converter);
        return encoder.encode(text);
    }
    CliRun run(const QStringList& args, const QStringList& environment = {}) const {
        return cli(args, QStringList{"LC_ALL=C", "LANG=C", "HOME=" + path("home")} + environment);
    }
    CliRun runs(const QStringList& args, const QStringList& environment = {}) const {
        return succeeds(args, QStringList{"LC_ALL=C", "LANG=C", "HOME=" + path("home")} + environment);
    }
};

} // namespace

// The code page's own rules are checked on their own; this is the option and the variable reaching the
// mounter, which stores names in the code page's capitals.
TEST_F(WineCli, mountsArchivesWithNamesOfTheChosenCodePageAndWritesThemInIt) {
    write(QStringLiteral("Игры/Монстры/POD.INI"), "99\r\n");
    write(QStringLiteral("Игры/Монстры/ADDON/Трасса.POD"), "POD");
    const QString game = path(QStringLiteral("Игры/Монстры"));
    runs({"--codepage", "1251", "mounter", "--game", game, "mount", game + QStringLiteral("/ADDON/Трасса.POD")});
    const QString stored = QStringLiteral("ADDON\\ТРАССА.POD");
    EXPECT_EQ(read(QStringLiteral("Игры/Монстры/POD.INI")), "1\r\n" + inCodePage("windows-1251", stored) + "\r\n");
    const CliRun shown = run({"mounter", "--game", game, "show"}, {"KORVEL_CODEPAGE=1251"});
    EXPECT_TRUE(shown.out.contains("\\" + stored + "\tMounted\t" + stored)) << shown.out.toStdString();
}

TEST_F(WineCli, takesTheWinePrefixsCodePageBeforeTheLocales) {
    write("prefix/system.reg",
          "WINE REGISTRY Version 2\n\n[System\\\\CurrentControlSet\\\\Control\\\\Nls\\\\CodePage] 1\n"
          "\"ACP\"=\"1251\"\n\"OEMCP\"=\"866\"\n");
    write("Игры/POD.INI", "99\r\n");
    write("Игры/Трасса.POD", "POD");
    const CliRun mounted = runs({"mounter", "--game", path("Игры"), "mount", path("Игры/Трасса.POD")},
                                {"WINEPREFIX=" + path("prefix"), "LC_ALL=pl_PL.UTF-8"});
    EXPECT_EQ(read("Игры/POD.INI"), "1\r\n" + inCodePage("windows-1251", "ТРАССА.POD") + "\r\n");
}

TEST_F(WineCli, refusesANameTheCodePageCannotHoldInsteadOfWritingQuestionMarks) {
    write("game/POD.INI", "99\r\n");
    write("game/Трасса.POD", "POD");
    const CliRun refused = run({"mounter", "--game", path("game"), "mount", path("game/Трасса.POD")});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.contains("Трасса.POD")) << refused.err.toStdString();
    EXPECT_TRUE(refused.err.contains("windows-1252")) << refused.err.toStdString();
    EXPECT_EQ(read("game/POD.INI"), "99\r\n");
    // Nor does it appear among the unmounted archives with "?" for its letters.
    EXPECT_FALSE(run({"mounter", "--game", path("game"), "show"}).out.contains("?"));

    const CliRun badName = run({"profiles", "add", write("MTM2/monster.exe", "MZ"), "--name", "Гонки"});
    EXPECT_EQ(badName.status, 1);
    EXPECT_TRUE(badName.err.contains("Гонки")) << badName.err.toStdString();
    EXPECT_EQ(run({"profiles", "list"}).out, "");

    write("game/system/monster.ini", "showHiddenTrack=0\r\nkookyHornFlag=0\r\ngLocalizationFile=UI\\MTM2.loc\r\n");
    const CliRun language = run({"monster", "--game", path("game"), "--language", "UI\\Русский.loc"});
    EXPECT_EQ(language.status, 1);
    EXPECT_TRUE(language.err.contains("Русский.loc")) << language.err.toStdString();
    EXPECT_TRUE(read("game/system/monster.ini").contains("gLocalizationFile=UI\\MTM2.loc\r\n"));
    EXPECT_EQ(run({"settings", "set", "Note", "Привет"}).status, 1);
    EXPECT_EQ(run({"--codepage", "1251", "settings", "set", "Note", "Привет"}).status, 0);
}

TEST_F(WineCli, extractsAndListsArchiveEntriesNamedInTheCodePage) {
    korvel::testing::PodWriter pod;
    pod.add(inCodePage("Shift_JIS", "データ\\トラック.BMP").toStdString(), "bmp");
    pod.add(inCodePage("Shift_JIS", "説明.TXT").toStdString(), "text");
    const QString archive = write("JAPAN.POD", pod.pod2());
    const CliRun extracted = runs({"--codepage=932", "extract", archive, "--to", path("out")});
    EXPECT_EQ(read("out/データ/トラック.BMP"), "bmp");
    EXPECT_EQ(read("out/説明.TXT"), "text");

    const CliRun listed = run({"list", archive, "--json"}, {"KORVEL_CODEPAGE=932"});
    EXPECT_TRUE(listed.out.contains("データ\\\\トラック.BMP")) << listed.out.toStdString();
    const CliRun one = runs({"--codepage", "932", "extract", archive, "--to", path("one"), "説明.txt"});
    EXPECT_EQ(read("one/説明.TXT"), "text");
}

TEST_F(WineCli, takesGamePathsAndHomePathsWhereverAPathIsTyped) {
    write("game/POD.INI", "99\r\n");
    write("game/TRUCKS.POD", "POD");
    write("extra/EXTRA.POD", "POD");
    write("home/Games/MTM2/monster.exe", "MZ");
    const CliRun shown = runs({"mounter", "--game", "C:\\game", "--extra-dirs", "C:\\EXTRA", "show"});
    EXPECT_TRUE(shown.out.contains("TRUCKS.POD\tUnmounted")) << shown.out.toStdString();
    EXPECT_TRUE(shown.out.contains("\tUnmounted\tC:\\EXTRA\\EXTRA.POD")) << shown.out.toStdString();
    EXPECT_EQ(run({"mounter", "--game", "C:\\game", "mount", "c:\\GAME\\trucks.pod"}).status, 0);
    EXPECT_EQ(read("game/POD.INI"), "1\r\nTRUCKS.POD\r\n");

    const CliRun added = runs({"profiles", "add", "~/Games/MTM2/monster.exe"});
    EXPECT_TRUE(added.out.contains("C:\\home\\Games\\MTM2\\monster.exe")) << added.out.toStdString();

    const CliRun unmapped = run({"mounter", "--game", "Q:\\game", "show"});
    EXPECT_EQ(unmapped.status, 1);
    EXPECT_TRUE(unmapped.err.contains("drive Q:")) << unmapped.err.toStdString();
}

TEST_F(WineCli, refusesAnUnknownCodePageAndAMissingOne) {
    const CliRun unknown = run({"--codepage", "martian", "profiles", "list"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_TRUE(unknown.err.contains("\"martian\"")) << unknown.err.toStdString();
    EXPECT_EQ(run({"profiles", "list", "--codepage"}).status, 2);
}
