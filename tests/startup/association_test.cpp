#include "startup_fixture.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

namespace {

std::string readText(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
}

struct DesktopRig {
    TempDrive drive;
    QTemporaryDir dataHome;
    SettingsStore store{drive.registry(), drive.dialogs()};

    FileAssociation association(const QString& program) {
        AssociationOptions options;
        options.programPath = program;
        options.desktopEntries = true;
        options.dataHome = dataHome.path();
        options.runDesktopTools = false;
        return FileAssociation(store, drive.paths(), options);
    }
};

} // namespace

TEST(FileAssociation, buildsTheOpenCommandFromTheProgramPath) {
    DesktopRig rig;
    EXPECT_EQ(rig.association(rig.drive.host("C:\\Tools\\Korvel.exe")).openCommand(),
              "\"C:\\Tools\\Korvel.exe\" \"%1\"");
    // A program file without an extension still gets ".exe"; a path outside every drive keeps its form.
    EXPECT_EQ(rig.association(rig.drive.host("C:\\Program Files\\korvel")).openCommand(),
              "\"C:\\Program Files\\korvel.exe\" \"%1\"");
    EXPECT_EQ(rig.association(QStringLiteral("/opt/korvel/bin/korvel")).openCommand(),
              "\"\\opt\\korvel\\bin\\korvel.exe\" \"%1\"");
}

TEST(FileAssociation, registersWithTheDesktopAndUnregisteringStopsClaimingTheType) {
    DesktopRig rig;
    const QString program = QStringLiteral("/opt/My \"Tools\"/korvel");
    FileAssociation association = rig.association(program);
    association.Register();

    EXPECT_EQ(rig.store.ReadValue("HKEY_CLASSES_ROOT\\.pod", ""), "Korvel");
    const std::string package = readText(association.mimePackagePath());
    EXPECT_NE(package.find("type=\"application/x-pod-archive\""), std::string::npos);
    EXPECT_NE(package.find("pattern=\"*.pod\""), std::string::npos);
    const std::string entry = readText(association.desktopEntryPath());
    EXPECT_NE(entry.find("Exec=\"/opt/My \\\\\"Tools\\\\\"/korvel\" %f\n"), std::string::npos) << entry;
    EXPECT_NE(entry.find("MimeType=application/x-pod-archive;"), std::string::npos);

    association.Unregister();
    // The keys and the MIME type stay behind; the desktop entry no longer claims archives.
    EXPECT_EQ(rig.store.ReadValue("HKEY_CLASSES_ROOT\\Korvel\\shell\\open\\command", ""),
              "\"\\opt\\My \"Tools\"\\korvel.exe\" \"%1\"");
    EXPECT_FALSE(readText(association.mimePackagePath()).empty());
    const std::string after = readText(association.desktopEntryPath());
    EXPECT_NE(after.find("Exec="), std::string::npos);
    EXPECT_EQ(after.find("MimeType="), std::string::npos);
}

TEST(FileAssociation, unregisteringWithoutAnEntryCreatesNothing) {
    DesktopRig rig;
    FileAssociation association = rig.association(QStringLiteral("/usr/bin/korvel"));
    association.Unregister();
    EXPECT_FALSE(QFile::exists(association.desktopEntryPath()));
    EXPECT_FALSE(QFile::exists(association.mimePackagePath()));
    EXPECT_FALSE(rig.drive.registry().keyExists(RegistryRoot::ClassesRoot, ".pod"));
}
