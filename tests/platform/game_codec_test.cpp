#include "platform/file_services.h"
#include "platform/game_codec.h"
#include "platform/game_text.h"
#include "platform/path_map.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace korvel;

namespace {

GameCodec codePage(int number) {
    std::optional<GameCodec> codec = GameCodec::forCodePage(number);
    EXPECT_TRUE(codec.has_value()) << number;
    return codec.value_or(GameCodec());
}

std::string hex(const std::string& bytes) {
    return QByteArray::fromStdString(bytes).toHex(' ').toStdString();
}

void touch(const QString& path) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
}

} // namespace

TEST(GameCodec, encodesNamesInTheirCodePageAndBack) {
    const struct {
        int codePage;
        QString name;
        std::string bytes;
    } cases[] = {
        {1252, QStringLiteral("Café €"), "43 61 66 e9 20 80"},
        {1251, QStringLiteral("Жёлтый"), "c6 b8 eb f2 fb e9"},
        {1250, QStringLiteral("Łódź"), "a3 f3 64 9f"},
        {932, QStringLiteral("日本ｱ"), "93 fa 96 7b b1"},
    };
    for (const auto& c : cases) {
        const GameCodec codec = codePage(c.codePage);
        const std::optional<std::string> bytes = codec.encode(c.name);
        ASSERT_TRUE(bytes) << c.codePage;
        EXPECT_EQ(hex(*bytes), c.bytes) << c.codePage;
        EXPECT_EQ(codec.decode(*bytes), c.name) << c.codePage;
    }
}

TEST(GameCodec, refusesLettersItsCodePageLacksAndShowsThemAsQuestionMarksOnlyWhenAskedTo) {
    const struct {
        int codePage;
        QString name;
        std::string lossy;
    } cases[] = {
        {1252, QStringLiteral("Гонки.pod"), "?????.pod"},
        {1251, QStringLiteral("Łódź"), "??d?"},
        {1250, QStringLiteral("Жук"), "???"},
        {932, QStringLiteral("Łx"), "?x"},
    };
    for (const auto& c : cases) {
        const GameCodec codec = codePage(c.codePage);
        EXPECT_FALSE(codec.encode(c.name)) << c.codePage;
        EXPECT_EQ(hex(codec.encodeLossy(c.name)), hex(c.lossy)) << c.codePage;
    }
}

TEST(GameCodec, isNamedByNumberOrByTheNamesUsersGive) {
    const std::pair<const char*, int> known[] = {{"1251", 1251},   {"cp1250", 1250},   {"Windows-1252", 1252},
                                                 {" CP932 ", 932}, {"Shift_JIS", 932}, {"ansi1253", 1253},
                                                 {"utf-8", 65001}};
    for (const auto& [text, number] : known) {
        const std::optional<GameCodec> codec = GameCodec::fromText(QString::fromLatin1(text));
        ASSERT_TRUE(codec) << text;
        EXPECT_EQ(codec->codePage(), number) << text;
    }
    for (const char* unknown : {"", "1234", "klingon", "cp"})
        EXPECT_FALSE(GameCodec::fromText(QString::fromLatin1(unknown))) << unknown;
}

TEST(GameCodec, upperCasesTheCodePagesOwnLettersButNeverTheSecondByteOfADoubleByteLetter) {
    {
        ScopedGameCodec cyrillic(codePage(1251));
        EXPECT_EQ(hex(upperGame("\xe6\xf7z")), "c6 d7 5a"); // ж ч z: 0xF7 is a letter here, unlike in 1252
        EXPECT_TRUE(equalsIgnoreCase("\xc8\xc3\xd0\xdb", "\xe8\xe3\xf0\xfb")); // ИГРЫ = игры
    }
    {
        ScopedGameCodec western(GameCodec{});
        EXPECT_EQ(hex(upperGame("\xe9\xf7\xff")), "c9 f7 9f");
    }
    ScopedGameCodec japanese(codePage(932));
    const std::string withLowerTrail = "\x83\x61"; // a katakana letter whose second byte is "a"
    const std::string withUpperTrail = "\x83\x41";
    ASSERT_FALSE(GameCodec::active().decode(withLowerTrail).contains(QLatin1Char('a')));
    EXPECT_EQ(upperGame(withLowerTrail + "x.pod"), withLowerTrail + "X.POD");
    EXPECT_FALSE(equalsIgnoreCase(withLowerTrail, withUpperTrail));
    EXPECT_TRUE(equalsIgnoreCase(withLowerTrail + "x.POD", withLowerTrail + "X.pod"));
}

TEST(GameCodec, takesTheCodePageOfTheLocaleAsWineDoes) {
    const std::pair<const char*, std::optional<int>> cases[] = {
        {"ru_RU.UTF-8", 1251},   {"uk_UA", 1251},      {"pl_PL.UTF-8", 1250},     {"cs_CZ", 1250},
        {"el_GR", 1253},         {"ja_JP.UTF-8", 932}, {"zh_CN.UTF-8", 936},      {"zh_TW.Big5", 950},
        {"ko_KR", 949},          {"de_DE@euro", 1252}, {"en_US.UTF-8", 1252},     {"C", std::nullopt},
        {"POSIX", std::nullopt}, {"", std::nullopt},   {"C.UTF-8", std::nullopt},
    };
    for (const auto& [locale, expected] : cases)
        EXPECT_EQ(localeCodePage(QString::fromLatin1(locale)), expected) << locale;
}

