#include "startup_fixture.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace korvel;
using namespace korvel::testing;

namespace {

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST(FileAssociation, registersWithTheDesktopAndUnregisteringStopsClaimingTheType) {
    TempDrive drive;
    QTemporaryDir dataHome;
    SettingsStore store(drive.registry(), drive.dialogs());
    FileAssociation association(store, drive.paths(), {"/opt/My \"Tools\"/korvel", true, dataHome.path(), false});
    association.Unregister(); // nothing registered yet: nothing is created
    EXPECT_FALSE(QFile::exists(association.desktopEntryPath()));

    association.Register();
    EXPECT_EQ(store.ReadValue("HKEY_CLASSES_ROOT\\Korvel\\shell\\open\\command", ""),
              "\"\\opt\\My \"Tools\"\\korvel.exe\" \"%1\"");
    EXPECT_TRUE(readFile(association.mimePackagePath()).contains("<glob pattern=\"*.pod\""));
    const QByteArray entry = readFile(association.desktopEntryPath());
    EXPECT_TRUE(entry.contains("Exec=\"/opt/My \\\\\"Tools\\\\\"/korvel\" %f\n")) << entry.toStdString();
    EXPECT_TRUE(entry.contains("MimeType=application/x-pod-archive;"));

    association.Unregister();
    EXPECT_EQ(store.ReadValue("HKEY_CLASSES_ROOT\\.pod", ""), "Korvel"); // the keys stay
    EXPECT_TRUE(QFile::exists(association.mimePackagePath()));
    EXPECT_FALSE(readFile(association.desktopEntryPath()).contains("MimeType="));
}
