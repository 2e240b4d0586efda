#include "platform/dialogs.h"
#include "platform/game_codec.h"
#include "platform/game_path.h"
#include "platform/game_text.h"

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

} // namespace

TEST(GameText, roundTripsEveryWindows1252ByteAndComparesWithoutRegardToCase) {
    std::string all;
    for (int b = 0; b < 256; ++b)
        all.push_back(static_cast<char>(b));
    EXPECT_EQ(toGameText(fromGameText(all)), all);
    EXPECT_EQ(fromGameText("\x80"), QString(QChar(0x20AC)));
    EXPECT_EQ(toGameText(QStringLiteral("caf\u00e9 \u2013")), "caf\xe9 \x96");
    EXPECT_EQ(upperGame("addon\\my\xe9track.pod"), "ADDON\\MY\xc9TRACK.POD");
    const struct {
        const char* text;
        const char* other;
        bool equal;    // equalsIgnoreCase(text, other)
        bool endsWith; // endsWithIgnoreCase(text, other)
    } rows[] = {{"Map.Sit", "MAP.SIT", true, true}, {"MAP", "MAP.SIT", false, false}, {"MAP.SIT", "MAP", false, false},
                {"x.pod", ".POD", false, true},     {".pod", ".POD", true, true},     {"od", ".POD", false, false}};
    for (const auto& row : rows) {
        EXPECT_EQ(equalsIgnoreCase(row.text, row.other), row.equal) << row.text << " / " << row.other;
        EXPECT_EQ(endsWithIgnoreCase(row.text, row.other), row.endsWith) << row.text << " / " << row.other;
    }
}

TEST(GameText, readsNumbersSplitsReplacesAndCutsPathsAsTheOldRuntimeDid) {
    const std::pair<const char*, std::optional<double>> numbers[] = {
        {"12,345", 12.0},    {"  740", 740.0},        {"-1", -1.0},
        {"3060.5x", 3060.5}, {"Error", std::nullopt}, {"", std::nullopt}};
    for (const auto& [text, number] : numbers)
        EXPECT_EQ(leadingNumber(text), number) << text;
    EXPECT_EQ(splitText("a|b||c", '|'), (std::vector<std::string>{"a", "b", "", "c"}));
    EXPECT_EQ(splitText("", '|'), (std::vector<std::string>{""}));
    EXPECT_EQ(replaceAll("x=1 x=1", "x=1", "x=0"), "x=0 x=0");
    EXPECT_EQ(replaceAll("aaa", "a", "aa"), "aaaaaa");
    EXPECT_EQ(trimBlanks("  a b  "), "a b");
    const std::tuple<const char*, const char*, const char*, bool> paths[] = {
        // path, FolderOf, FileNameOf, isAbsoluteGamePath
        {"C:\\Games\\MTM2\\POD.INI", "C:\\Games\\MTM2\\", "POD.INI", true},
        {"TRUCKS.POD", "", "TRUCKS.POD", false},
        {"ADDON\\X.POD", "ADDON\\", "X.POD", false},
        {"D:", "", "D:", true}};
    for (const auto& [path, folder, name, absolute] : paths) {
        EXPECT_EQ(FolderOf(path), folder) << path;
        EXPECT_EQ(FileNameOf(path), name) << path;
        EXPECT_EQ(isAbsoluteGamePath(path), absolute) << path;
    }
}

TEST(UnexpectedErrorText, namesTheSupportAddressGivenOrTheMaintainersWithoutOne) {
    qunsetenv("KORVEL_SUPPORT_ADDRESS");
    setSupportAddress(QString());
    EXPECT_EQ(unexpectedErrorText(53, QStringLiteral("File not found")).toStdString(),
              "Sorry, but an error of type 53 has occurred: File not found\n"
              "Please report this to Korvel's maintainers as soon as possible.");
    qputenv("KORVEL_SUPPORT_ADDRESS", "env@korvel.test");
    EXPECT_TRUE(unexpectedErrorText(6, QStringLiteral("Overflow"))
                    .endsWith(QStringLiteral("Please report this to env@korvel.test as soon as possible.")));
    // The program hands over the address in force (its setting, or the environment's on top).
    setSupportAddress(QStringLiteral(" help@korvel.test\n"));
    EXPECT_EQ(supportAddress(), QStringLiteral("help@korvel.test"));
    EXPECT_TRUE(unexpectedErrorText(6, QStringLiteral("Overflow")).contains(QStringLiteral("to help@korvel.test as")));
    setSupportAddress(QString());
    qunsetenv("KORVEL_SUPPORT_ADDRESS");
}

