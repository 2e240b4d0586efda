#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::TempDrive;

namespace {

struct Store {
    TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
    const std::string key = std::string(settings::kProgramKey);
};

} // namespace

TEST(SettingsStore, mapsTheSevenRootNamesExactly) {
    EXPECT_EQ(SettingsStore::RootFromName("HKEY_CLASSES_ROOT"), RegistryRoot::ClassesRoot);
    EXPECT_EQ(SettingsStore::RootFromName("HKEY_DYN_DATA"), RegistryRoot::DynData);
    EXPECT_EQ(static_cast<uint32_t>(SettingsStore::RootFromName("HKEY_CURRENT_CONFIG")), 0x80000005u);
    EXPECT_EQ(SettingsStore::RootFromName("hkey_current_user"), RegistryRoot::None);
    EXPECT_EQ(SettingsStore::RootFromName("HKEY_FOO"), RegistryRoot::None);
}

TEST(SettingsStore, readsBackWhatItWroteWithLeadingBlanksDropped) {
    Store s;
    s.store.CreateKey(s.key);
    s.store.WriteValue(s.key, "Location", "  C:\\Games\\MTM2  ");
    EXPECT_EQ(s.store.ReadValue(s.key, "Location"), "C:\\Games\\MTM2  ");
    s.store.WriteValue(s.key, "ExtraDirs", std::string(1, '\0'));
    EXPECT_EQ(s.store.ReadValue(s.key, "ExtraDirs"), "");
    s.store.WriteValue(s.key, "Cut", std::string("ab\0cd", 5));
    EXPECT_EQ(s.store.ReadValue(s.key, "Cut"), "ab");
    EXPECT_TRUE(s.drive.dialogs().messages().empty());
}

TEST(SettingsStore, readsErrorForMissingValuesKeysAndOverlongValues) {
    Store s;
    EXPECT_EQ(s.store.ReadValue(s.key, "Associate"), "Error"); // no key
    s.store.CreateKey(s.key);
    EXPECT_EQ(s.store.ReadValue(s.key, "Associate"), "Error"); // no value
    s.store.WriteValue(s.key, "Long", std::string(2549, 'x'));
    EXPECT_EQ(s.store.ReadValue(s.key, "Long"), std::string(2549, 'x'));
    s.store.WriteValue(s.key, "Long", std::string(2550, 'x'));
    EXPECT_EQ(s.store.ReadValue(s.key, "Long"), "Error");
}

TEST(SettingsStore, unknownRootReadsEmptyWithoutAMessage) {
    Store s;
    EXPECT_EQ(s.store.ReadValue("HKEY_FOO\\Software", "X"), "");
    EXPECT_TRUE(s.drive.dialogs().messages().empty());
}

TEST(SettingsStore, reportsMalformedPathsAndKeepsThePreviousRoot) {
    Store s;
    s.store.CreateKey(s.key);
    s.store.WriteValue(s.key, "Associate", "1");
    EXPECT_EQ(s.store.ReadValue("Software\\Dunmere\\Korvel", "Associate"), "1"); // previous root in force
    ASSERT_EQ(s.drive.dialogs().messages().size(), 1u);
    EXPECT_EQ(s.drive.dialogs().lastMessage().text, "Incorrect Format:\n\nSoftware\\Dunmere\\Korvel");
    EXPECT_EQ(s.drive.dialogs().lastMessage().title, "Korvel");
    EXPECT_EQ(s.store.ReadValue(s.key + "\\", "Associate"), "Error");
    EXPECT_EQ(s.drive.dialogs().messages().size(), 2u);
}

TEST(SettingsStore, writesNothingIntoAKeyThatWasNeverCreated) {
    Store s;
    s.store.WriteValue(s.key + "\\MTM2", "Screen", "E");
    EXPECT_FALSE(s.drive.registry().keyExists(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\MTM2"));
    EXPECT_EQ(s.store.ReadValue(s.key + "\\MTM2", "Screen"), "Error");
}

TEST(SettingsStore, deleteKeyLeavesTheNamedKeyAndItsValues) {
    Store s;
    s.store.CreateKey("HKEY_CLASSES_ROOT\\Korvel\\shell\\open\\command");
    s.store.WriteValue("HKEY_CLASSES_ROOT\\Korvel", "", "Gravlen Forge POD File");
    s.store.DeleteKey("HKEY_CLASSES_ROOT\\Korvel");
    EXPECT_EQ(s.store.ReadValue("HKEY_CLASSES_ROOT\\Korvel", ""), "Gravlen Forge POD File");
    // Only the same path nested beneath itself is removed.
    s.store.CreateKey(s.key + "\\MTM2\\Software\\Dunmere\\Korvel\\MTM2");
    s.store.DeleteKey(s.key + "\\MTM2");
    EXPECT_TRUE(s.drive.registry().keyExists(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\MTM2"));
    EXPECT_FALSE(s.drive.registry().keyExists(RegistryRoot::CurrentUser,
                                              "Software\\Dunmere\\Korvel\\MTM2\\Software\\Dunmere\\Korvel\\MTM2"));
}