TEST(GameCodec, readsTheAnsiCodePageOfAWinePrefixFromItsSystemRegistryOnly) {
    QTemporaryDir prefix;
    auto writeSystemReg = [&](const QByteArray& text) {
        QFile file(prefix.filePath("system.reg"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
    };
    EXPECT_EQ(winePrefixCodePage(prefix.path()), std::nullopt); // no file
    writeSystemReg("WINE REGISTRY Version 2\n;; All keys relative to \\\\Machine\n\n"
                   "[Software\\\\Other\\\\CodePage] 1700000000\n\"ACP\"=\"932\"\n\n"
                   "[System\\\\CurrentControlSet\\\\Control\\\\Nls\\\\CodePage] 1700000001\n#time=1d9\n"
                   "\"1250\"=\"c_1250.nls\"\n\"ACP\"=\"1251\"\n\"OEMCP\"=\"866\"\n\n"
                   "[System\\\\CurrentControlSet\\\\Control\\\\Nls\\\\Language] 1700000002\n\"ACP\"=\"1253\"\n");
    EXPECT_EQ(winePrefixCodePage(prefix.path()), 1251);
    writeSystemReg("[SYSTEM\\\\CurrentControlSet\\\\Control\\\\Nls\\\\CodePage] 1\n\"acp\"=\"1250\"\n");
    EXPECT_EQ(winePrefixCodePage(prefix.path()), 1250); // key and value names without regard to case
    writeSystemReg("[System\\\\CurrentControlSet\\\\Control\\\\Nls\\\\CodePage] 1\n\"OEMCP\"=\"437\"\n"
                   "[System\\\\CurrentControlSet\\\\Control\\\\Nls\\\\Language] 1\n\"ACP\"=\"1251\"\n");
    EXPECT_EQ(winePrefixCodePage(prefix.path()), std::nullopt);
}

TEST(GameCodec, choosesTheOptionThenTheEnvironmentThenTheProfileThenThePrefix) {
    QTemporaryDir prefix;
    {
        QFile file(prefix.filePath("system.reg"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[System\\\\CurrentControlSet\\\\Control\\\\Nls\\\\CodePage] 1\n\"ACP\"=\"1250\"\n");
    }
    const QByteArray savedEnvironment = qgetenv("KORVEL_CODEPAGE");
    qunsetenv("KORVEL_CODEPAGE");
    EXPECT_EQ(chooseGameCodec("1251", "932", prefix.path())->codec.codePage(), 1251);
    EXPECT_EQ(chooseGameCodec("", "932", prefix.path())->codec.codePage(), 932);
    EXPECT_EQ(chooseGameCodec("", "", prefix.path())->codec.codePage(), 1250);
    EXPECT_EQ(chooseGameCodec("", "", prefix.path())->source, "the Wine prefix");
    qputenv("KORVEL_CODEPAGE", "cp1253");
    EXPECT_EQ(chooseGameCodec("", "932", prefix.path())->codec.codePage(), 1253);
    EXPECT_EQ(chooseGameCodec("1251", "932", prefix.path())->codec.codePage(), 1251);
    qputenv("KORVEL_CODEPAGE", "martian");
    const Result<CodePageChoice> wrong = chooseGameCodec("", "", prefix.path());
    ASSERT_FALSE(wrong);
    EXPECT_TRUE(wrong.failure().message.contains("\"martian\" (from KORVEL_CODEPAGE)"));
    if (savedEnvironment.isNull())
        qunsetenv("KORVEL_CODEPAGE");
    else
        qputenv("KORVEL_CODEPAGE", savedEnvironment);
}

TEST(GameCodec, mapsCyrillicAndJapaneseFolderAndArchiveNamesBothWays) {
    QTemporaryDir dir;
    const struct {
        int codePage;
        QString folder;
        QString archive;
    } cases[] = {
        {1251, QStringLiteral("Игры/Гонки"), QStringLiteral("Трасса.POD")},
        {1250, QStringLiteral("Gry/Wyścigi"), QStringLiteral("Łódź.POD")},
        {932, QStringLiteral("ゲーム/モンスター"), QStringLiteral("トラック.POD")},
    };
    for (const auto& c : cases) {
        ScopedGameCodec scoped(codePage(c.codePage));
        const QString host = dir.filePath(c.folder + "/" + c.archive);
        touch(host);
        PathMap map;
        map.mapDrive('C', dir.path());
        const std::optional<std::string> game = map.toGame(host);
        ASSERT_TRUE(game) << c.codePage;
        EXPECT_EQ(*game, "C:\\" + *encodeGameText(QString(c.folder).replace('/', '\\') + "\\" + c.archive));
        EXPECT_EQ(map.toHost(upperGame(*game)), host) << c.codePage;
        FileServices files(map);
        const std::string folder = *map.toGame(QFileInfo(host).absolutePath());
        EXPECT_EQ(files.search(folder + "\\*.pod", SearchFilter::NormalFiles),
                  std::vector<std::string>{*encodeGameText(c.archive)})
            << c.codePage;
    }
    ScopedGameCodec western(GameCodec{});
    PathMap map;
    map.mapDrive('C', dir.path());
    const Result<std::string> refusedPath = map.gamePathOf(dir.filePath("Игры/Гонки/Трасса.POD"));
    ASSERT_FALSE(refusedPath);
    EXPECT_TRUE(refusedPath.failure().message.contains("Трасса.POD"));
    EXPECT_TRUE(refusedPath.failure().message.contains("windows-1252"));
    // The game could not open such a name, so a search does not offer it.
    EXPECT_TRUE(FileServices(map).search("C:\\Игры\\Гонки\\*.*", SearchFilter::NormalFiles).empty());
}