TEST(GameCodec, encodesNamesInTheirCodePageAndRefusesLettersItLacksUnlessAskedForQuestionMarks) {
    const struct {
        int codePage;
        QString name;
        std::string bytes;
        QString foreign; // a name the code page cannot hold
        std::string lossy;
    } cases[] = {
        {1252, QStringLiteral("Café €"), "43 61 66 e9 20 80", QStringLiteral("Гонки.pod"), "?????.pod"},
        {1251, QStringLiteral("Жёлтый"), "c6 b8 eb f2 fb e9", QStringLiteral("Łódź"), "??d?"},
        {1250, QStringLiteral("Łódź"), "a3 f3 64 9f", QStringLiteral("Жук"), "???"},
        {932, QStringLiteral("日本ｱ"), "93 fa 96 7b b1", QStringLiteral("Łx"), "?x"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.codePage);
        const GameCodec codec = codePage(c.codePage);
        const std::optional<std::string> bytes = codec.encode(c.name);
        ASSERT_TRUE(bytes);
        EXPECT_EQ(hex(*bytes), c.bytes);
        EXPECT_EQ(codec.decode(*bytes), c.name);
        EXPECT_FALSE(codec.encode(c.foreign));
        EXPECT_EQ(hex(codec.encodeLossy(c.foreign)), hex(c.lossy));
    }
}

TEST(GameCodec, isNamedByNumberOrByTheNamesUsersGiveOrByTheLocaleAsWineDoes) {
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
    const std::pair<const char*, std::optional<int>> locales[] = {
        {"ru_RU.UTF-8", 1251},   {"uk_UA", 1251},      {"pl_PL.UTF-8", 1250},     {"cs_CZ", 1250},
        {"el_GR", 1253},         {"ja_JP.UTF-8", 932}, {"zh_CN.UTF-8", 936},      {"zh_TW.Big5", 950},
        {"ko_KR", 949},          {"de_DE@euro", 1252}, {"en_US.UTF-8", 1252},     {"C", std::nullopt},
        {"POSIX", std::nullopt}, {"", std::nullopt},   {"C.UTF-8", std::nullopt},
    };
    for (const auto& [locale, expected] : locales)
        EXPECT_EQ(localeCodePage(QString::fromLatin1(locale)), expected) << locale;
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

TEST(GameCodec, choosesTheOptionThenTheEnvironmentThenTheProfileThenThePrefixsSystemRegistry) {
    QTemporaryDir prefix;
    auto writeSystemReg = [&](const QByteArray& text) {
        QFile file(prefix.filePath("system.reg"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
    };
    const QByteArray nls = "[System\\\\CurrentControlSet\\\\Control\\\\Nls\\\\";
    EXPECT_EQ(winePrefixCodePage(prefix.path()), std::nullopt); // no file
    writeSystemReg("WINE REGISTRY Version 2\n;; All keys relative to \\\\Machine\n\n"
                   "[Software\\\\Other\\\\CodePage] 1700000000\n\"ACP\"=\"932\"\n\n" +
                   nls +
                   "CodePage] 1700000001\n#time=1d9\n\"1250\"=\"c_1250.nls\"\n\"ACP\"=\"1251\"\n\"OEMCP\"=\"866\"\n\n" +
                   nls + "Language] 1700000002\n\"ACP\"=\"1253\"\n");
    EXPECT_EQ(winePrefixCodePage(prefix.path()), 1251);
    writeSystemReg(nls + "CodePage] 1\n\"OEMCP\"=\"437\"\n" + nls + "Language] 1\n\"ACP\"=\"1251\"\n");
    EXPECT_EQ(winePrefixCodePage(prefix.path()), std::nullopt);
    // Key and value names without regard to case.
    writeSystemReg("[SYSTEM\\\\CurrentControlSet\\\\Control\\\\Nls\\\\CodePage] 1\n\"acp\"=\"1250\"\n");
    EXPECT_EQ(winePrefixCodePage(prefix.path()), 1250);

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
