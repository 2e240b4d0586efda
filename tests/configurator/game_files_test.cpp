#include "configurator/monster_ini.h"
#include "configurator/player_profile.h"
#include "platform/file_services.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::TempDrive;
using Names = std::vector<std::string>;

namespace {

const std::string kFolder = "C:\\Games\\MTM2";
const std::string kIni = "C:\\Games\\MTM2\\system\\monster.ini";
const std::string kPro = "C:\\Games\\MTM2\\player.pro";

std::string ini(const std::string& track, const std::string& horn, const std::string& language) {
    return "[Game]\r\nshowHiddenTrack=" + track + "\r\nkookyHornFlag=" + horn + "\r\ngLocalizationFile=" + language +
           "\r\n";
}

// Alice's last line names a track, so Bob's record has no data lines.
const std::string kChained = "Alice\r\nfav.TRK\r\n1\r\n2\r\n3\r\n4\r\nlast.trk\r\n",
                  kBob = "Bob\r\n1\r\n2\r\n3\r\n4\r\n5\r\n";

// A record: name, data lines, the track line (none when empty), five more lines.
std::string record(const std::string& name, const std::string& trackLine = "truck=RAM.TRK",
                   const std::string& data = "rank=3\r\n") {
    std::string text = name + "\r\n" + data + (trackLine.empty() ? "" : trackLine + "\r\n");
    for (int i = 1; i <= 5; ++i)
        text += name + " stat " + std::to_string(i) + "\r\n";
    return text;
}

std::string file(const std::vector<std::string>& records, const std::string& line3 = "1") {
    std::string text = "103\r\n" + std::to_string(records.size()) + "\r\n" + line3 + "\r\n";
    for (const std::string& r : records)
        text += r;
    return text;
}

Names names(const DriverLoad& load) {
    Names out;
    for (const DriverEntry& entry : load.list.entries)
        out.push_back(entry.name);
    return out;
}

} // namespace

