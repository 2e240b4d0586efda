#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "startup/store_warnings.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

namespace {

struct Store {
    TempDrive drive;
    SettingsStore store{drive.registry(), drive.dialogs()};
    const std::string key = std::string(settings::kProgramKey);
    size_t shown() { return drive.dialogs().messages().size(); }
};

// A store that has something to say whenever the test puts it there.
class TroubledRegistry : public RegistryTree {
public:
    QStringList takeWarnings() override { return std::exchange(pending, {}); }
    QStringList pending;
};

} // namespace

TEST(SettingsStore, mapsTheSevenRootNamesExactlyAndReadsUnknownRootsAsEmptyWithoutAMessage) {
    EXPECT_EQ(SettingsStore::RootFromName("HKEY_CLASSES_ROOT"), RegistryRoot::ClassesRoot);
    EXPECT_EQ(SettingsStore::RootFromName("HKEY_DYN_DATA"), RegistryRoot::DynData);
    EXPECT_EQ(static_cast<uint32_t>(SettingsStore::RootFromName("HKEY_CURRENT_CONFIG")), 0x80000005u);
    EXPECT_EQ(SettingsStore::RootFromName("hkey_current_user"), RegistryRoot::None);
    EXPECT_EQ(SettingsStore::RootFromName("HKEY_FOO"), RegistryRoot::None);
    Store s;
    EXPECT_EQ(s.store.ReadValue("HKEY_FOO\\Software", "X"), "");
    EXPECT_EQ(s.shown(), 0u);
}

TEST(SettingsStore, readsBackWhatItWroteWithLeadingBlanksDroppedAndErrorForWhatIsNotThere) {
    Store s;
    EXPECT_EQ(s.store.ReadValue(s.key, "Associate"), "Error"); // no key
    s.store.WriteValue(s.key + "\\MTM2", "Screen", "E");       // nothing is written into a key never created
    EXPECT_FALSE(s.drive.registry().keyExists(RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel\\MTM2"));
    EXPECT_EQ(s.store.ReadValue(s.key + "\\MTM2", "Screen"), "Error");
    s.store.CreateKey(s.key);
    EXPECT_EQ(s.store.ReadValue(s.key, "Associate"), "Error"); // no value
    const std::pair<std::string, std::string> rows[] = {
        {"  C:\\Games\\MTM2  ", "C:\\Games\\MTM2  "},
        {std::string(1, '\0'), ""},
        {std::string("ab\0cd", 5), "ab"},
        {std::string(2549, 'x'), std::string(2549, 'x')},
        {std::string(2550, 'x'), "Error"}, // too long
    };
    for (const auto& [written, read] : rows) {
        s.store.WriteValue(s.key, "Value", written);
        EXPECT_EQ(s.store.ReadValue(s.key, "Value"), read) << written.substr(0, 20);
    }
    EXPECT_EQ(s.shown(), 0u);
}

TEST(SettingsStore, reportsMalformedPathsAndKeepsThePreviousRoot) {
    Store s;
    s.store.CreateKey(s.key);
    s.store.WriteValue(s.key, "Associate", "1");
    EXPECT_EQ(s.store.ReadValue("Software\\Dunmere\\Korvel", "Associate"), "1"); // previous root in force
    ASSERT_EQ(s.shown(), 1u);
    EXPECT_EQ(s.drive.dialogs().lastMessage().text, "Incorrect Format:\n\nSoftware\\Dunmere\\Korvel");
    EXPECT_EQ(s.drive.dialogs().lastMessage().title, "Korvel");
    EXPECT_EQ(s.store.ReadValue(s.key + "\\", "Associate"), "Error");
    EXPECT_EQ(s.shown(), 2u);
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

TEST(StoreWarningDialogs, explainTheStoreBeforeEveryKindOfDialogAndEachTextOnce) {
    const struct {
        const char* name;
        std::function<void(Dialogs&)> show;
        size_t messagesAfter; // the explanation and, for a message, the message itself
    } cases[] = {
        {"message", [](Dialogs& d) { d.message("Information", "Welcome!", MessageIcon::Information); }, 2},
        {"input", [](Dialogs& d) { d.input("Input Required", "Name?", QString()); }, 1},
        {"open files", [](Dialogs& d) { d.openFiles(OpenFileRequest{}); }, 1},
        {"browse folder", [](Dialogs& d) { d.browseFolder("Folder", "C:\\"); }, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TroubledRegistry registry;
        ScriptedDialogs shown;
        StoreWarningDialogs dialogs(shown, registry);
        registry.pending = {"The settings file was damaged.", "Cannot save.", "Cannot save."};
        c.show(dialogs);
        ASSERT_EQ(shown.messages().size(), c.messagesAfter);
        EXPECT_EQ(shown.messages()[0].title, QStringLiteral("WARNING!"));
        EXPECT_EQ(shown.messages()[0].text, QStringLiteral("The settings file was damaged.\n\nCannot save."));
        EXPECT_EQ(shown.messages()[0].icon, MessageIcon::Exclamation);
        // The same failure again is not explained twice; a new one is.
        registry.pending = {"Cannot save."};
        dialogs.explainPending();
        EXPECT_EQ(shown.messages().size(), c.messagesAfter);
        registry.pending = {"Cannot save.", "The disk is full."};
        dialogs.explainPending();
        ASSERT_EQ(shown.messages().size(), c.messagesAfter + 1);
        EXPECT_EQ(shown.lastMessage().text, QStringLiteral("The disk is full."));
    }
    // Nor is the failure the coming message reports itself.
    TroubledRegistry registry;
    ScriptedDialogs shown;
    StoreWarningDialogs dialogs(shown, registry);
    const QString failure = QStringLiteral("Could not save registry.json: permission denied.");
    registry.pending = {failure};
    dialogs.message("Options", "The settings were not saved:\n\n" + failure, MessageIcon::Critical);
    ASSERT_EQ(shown.messages().size(), 1u);
    EXPECT_EQ(shown.messages()[0].title, QStringLiteral("Options"));
    registry.pending = {failure};
    dialogs.explainPending();
    EXPECT_EQ(shown.messages().size(), 1u);
}
