#include "startup/settings_names.h"
#include "startup/typed_settings.h"
#include "startup/web_addresses.h"
#include "temp_game.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>

using namespace korvel;
using korvel::testing::TempDrive;

namespace {

struct Profile {
    Profile() {
        store.CreateKey(std::string(settings::kProgramKey));
        store.CreateKey(settings::profileKey("MTM2"));
    }
    void set(std::string_view name, const std::string& text) { store.writeProfile("MTM2", name, text); }
    std::string get(std::string_view name) { return store.readProfile("MTM2", name); }

    TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
    ProfileSettings profile{store, "MTM2"};
    ProgramSettings program{store};
};

// A stored text and what a reader makes of it ("Error" stands for a value never written).
template <typename T> struct ReadRow {
    std::string_view name;
    std::string stored;
    T expected;
};

void store(Profile& p, std::string_view name, const std::string& text) {
    if (text != settings::kError)
        p.set(name, text);
}

} // namespace

TEST(ProfileSettings, readsSwitchesByTheirOwnClassicRules) {
    using Read = std::function<bool(const ProfileSettings&)>;
    const std::vector<std::pair<ReadRow<bool>, Read>> rows = {
        {{settings::kSlide, "1", true}, &ProfileSettings::slide},
        {{settings::kSlide, " 1.0", true}, &ProfileSettings::slide}, // compared as a number
        {{settings::kSlide, "2", false}, &ProfileSettings::slide},
        {{settings::kSlide, "Error", false}, &ProfileSettings::slide},
        {{settings::kAutosort, "-1", true}, &ProfileSettings::autosort}, // any non-zero number
        {{settings::kAutosort, "true", true}, &ProfileSettings::autosort},
        {{settings::kAutosort, "0", false}, &ProfileSettings::autosort},
        {{settings::kAutosort, "Error", false}, &ProfileSettings::autosort},
        {{settings::kBrowse, "0", false}, &ProfileSettings::browse},
        {{settings::kBrowse, "Error", true}, &ProfileSettings::browse}, // anything but "0"
        {{settings::kConfigurator, "True", true}, &ProfileSettings::configurator},
        {{settings::kConfigurator, "true", false}, &ProfileSettings::configurator}, // exact text
        {{settings::kConfigurator, "1", false}, &ProfileSettings::configurator},
        {{settings::kFirstRun, "0", false}, &ProfileSettings::firstRun},
        {{settings::kFirstRun, "Error", true}, &ProfileSettings::firstRun},
        {{settings::kFirstRun, "00", true}, &ProfileSettings::firstRun},
    };
    for (const auto& [row, read] : rows) {
        Profile p;
        store(p, row.name, row.stored);
        EXPECT_EQ(read(p.profile), row.expected) << row.name << "=" << row.stored;
    }
}

TEST(ProfileSettings, readsChoicesAndNumbersWithNoChoiceForUnknownTexts) {
    const std::vector<ReadRow<std::optional<ScreenLock>>> locks = {
        {settings::kLock, "Error", ScreenLock::None}, // missing reads as 0
        {settings::kLock, "2", ScreenLock::Extractor}, {settings::kLock, "3abc", ScreenLock::Mounter},
        {settings::kLock, "4", std::nullopt},          {settings::kLock, "1.5", std::nullopt},
    };
    for (const auto& row : locks) {
        Profile p;
        store(p, row.name, row.stored);
        EXPECT_EQ(p.profile.lock(), row.expected) << row.stored;
    }
    const std::vector<ReadRow<std::optional<StartScreen>>> screens = {
        {settings::kScreen, "C", StartScreen::Configurator},
        {settings::kScreen, "E", StartScreen::Extractor},
        {settings::kScreen, "m", std::nullopt}, // exact letter
        {settings::kScreen, "Error", std::nullopt},
    };
    for (const auto& row : screens) {
        Profile p;
        store(p, row.name, row.stored);
        EXPECT_EQ(p.profile.screen(), row.expected) << row.stored;
    }
    const std::vector<ReadRow<std::optional<bool>>> flats = {{settings::kFlat, "1", true},
                                                             {settings::kFlat, "0", false},
                                                             {settings::kFlat, "1.0", std::nullopt},
                                                             {settings::kFlat, "Error", std::nullopt}};
    for (const auto& row : flats) {
        Profile p;
        store(p, row.name, row.stored);
        EXPECT_EQ(p.profile.flatButtons(), row.expected) << row.stored;
    }
    const std::vector<ReadRow<int>> numbers = {
        {settings::kLeft, "1500", 1500}, {settings::kLeft, "12abc", 12}, {settings::kLeft, "Error", 0},
        {settings::kTop, "-40", -40},    {settings::kTop, "2.6", 3},     {settings::kSlider, "99999999999", INT_MAX},
    };
    for (const auto& row : numbers) {
        Profile p;
        store(p, row.name, row.stored);
        const int read = row.name == settings::kLeft  ? p.profile.left()
                         : row.name == settings::kTop ? p.profile.top()
                                                      : p.profile.slider();
        EXPECT_EQ(read, row.expected) << row.name << "=" << row.stored;
    }
}

