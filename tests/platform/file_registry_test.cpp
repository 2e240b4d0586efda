#include "platform/file_registry.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace korvel;

namespace {
constexpr auto HKCU = RegistryRoot::CurrentUser;
constexpr auto HKCR = RegistryRoot::ClassesRoot;
const std::string kKey = "Software\\Dunmere\\Korvel";

QStringList entriesOf(const QTemporaryDir& dir) {
    return QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
}
} // namespace

TEST(FileRegistry, keepsKeysAndValuesOfAnyBytesAcrossInstancesAndDeletesOnlyKeysWithoutSubkeys) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/sub/registry.json";
    {
        FileRegistry registry(path);
        EXPECT_FALSE(registry.writeValue(HKCU, kKey, "Associate", "1")); // no key yet: nothing written
        ASSERT_TRUE(registry.createKey(HKCU, kKey + "\\MTM2"));
        EXPECT_TRUE(registry.keyExists(HKCU, kKey)); // parents are created too
        EXPECT_TRUE(registry.writeValue(HKCU, kKey, "ExtraDirs", std::string(1, '\0')));
        EXPECT_TRUE(registry.writeValue(HKCU, kKey + "\\MTM2", "Location", "C:\\Games\\MTM2 \xe9"));
        ASSERT_TRUE(registry.createKey(HKCR, "Korvel\\shell\\open\\command"));
        ASSERT_TRUE(registry.createKey(HKCR, "Korvel shell"));
    }
    FileRegistry again(path);
    EXPECT_EQ(again.readValue(HKCU, kKey, "extradirs"), std::string(1, '\0'));
    EXPECT_EQ(again.readValue(HKCU, "SOFTWARE\\dunmere\\korvel\\mtm2", "Location"), "C:\\Games\\MTM2 \xe9");
    EXPECT_FALSE(again.readValue(HKCU, kKey, "Missing").has_value());
    EXPECT_TRUE(again.takeWarnings().isEmpty());
    EXPECT_FALSE(again.deleteKey(HKCR, "Korvel"));
    EXPECT_TRUE(again.deleteKey(HKCR, "Korvel\\shell\\open\\command"));
    EXPECT_FALSE(again.keyExists(HKCR, "Korvel\\shell\\open\\command"));
    EXPECT_TRUE(again.keyExists(HKCR, "Korvel\\shell\\open"));
    EXPECT_FALSE(again.deleteKey(HKCR, "Nothing"));
}

TEST(FileRegistry, twoInstancesDoNotLoseEachOthersWrites) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/registry.json";
    FileRegistry first(path);
    FileRegistry second(path);
    ASSERT_TRUE(first.createKey(HKCU, kKey));
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(first.writeValue(HKCU, kKey, "A" + std::to_string(i), "first"));
        ASSERT_TRUE(second.writeValue(HKCU, kKey, "B" + std::to_string(i), "second"));
    }
    FileRegistry reader(path);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(reader.readValue(HKCU, kKey, "A" + std::to_string(i)), "first");
        EXPECT_EQ(reader.readValue(HKCU, kKey, "B" + std::to_string(i)), "second");
    }
    EXPECT_EQ(first.readValue(HKCU, kKey, "B19"), "second"); // sees the other's change
}

TEST(FileRegistry, keepsADamagedFileAsideAndReportsItOnce) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/registry.json";
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("{ this is not a registry");
    }
    FileRegistry registry(path);
    const QStringList warnings = registry.takeWarnings();
    ASSERT_EQ(warnings.size(), 1);
    EXPECT_TRUE(warnings.first().contains("damaged"));
    EXPECT_TRUE(registry.takeWarnings().isEmpty());
    const QStringList aside = QDir(dir.path()).entryList({"registry.json.damaged-*"});
    ASSERT_EQ(aside.size(), 1);
    QFile kept(dir.path() + "/" + aside.first());
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), QByteArray("{ this is not a registry"));
    // The store works on from empty.
    EXPECT_TRUE(registry.createKey(HKCU, kKey));
    EXPECT_TRUE(registry.keyExists(HKCU, kKey));
}