TEST(MonsterIniLoad, readsEachSettingFromTheEndOfItsLine) {
    const struct {
        std::string text;
        MonsterSettings expected;
    } cases[] = {
        {ini("1666", "11", "ui\\mtm2-fun.loc"), {true, true, 2, "ui\\mtm2-fun.loc"}},
        {ini("1", "1 ", "D:\\Other\\UI\\Mtm2-Pig.LOC"), {false, false, 3, "D:\\Other\\UI\\Mtm2-Pig.LOC"}},
        {ini("6660", "0", "MTM2.loc"), {false, false, 4, "MTM2.loc"}}, // the folder is part of the name
        {ini("16", "0", "UI\\MTM2.loc"), {false, false, 1, "UI\\MTM2.loc"}},
        {"; default: showHiddenTrack=666\r\n" + ini("0", "0", "UI\\x.loc"), {true, false, 4, "UI\\x.loc"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parseMonsterIni(c.text).value(), c.expected) << c.text;
    Result<MonsterSettings> noHorn = parseMonsterIni("showHiddenTrack=0\r\ngLocalizationFile=UI\\MTM2.loc\r\n");
    ASSERT_FALSE(noHorn.ok());
    EXPECT_TRUE(noHorn.failure().message.contains(QStringLiteral("kookyHornFlag")));
    EXPECT_FALSE(parseMonsterIni("showHiddenTrack=0\r\nkookyHornFlag=1\r\ngLocalizationFile=UI\\MTM2.loc").ok());
}

TEST(MonsterIniSave, rewritesOnlyTheThreeLinesAndKeepsEveryOtherByte) {
    const std::string head = "; comment \xe9\r\n\r\n[Game]\n";
    const std::string tail = "gDetail=3\r\nlast line without break";
    const std::string original = head + ini("1", "0", "ui\\mtm2-fun.loc") + tail;
    const MonsterSettings settings = parseMonsterIni(original).value(); // hidden track 1 is off
    const std::string saved = applyMonsterSettings(original, settings).value();
    EXPECT_EQ(saved, head + ini("0", "0", "UI\\MTM2-fun.loc") + tail);
    EXPECT_EQ(applyMonsterSettings(saved, settings).value(), saved);
    EXPECT_EQ(applyMonsterSettings(saved, {true, true, 4, "UI\\french.loc"}).value(),
              head + ini("666", "1", "UI\\french.loc") + tail);
    EXPECT_EQ(applyMonsterSettings(saved, {false, false, 3, "UI\\x.loc"}).value(), // a built-in choice wins
              head + ini("0", "0", "UI\\MTM2-pig.loc") + tail);
    EXPECT_FALSE(applyMonsterSettings(saved, {false, false, 4, "a\r\nb"}).ok());
    // The old line text is replaced wherever it occurs, comments included.
    EXPECT_EQ(applyMonsterSettings("; showHiddenTrack=0\r\n" + ini("0", "1", "x") + "; was kookyHornFlag=1\r\n",
                                   {true, false, 4, "x"})
                  .value(),
              "; showHiddenTrack=666\r\n" + ini("666", "0", "x") + "; was kookyHornFlag=0\r\n");
    // A key repeated with another value: both lines are first brought to "on", then set together.
    EXPECT_EQ(applyMonsterSettings("; showHiddenTrack=0\r\n; kookyHornFlag=0\r\n" + ini("666", "1", "x"),
                                   {false, false, 4, "x"})
                  .value(),
              "; showHiddenTrack=0\r\n; kookyHornFlag=0\r\n" + ini("0", "0", "x"));
}

TEST(MonsterIniFile, savesAtomicallyOrNotAtAll) {
    TempDrive drive;
    EXPECT_FALSE(SaveMonsterIni(drive.files(), kFolder, {}).ok());
    EXPECT_FALSE(drive.exists(kIni));
    korvel::testing::buildGameFolder(drive, {});
    MonsterSettings settings = LoadMonsterIni(drive.files(), kFolder).value();
    settings.hiddenTrack = true;
    ASSERT_TRUE(SaveMonsterIni(drive.files(), kFolder, settings).ok());
    EXPECT_EQ(LoadMonsterIni(drive.files(), kFolder).value(), settings);
    // The language key is looked up after the switches were rewritten in memory.
    const std::string broken = "showHiddenTrack=0\r\nkookyHornFlag=1\r\ngLocalization=UI\\MTM2.loc\r\n";
    drive.write(kIni, broken);
    const Status status = SaveMonsterIni(drive.files(), kFolder, {true, false, 1, {}});
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.failure().title(), "Read Error");
    EXPECT_TRUE(status.failure().message.contains(QStringLiteral("gLocalizationFile")));
    EXPECT_EQ(drive.read(kIni), broken);
    EXPECT_EQ(customLanguagePath("C:\\Games\\MTM2\\UI\\french.loc", kFolder), "UI\\french.loc");
    EXPECT_EQ(customLanguagePath("C:\\games\\mtm2\\UI\\x.loc", kFolder), "C:\\games\\mtm2\\UI\\x.loc");
}

TEST(PlayerProfileRead, keepsRecordsVerbatimWhateverTheCaseOfTheTrackLine) {
    const Names records = {record("Alice"), record("Bob", "SUB\\Big.Trk", "a\r\nb.sit\r\n"),
                           record("Carol", "x.trk", ""), record("Mr.Trk")};
    const DriverLoad load = parsePlayerProfile(file(records, "old.TRK")); // line 3 never counts
    ASSERT_EQ(load.list.state, DriverRecords::State::Read);
    ASSERT_EQ(names(load), (Names{"Alice", "Bob", "Carol", "Mr.Trk"}));
    EXPECT_EQ(load.list.entries[1].record, records[1]);
    EXPECT_EQ(playerProfileText(load.list), file(records));
    const DriverLoad chained = parsePlayerProfile(file({kChained, kBob}));
    ASSERT_EQ(names(chained), (Names{"Alice", "Bob"}));
    EXPECT_EQ(chained.list.entries[1].record, kBob);
}

TEST(PlayerProfileRead, fileEndingInsideARecordKeepsTheRecordsBeforeIt) {
    const DriverLoad noTrack = parsePlayerProfile(file({record("Alice"), record("Bob", "", "a\r\nb\r\n")}));
    ASSERT_TRUE(noTrack.failure);
    EXPECT_EQ(noTrack.failure->title(), "Read Error");
    EXPECT_EQ(noTrack.list.state, DriverRecords::State::Damaged);
    EXPECT_EQ(names(noTrack), Names{"Alice"});
    std::string cut = file({record("Alice"), record("Bob")});
    cut.resize(cut.size() - 14); // Bob's last line gone, his fourth cut short
    EXPECT_EQ(names(parsePlayerProfile(cut)), Names{"Alice"});
    std::string more = file({record("Alice")});
    more[5] = '2';
    for (const std::string& text :
         {more, std::string("103\r\nmany\r\n1\r\n"), std::string("103\r\n99999999999999999999\r\n1\r\n")})
        EXPECT_EQ(parsePlayerProfile(text).list.state, DriverRecords::State::Damaged) << text;
    for (const std::string& text : {"102\r\n1\r\n1\r\n" + record("Alice"), std::string(), std::string("103 \r\n0\r\n")})
        EXPECT_EQ(parsePlayerProfile(text).list.state, DriverRecords::State::Unread) << text;
}

TEST(PlayerProfileFile, removesSeveralAtOnceSkippingBoldOnesAndSavesWithLineThreeOne) {
    TempDrive drive;
    drive.write(kPro, file({record("A"), record("B"), record("C"), record("D"), record("E")}, "7"));
    DriverLoad load = LoadDrivers(drive.files(), kFolder);
    EXPECT_EQ(RemoveSelectedDriver(load.list, {true, false, true, false, true}), 3);
    Result<DriverLoad> saved = SaveDrivers(drive.files(), kFolder, load.list);
    ASSERT_TRUE(saved.ok());
    EXPECT_EQ(drive.read(kPro), file({record("B"), record("D")}));
    ASSERT_EQ(names(*saved), (Names{"B", "D"}));
    saved->list.entries[0].bold = true;
    EXPECT_EQ(RemoveSelectedDriver(saved->list, {true, true}), 1);
    EXPECT_EQ(names(*saved), Names{"B"});

    drive.write(kPro, file({record("Alice")}));
    load = LoadDrivers(drive.files(), kFolder);
    EXPECT_EQ(RemoveSelectedDriver(load.list, {true}), 1);
    ASSERT_TRUE(SaveDrivers(drive.files(), kFolder, load.list).ok());
    EXPECT_EQ(drive.read(kPro), "103\r\n0\r\n1\r\n");
}

TEST(PlayerProfileFile, refusesToWriteWhatWasNotReadWholeOrWouldReadBackDifferently) {
    TempDrive drive;
    EXPECT_TRUE(LoadDrivers(drive.files(), kFolder).failure); // no file
    // Bob's record has no data lines because Alice's last line names a track; Carol's has one.
    const std::string carol = "Carol\r\nc.trk\r\n1\r\n2\r\n3\r\n4\r\n5\r\n";
    const std::pair<std::string, std::vector<bool>> cases[] = {
        {"100\r\n1\r\n1\r\n" + record("Alice"), {true}},
        {file({record("Alice"), record("Bob", "")}), {true}},
        {file({kChained, kBob}), {true}},               // without Alice, Bob's lines would be taken for data lines
        {file({kChained, kBob, carol}), {false, true}}, // without Bob, Carol's data line would end her record
    };
    for (const auto& [text, selected] : cases) {
        drive.write(kPro, text);
        DriverLoad load = LoadDrivers(drive.files(), kFolder);
        RemoveSelectedDriver(load.list, selected);
        const Result<DriverLoad> saved = SaveDrivers(drive.files(), kFolder, load.list);
        ASSERT_FALSE(saved.ok());
        EXPECT_TRUE(saved.failure().message.contains(QStringLiteral("Nothing was written")));
        EXPECT_EQ(drive.read(kPro), text);
    }
}

TEST(PlayerProfileChange, aSaveRefusesToWriteOverDriversAnotherProgramChangedUntilTheStampIsDropped) {
    TempDrive drive;
    drive.write(kPro, file({record("Alice"), record("Bob"), record("Carol")}));
    DriverLoad load = LoadDrivers(drive.files(), kFolder);
    ASSERT_EQ(load.list.state, DriverRecords::State::Read);
    ASSERT_TRUE(load.list.loadedFrom.has_value());
    ASSERT_EQ(RemoveSelectedDriver(load.list, {false, true}), 1);
    // The game adds a driver meanwhile; the same size with other bytes counts too.
    for (const std::string& theirs : {file({record("Alice"), record("Bob"), record("Carol"), record("Dave")}),
                                      file({record("Alice"), record("Bob"), record("Carl!")})}) {
        drive.write(kPro, theirs);
        const Result<DriverLoad> refusedSave = SaveDrivers(drive.files(), kFolder, load.list);
        ASSERT_FALSE(refusedSave.ok());
        EXPECT_EQ(refusedSave.failure().kind, FailureKind::ChangedOnDisk);
        EXPECT_TRUE(refusedSave.failure().message.contains(QStringLiteral("player.pro")));
        EXPECT_EQ(drive.read(kPro), theirs);
    }
    DriverRecords over = load.list;
    over.loadedFrom.reset(); // the user chose to write over it
    Result<DriverLoad> saved = SaveDrivers(drive.files(), kFolder, over);
    ASSERT_TRUE(saved.ok());
    EXPECT_EQ(drive.read(kPro), file({record("Alice"), record("Carol")}));
    // What a save answers carries the stamp of what it wrote: the next save goes through.
    ASSERT_EQ(RemoveSelectedDriver(saved->list, {true}), 1);
    ASSERT_TRUE(SaveDrivers(drive.files(), kFolder, saved->list).ok());
    EXPECT_EQ(drive.read(kPro), file({record("Carol")}));
}

TEST(MonsterIniChange, aSaveWithTheLoadedStampRefusesAnUnseenChangeAndCarriesItsOwnStampOn) {
    TempDrive drive;
    drive.write(kIni, ini("0", "0", "UI\\MTM2.loc"));
    LoadedFileStamp stamp;
    Result<MonsterSettings> settings = LoadMonsterIni(drive.files(), kFolder, &stamp);
    ASSERT_TRUE(settings.ok());
    settings->hiddenTrack = true;
    ASSERT_TRUE(SaveMonsterIni(drive.files(), kFolder, *settings, &stamp, &stamp).ok());
    settings->horn = true;
    ASSERT_TRUE(SaveMonsterIni(drive.files(), kFolder, *settings, &stamp, &stamp).ok()); // its own change
    EXPECT_EQ(drive.read(kIni), ini("666", "1", "UI\\MTM2.loc"));

    const std::string theirs = ini("666", "0", "UI\\MTM2.loc");
    drive.write(kIni, theirs);
    settings->localization = 2;
    const Status refusedSave = SaveMonsterIni(drive.files(), kFolder, *settings, &stamp, &stamp);
    ASSERT_FALSE(refusedSave.ok());
    EXPECT_EQ(refusedSave.failure().kind, FailureKind::ChangedOnDisk);
    EXPECT_TRUE(refusedSave.failure().message.contains(QStringLiteral("monster.ini")));
    EXPECT_EQ(drive.read(kIni), theirs);
    // Without a stamp (the user chose to overwrite) the three lines are written as before.
    ASSERT_TRUE(SaveMonsterIni(drive.files(), kFolder, *settings, nullptr, &stamp).ok());
    EXPECT_EQ(drive.read(kIni), ini("666", "1", "UI\\MTM2-fun.loc"));
    EXPECT_TRUE(SaveMonsterIni(drive.files(), kFolder, *settings, &stamp, &stamp).ok());
}
