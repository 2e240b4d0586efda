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

template <typename T> std::optional<int> number(const std::optional<T>& value) {
    return value ? std::optional<int>(static_cast<int>(*value)) : std::nullopt;
}

} // namespace

// Each reader with stored texts and what it makes of them ("Error" stands for a value never written;
// no number: no choice).
TEST(ProfileSettings, readsEverySettingByItsOwnClassicRules) {
    using Read = std::function<std::optional<int>(const ProfileSettings&)>;
    const int None = int(ScreenLock::None), Extractor = int(ScreenLock::Extractor);
    const struct {
        std::string_view name;
        Read read;
        std::vector<std::pair<std::string, std::optional<int>>> rows;
    } readers[] = {
        // "1" compared as a number
        {settings::kSlide, &ProfileSettings::slide, {{"1", 1}, {" 1.0", 1}, {"2", 0}, {"Error", 0}}},
        // any non-zero number
        {settings::kAutosort, &ProfileSettings::autosort, {{"-1", 1}, {"true", 1}, {"0", 0}, {"Error", 0}}},
        {settings::kBrowse, &ProfileSettings::browse, {{"0", 0}, {"Error", 1}}}, // anything but "0"
        {settings::kConfigurator, &ProfileSettings::configurator, {{"True", 1}, {"true", 0}, {"1", 0}}}, // exact
        {settings::kFirstRun, &ProfileSettings::firstRun, {{"0", 0}, {"Error", 1}, {"00", 1}}},
        {settings::kLock,
         [](const ProfileSettings& p) { return number(p.lock()); },
         {{"Error", None}, {"2", Extractor}, {"3abc", int(ScreenLock::Mounter)}, {"4", {}}, {"1.5", {}}}},
        {settings::kScreen,
         [](const ProfileSettings& p) { return number(p.screen()); },
         {{"C", int(StartScreen::Configurator)}, {"E", int(StartScreen::Extractor)}, {"m", {}}, {"Error", {}}}},
        {settings::kFlat,
         [](const ProfileSettings& p) { return number(p.flatButtons()); },
         {{"1", 1}, {"0", 0}, {"1.0", {}}, {"Error", {}}}},
        {settings::kLeft, &ProfileSettings::left, {{"1500", 1500}, {"12abc", 12}, {"Error", 0}}},
        {settings::kTop, &ProfileSettings::top, {{"-40", -40}, {"2.6", 3}}},
        {settings::kSlider, &ProfileSettings::slider, {{"99999999999", INT_MAX}}},
    };
    for (const auto& reader : readers) {
        for (const auto& [stored, expected] : reader.rows) {
            Profile p;
            if (stored != settings::kError)
                p.set(reader.name, stored);
            EXPECT_EQ(reader.read(p.profile), expected) << reader.name << "=" << stored;
        }
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

TEST(ProfileSettings, writesTheStoredFormsByteForByteAndReadsMissingListsAsNothing) {
    Profile p;
    EXPECT_FALSE(p.program.installedGames().has_value());
    EXPECT_FALSE(p.program.trackList().has_value());
    EXPECT_FALSE(p.program.associateChoice().has_value());
    EXPECT_FALSE(p.profile.location().has_value());
    EXPECT_TRUE(p.profile.extraDirs().empty());
    EXPECT_TRUE(p.profile.recent().empty());
    p.store.writeProgram(settings::kAssociate, "yes");
    EXPECT_FALSE(p.program.associateChoice().has_value());

    AutosaveSwitches switches;
    switches.player = switches.onExit = true;
    p.profile.setAutosave(switches);
    p.profile.setConfigurator(false);
    p.profile.setLock(ScreenLock::Extractor);
    p.profile.setPosition(-15, 0);
    p.profile.setExtraDirs({});
    p.profile.setRecent({});
    p.program.setInstalledGames({});
    p.program.setAssociate(false);
    const std::vector<std::pair<std::string_view, std::string>> expected = {
        {settings::kAsPod, "0"},    {settings::kAsPlayer, "1"}, {settings::kAsMonster, "0"},
        {settings::kAsChange, "0"}, {settings::kAsExit, "1"},   {settings::kConfigurator, "False"},
        {settings::kLock, "2"},     {settings::kLeft, "-15"},   {settings::kTop, "0"},
        {settings::kRecent, "|"}};
    for (const auto& [name, text] : expected)
        EXPECT_EQ(p.get(name), text) << name;
    // Reads stop at a NUL: the empty folder list is checked as stored.
    EXPECT_EQ(p.drive.registry().readValue(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\MTM2", "ExtraDirs"),
              std::string(1, '\0'));
    EXPECT_EQ(p.store.readProgram(settings::kInstalledGames), "Error"); // an empty list
    EXPECT_EQ(p.store.readProgram(settings::kAssociate), "0");
    EXPECT_EQ(p.program.associateChoice(), false);
    p.program.setAssociate(true);
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
    using W = WebAddress;
    const std::tuple<WebAddress, const char*, bool> rows[] = {{W::TrackSite, "", true},
                                                              {W::TrackSite, "https://tracks.test/mtm2/", true},
                                                              {W::TrackList, "http://tracks.test/list.txt", true},
                                                              {W::Home, "HTTPS://korvel.test", true},
                                                              {W::TrackSite, "tracks.test/mtm2", false},
                                                              {W::TrackList, "ftp://tracks.test/list.txt", false},
                                                              {W::Home, "https://", false},
                                                              {W::Home, "file:///etc/passwd", false},
                                                              {W::Support, "", true},
                                                              {W::Support, "help@korvel.test", true},
                                                              {W::Support, "help at korvel.test", false},
                                                              {W::Support, "help@", false},
                                                              {W::Support, "a@b@c", false}};
    for (const auto& [which, text, usable] : rows)
        EXPECT_EQ(!addressProblem(which, QString::fromLatin1(text)).has_value(), usable) << text;
}
