#include "platform/game_path.h"
#include "platform/game_text.h"

#include <gtest/gtest.h>

using namespace korvel;

TEST(GameText, roundTripsEveryWindows1252Byte) {
    std::string all;
    for (int b = 0; b < 256; ++b)
        all.push_back(static_cast<char>(b));
    EXPECT_EQ(toGameText(fromGameText(all)), all);
    EXPECT_EQ(fromGameText("\x80"), QString(QChar(0x20AC)));
    EXPECT_EQ(toGameText(QStringLiteral("caf\u00e9 \u2013")), "caf\xe9 \x96");
}

TEST(GameText, upperCasesAccentedLettersOfTheCodePage) {
    EXPECT_EQ(upperGame("addon\\my\xe9track.pod"), "ADDON\\MY\xc9TRACK.POD");
    EXPECT_TRUE(equalsIgnoreCase("Map.Sit", "MAP.SIT"));
    EXPECT_FALSE(equalsIgnoreCase("MAP", "MAP.SIT"));
    EXPECT_TRUE(endsWithIgnoreCase("x.pod", ".POD"));
    EXPECT_TRUE(endsWithIgnoreCase(".pod", ".POD"));
    EXPECT_FALSE(endsWithIgnoreCase("od", ".POD"));
}

TEST(GameText, readsLeadingNumbersAsTheOldRuntimeDid) {
    EXPECT_EQ(leadingNumber("12,345"), 12.0);
    EXPECT_EQ(leadingNumber("  740"), 740.0);
    EXPECT_EQ(leadingNumber("-1"), -1.0);
    EXPECT_EQ(leadingNumber("3060.5x"), 3060.5);
    EXPECT_FALSE(leadingNumber("Error").has_value());
    EXPECT_FALSE(leadingNumber("").has_value());
}

TEST(GameText, splitsAndReplacesLikeTheGameFilesNeed) {
    EXPECT_EQ(splitText("a|b||c", '|'), (std::vector<std::string>{"a", "b", "", "c"}));
    EXPECT_EQ(splitText("", '|'), (std::vector<std::string>{""}));
    EXPECT_EQ(replaceAll("x=1 x=1", "x=1", "x=0"), "x=0 x=0");
    EXPECT_EQ(trimBlanks("  a b  "), "a b");
}

TEST(GamePath, splitsFolderAndFileName) {
    EXPECT_EQ(FolderOf("C:\\Games\\MTM2\\POD.INI"), "C:\\Games\\MTM2\\");
    EXPECT_EQ(FileNameOf("C:\\Games\\MTM2\\POD.INI"), "POD.INI");
    EXPECT_EQ(FolderOf("TRUCKS.POD"), "");
    EXPECT_EQ(FileNameOf("TRUCKS.POD"), "TRUCKS.POD");
    EXPECT_TRUE(isAbsoluteGamePath("D:\\X.POD"));
    EXPECT_TRUE(isAbsoluteGamePath("D:"));
    EXPECT_FALSE(isAbsoluteGamePath("ADDON\\X.POD"));
}