TEST(ProfileSettings, readsAutosaveSwitchesOnlyFromAOne) {
    Profile p;
    p.set(settings::kAsPod, "1");
    p.set(settings::kAsChange, "1");
    p.set(settings::kAsExit, "1.0");
    p.set(settings::kAsPlayer, "True");
    const AutosaveSwitches switches = p.profile.autosave();
    EXPECT_TRUE(switches.podOnChange());
    EXPECT_FALSE(switches.podOnExit());
    EXPECT_FALSE(switches.player);
    EXPECT_FALSE(switches.monsterOnChange());
}

TEST(ProfileSettings, writesTheStoredFormsByteForByte) {
    Profile p;
    AutosaveSwitches switches;
    switches.player = switches.onExit = true;
    p.profile.setAutosave(switches);
    p.profile.setConfigurator(false);
    p.profile.setLock(ScreenLock::Extractor);
    p.profile.setPosition(-15, 0);
    p.profile.setExtraDirs({});
    p.profile.setRecent({});
    p.program.setInstalledGames({});
    p.program.setAssociate(true);
    const std::vector<std::pair<std::string_view, std::string>> expected = {
        {settings::kAsPod, "0"},    {settings::kAsPlayer, "1"}, {settings::kAsMonster, "0"},
        {settings::kAsChange, "0"}, {settings::kAsExit, "1"},   {settings::kConfigurator, "False"},
        {settings::kLock, "2"},     {settings::kLeft, "-15"},   {settings::kTop, "0"},
        {settings::kRecent, "|"},
    };
    for (const auto& [name, text] : expected)
        EXPECT_EQ(p.get(name), text) << name;
    // Reads stop at a NUL: the empty folder list is checked as stored.
    EXPECT_EQ(p.drive.registry().readValue(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\MTM2", "ExtraDirs"),
              std::string(1, '\0'));
    EXPECT_EQ(p.store.readProgram(settings::kInstalledGames), "Error"); // an empty list
    EXPECT_EQ(p.store.readProgram(settings::kAssociate), "1");

    p.profile.setExtraDirs({"C:\\A", "D:\\B"});
    p.profile.setRecent({"C:\\x.pod", "D:\\y.pod"});
    p.program.setInstalledGames({"MTM2", "Evo"});
    EXPECT_EQ(p.get(settings::kExtraDirs), "C:\\A|D:\\B");
    EXPECT_EQ(p.get(settings::kRecent), "|C:\\x.pod|D:\\y.pod");
    EXPECT_EQ(p.profile.extraDirs(), (std::vector<std::string>{"C:\\A", "D:\\B"}));
    EXPECT_EQ(p.profile.recent(), (std::vector<std::string>{"C:\\x.pod", "D:\\y.pod"}));
    EXPECT_EQ(p.program.installedGames(), (std::vector<std::string>{"MTM2", "Evo"}));
}

TEST(ProfileSettings, missingListsAndPathsReadAsNothing) {
    Profile p;
    EXPECT_FALSE(p.program.installedGames().has_value());
    EXPECT_FALSE(p.program.trackList().has_value());
    EXPECT_FALSE(p.program.associateChoice().has_value());
    EXPECT_FALSE(p.profile.location().has_value());
    EXPECT_TRUE(p.profile.extraDirs().empty());
    EXPECT_TRUE(p.profile.recent().empty());
    p.store.writeProgram(settings::kAssociate, "yes");
    EXPECT_FALSE(p.program.associateChoice().has_value());
    p.store.writeProgram(settings::kAssociate, "0");
    EXPECT_EQ(p.program.associateChoice(), false);
}

TEST(ProfileSettings, repairReplacesOnlyFailingValuesAndBrowsesFromTheGameFolderByDefault) {
    Profile p;
    p.set(settings::kSlide, "0");
    p.set(settings::kExtraDirs, "C:\\A");
    p.set(settings::kTop, "12abc");
    p.profile.repair(p.profile.readValidated(), "C:\\Games\\MTM2");
    EXPECT_EQ(p.get(settings::kSlide), "0");
    EXPECT_EQ(p.get(settings::kExtraDirs), "C:\\A");
    EXPECT_EQ(p.get(settings::kTop), "1200");
    EXPECT_EQ(p.get(settings::kBrowseDir), "C:\\Games\\MTM2");
    EXPECT_EQ(p.get(settings::kAutosort), "1");
    for (const settings::ProfileRule& rule : settings::profileRules()) // every default passes its own test
        EXPECT_TRUE(rule.passes(settings::fallbackText(rule, "C:\\Games\\MTM2"))) << rule.name;
}

TEST(WebAddresses, areStoredTrimmedAndTheEnvironmentOverridesEachOne) {
    Profile p;
    const struct {
        WebAddress which;
        std::string_view name;
        const char* variable;
    } rows[] = {{WebAddress::TrackSite, settings::kTrackSite, "KORVEL_TRACK_SITE"},
                {WebAddress::TrackList, settings::kTrackListAddress, "KORVEL_TRACK_LIST_URL"},
                {WebAddress::Home, settings::kWebAddress, "KORVEL_WEB_ADDRESS"},
                {WebAddress::Support, settings::kSupportAddress, "KORVEL_SUPPORT_ADDRESS"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.variable);
        qunsetenv(row.variable);
        EXPECT_EQ(p.program.address(row.which), QString()); // never written: not set
        EXPECT_EQ(addressInForce(p.program, row.which), QString());
        p.program.setAddress(row.which, QStringLiteral("  https://one.test/\r\n"));
        EXPECT_EQ(p.store.readProgram(row.name), "https://one.test/");
        p.store.writeProgram(row.name, "https://two.test/\r\n");
        EXPECT_EQ(addressInForce(p.program, row.which), QStringLiteral("https://two.test/"));
        qputenv(row.variable, " https://three.test/ ");
        EXPECT_EQ(addressInForce(p.program, row.which), QStringLiteral("https://three.test/"));
        EXPECT_EQ(p.program.address(row.which), QStringLiteral("https://two.test/"));
        qputenv(row.variable, "");
        EXPECT_EQ(addressInForce(p.program, row.which), QStringLiteral("https://two.test/"));
        qunsetenv(row.variable);
        EXPECT_TRUE(missingAddressHint(row.which).contains(QString::fromLatin1(row.variable)));
        EXPECT_TRUE(missingAddressHint(row.which).contains(QStringLiteral("File > Options > Web")));
    }
}

TEST(WebAddresses, acceptOnlyWebAndMailAddressesOrNothing) {
    const struct {
        WebAddress which;
        const char* text;
        bool usable;
    } rows[] = {{WebAddress::TrackSite, "", true},
                {WebAddress::TrackSite, "https://tracks.test/mtm2/", true},
                {WebAddress::TrackList, "http://tracks.test/list.txt", true},
                {WebAddress::Home, "HTTPS://korvel.test", true},
                {WebAddress::TrackSite, "tracks.test/mtm2", false},
                {WebAddress::TrackList, "ftp://tracks.test/list.txt", false},
                {WebAddress::Home, "https://", false},
                {WebAddress::Home, "file:///etc/passwd", false},
                {WebAddress::Support, "", true},
                {WebAddress::Support, "help@korvel.test", true},
                {WebAddress::Support, "help at korvel.test", false},
                {WebAddress::Support, "help@", false},
                {WebAddress::Support, "a@b@c", false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(!addressProblem(row.which, QString::fromLatin1(row.text)).has_value(), row.usable);
    }
}
