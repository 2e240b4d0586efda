#include "platform/file_registry.h"
#include "temp_game.h"

#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

namespace {

struct CliRun {
    int status = -1;
    QString out;
    QString err;
};

// korvel-cli with drive C: on a temporary folder, which also holds its settings file and the
// desktop's data folder.
struct StartupCli {
    korvel::testing::TempDrive drive;
    QString registryFile = drive.root() + QStringLiteral("/registry.json");

    CliRun run(const QStringList& args) const {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("KORVEL_REGISTRY"), registryFile);
        env.insert(QStringLiteral("KORVEL_DRIVES"), QStringLiteral("C=") + drive.root());
        env.insert(QStringLiteral("WINEPREFIX"), drive.root() + QStringLiteral("/no-wine"));
        env.insert(QStringLiteral("XDG_DATA_HOME"), drive.root() + QStringLiteral("/data"));
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(KORVEL_CLI_PATH), args);
        process.waitForFinished(60000);
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
    }

    std::optional<std::string> stored(korvel::RegistryRoot root, const std::string& key,
                                      const std::string& name) const {
        return korvel::FileRegistry(registryFile).readValue(root, key, name);
    }
    std::optional<std::string> stored(const std::string& profile, const std::string& name) const {
        return stored(korvel::RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel" + profile, name);
    }
};

} // namespace

TEST(CliProfiles, addsListsAndRemovesProfiles) {
    StartupCli cli;
    cli.drive.write("C:\\Games\\MTM2\\monster.exe", "MZ");
    cli.drive.write("C:\\Games\\4x4 Evolution\\4x4.exe", "MZ");
    const CliRun added = cli.run({"profiles", "add", cli.drive.host("C:\\Games\\MTM2\\monster.exe")});
    ASSERT_EQ(added.status, 0) << added.err.toStdString();
    EXPECT_EQ(cli.stored("\\MTM2", "Location"), "C:\\Games\\MTM2");
    EXPECT_EQ(cli.stored("\\MTM2", "Configurator"), "True");
    ASSERT_EQ(cli.run({"profiles", "add", cli.drive.host("C:\\Games\\4x4 Evolution\\4x4.exe"), "--name", "Evo"}).status,
              0);
    EXPECT_EQ(cli.stored("\\Evo", "Configurator"), "False");
    EXPECT_EQ(cli.run({"profiles", "list"}).out, "MTM2\nEvo\n");

    const CliRun missing = cli.run({"profiles", "add", cli.drive.host("C:\\Games\\none.exe")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "File not found!\n");
    EXPECT_EQ(cli.run({"profiles", "remove", "mtm2"}).status, 1); // names match exactly
    ASSERT_EQ(cli.run({"profiles", "remove", "MTM2"}).status, 0);
    ASSERT_EQ(cli.run({"profiles", "remove", "Evo"}).status, 0);
    EXPECT_EQ(cli.stored("", "InstalledGames"), "Error");
    EXPECT_EQ(cli.stored("\\MTM2", "Location"), "C:\\Games\\MTM2"); // the values stay behind
    EXPECT_EQ(cli.run({"profiles"}).status, 2);
}

TEST(CliSettings, getsSetsAndShowsValues) {
    StartupCli cli;
    EXPECT_EQ(cli.run({"settings", "get", "Associate"}).status, 1); // nothing stored yet
    ASSERT_EQ(cli.run({"settings", "--profile", "MTM2", "set", "Slider", "4000"}).status, 0);
    ASSERT_EQ(cli.run({"settings", "set", "Associate", "1"}).status, 0);
    EXPECT_EQ(cli.run({"settings", "get", "Associate"}).out, "1\n");
    const CliRun unset = cli.run({"settings", "--profile", "MTM2", "get", "Screen"});
    EXPECT_EQ(unset.status, 1);
    EXPECT_EQ(unset.err, "Screen is not set.\n");
    EXPECT_EQ(cli.run({"settings", "--profile", "MTM2", "show"}).out, "Slider=4000\n");
    EXPECT_EQ(cli.run({"settings", "--profile", "Other", "show"}).status, 1);
    EXPECT_EQ(cli.run({"settings", "set", "Associate"}).status, 2);
}

TEST(CliAssociate, registersAndUnregistersTheArchiveType) {
    StartupCli cli;
    const QString program = cli.drive.host("C:\\Tools\\korvel");
    ASSERT_EQ(cli.run({"associate", "on", "--program", program}).status, 0);
    EXPECT_EQ(cli.stored("", "Associate"), "1");
    EXPECT_EQ(cli.stored(korvel::RegistryRoot::ClassesRoot, "Korvel\\shell\\open\\command", ""),
              "\"C:\\Tools\\korvel.exe\" \"%1\"");
    QFile entry(cli.drive.root() + QStringLiteral("/data/applications/korvel.desktop"));
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    EXPECT_TRUE(entry.readAll().contains("MimeType=application/x-pod-archive;"));
    entry.close();

    ASSERT_EQ(cli.run({"associate", "off"}).status, 0);
    EXPECT_EQ(cli.stored("", "Associate"), "0");
    EXPECT_EQ(cli.stored(korvel::RegistryRoot::ClassesRoot, ".pod", ""), "Korvel"); // the keys stay
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    EXPECT_FALSE(entry.readAll().contains("MimeType="));
    EXPECT_EQ(cli.run({"associate", "maybe"}).status, 2);
}