TEST(FileRegistry, savesAGroupOfChangesOnceAtItsOutermostEnd) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/registry.json";
    FileRegistry registry(path);
    ASSERT_TRUE(registry.createKey(HKCU, kKey));
    auto onDisk = [&](const std::string& name) { return FileRegistry(path).readValue(HKCU, kKey + "\\MTM2", name); };
    registry.beginChanges();
    registry.beginChanges();
    ASSERT_TRUE(registry.createKey(HKCU, kKey + "\\MTM2"));
    ASSERT_TRUE(registry.writeValue(HKCU, kKey + "\\MTM2", "Location", "C:\\Games\\MTM2"));
    EXPECT_TRUE(registry.endChanges());
    EXPECT_EQ(registry.readValue(HKCU, kKey + "\\MTM2", "Location"), "C:\\Games\\MTM2"); // seen here...
    EXPECT_FALSE(onDisk("Location").has_value());                                        // ...not saved yet
    ASSERT_TRUE(registry.writeValue(HKCU, kKey + "\\MTM2", "MMPA", "99"));
    EXPECT_TRUE(registry.endChanges());
    EXPECT_EQ(onDisk("Location"), "C:\\Games\\MTM2");
    EXPECT_EQ(onDisk("MMPA"), "99");
    EXPECT_FALSE(registry.takeSaveFailure().has_value());
    EXPECT_FALSE(QFile::exists(path + ".lock")); // released
}

TEST(FileRegistry, aGroupThatCannotBeSavedChangesNothingAndGivesItsReasonOnce) {
    QTemporaryDir dir;
    QFile(dir.path() + "/file").open(QIODevice::WriteOnly);
    FileRegistry registry(dir.path() + "/file/registry.json"); // its folder is a file
    registry.beginChanges();
    EXPECT_FALSE(registry.createKey(HKCU, kKey));
    EXPECT_FALSE(registry.endChanges());
    EXPECT_FALSE(registry.keyExists(HKCU, kKey));
    const std::optional<QString> failure = registry.takeSaveFailure();
    ASSERT_TRUE(failure.has_value());
    EXPECT_TRUE(failure->contains("Cannot create the folder")) << failure->toStdString();
    EXPECT_FALSE(registry.takeSaveFailure().has_value()); // reported once
    EXPECT_FALSE(registry.createKey(HKCU, kKey));         // outside a group too
    EXPECT_TRUE(registry.takeSaveFailure().has_value());
}

TEST(FileRegistry, saysAtOnceWhenItsFileCannotBeWrittenAndLeavesNoTraceWhenItCan) {
    const struct {
        const char* file;    // under the temporary folder
        const char* blocker; // a file made there first, standing where a folder should be
        bool folderAsFile;   // the settings file's own name is taken by a folder
        const char* reason;  // empty: no warning
    } cases[] = {
        {"new/deeper/registry.json", nullptr, false, ""},
        {"config/korvel/registry.json", "config", false, "is not a folder"},
        {"registry.json", nullptr, true, "it is not a file"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        QTemporaryDir dir;
        if (c.blocker)
            QFile(dir.path() + "/" + c.blocker).open(QIODevice::WriteOnly);
        const QString path = dir.path() + "/" + c.file;
        if (c.folderAsFile)
            QDir().mkpath(path);
        const QStringList before = entriesOf(dir);
        FileRegistry registry(path);
        const QStringList warnings = registry.takeWarnings();
        if (QString(c.reason).isEmpty()) {
            EXPECT_TRUE(warnings.isEmpty()) << warnings.join('\n').toStdString();
        } else {
            ASSERT_EQ(warnings.size(), 1);
            EXPECT_TRUE(warnings[0].contains("cannot be written")) << warnings[0].toStdString();
            EXPECT_TRUE(warnings[0].contains(c.reason)) << warnings[0].toStdString();
        }
        EXPECT_EQ(entriesOf(dir), before); // the check makes nothing: no folder, no probe left behind
    }
}
