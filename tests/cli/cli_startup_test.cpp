#include "platform/file_registry.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct CliRun {
    int status = -1;
    QString out;
    QString err;
};

// korvel-cli with its settings in a file of its own, drive C: on a temporary folder and the
// desktop's data folder there too.
class StartupCli {
public:
    StartupCli() {
        QDir(m_dir.path()).mkpath(QStringLiteral("c/Games/MTM2"));
        QDir(m_dir.path()).mkpath(QStringLiteral("c/Games/4x4 Evolution"));
        touch(QStringLiteral("c/Games/MTM2/monster.exe"));
        touch(QStringLiteral("c/Games/4x4 Evolution/4x4.exe"));
    }

    QString path(const QString& relative) const { return m_dir.filePath(relative); }
    QString registryFile() const { return path(QStringLiteral("registry.json")); }

    CliRun run(const QStringList& args) const {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("KORVEL_REGISTRY"), registryFile());
        env.insert(QStringLiteral("KORVEL_DRIVES"), QStringLiteral("C=") + path(QStringLiteral("c")));
        env.insert(QStringLiteral("WINEPREFIX"), path(QStringLiteral("no-wine")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), path(QStringLiteral("data")));
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(KORVEL_CLI_PATH), args);
        process.waitForFinished(60000);
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
    }

    // A value straight from the settings file.
    std::optional<std::string> stored(const std::string& subkey, const std::string& name) const {
        korvel::FileRegistry registry(registryFile());
        return registry.readValue(korvel::RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel" + subkey, name);
    }

private:
    void touch(const QString& relative) const {
        QFile file(path(relative));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("MZ");
    }

    QTemporaryDir m_dir;
};

} // namespace

TEST(CliProfiles, addsListsAndRemovesProfiles) {
    StartupCli cli;
    CliRun added = cli.run({"profiles", "add", cli.path("c/Games/MTM2/monster.exe")});
    ASSERT_EQ(added.status, 0) << added.err.toStdString();
    EXPECT_EQ(cli.stored("\\MTM2", "Location"), "C:\\Games\\MTM2");
    EXPECT_EQ(cli.stored("\\MTM2", "Location-INI"), "C:\\Games\\MTM2\\POD.INI");
    EXPECT_EQ(cli.stored("\\MTM2", "Location-EXE"), "C:\\Games\\MTM2\\monster.exe");
    EXPECT_EQ(cli.stored("\\MTM2", "Configurator"), "True");

    ASSERT_EQ(cli.run({"profiles", "add", cli.path("c/Games/4x4 Evolution/4x4.exe"), "--name", "Evo"}).status, 0);
    EXPECT_EQ(cli.stored("\\Evo", "Configurator"), "False");
    EXPECT_EQ(cli.run({"profiles", "list"}).out, "MTM2\nEvo\n");

    CliRun missing = cli.run({"profiles", "add", cli.path("c/Games/none.exe")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "File not found!\n");

    EXPECT_EQ(cli.run({"profiles", "remove", "mtm2"}).status, 1); // names match exactly
    ASSERT_EQ(cli.run({"profiles", "remove", "MTM2"}).status, 0);
    ASSERT_EQ(cli.run({"profiles", "remove", "Evo"}).status, 0);
    EXPECT_EQ(cli.stored("", "InstalledGames"), "Error");
    EXPECT_EQ(cli.run({"profiles", "list"}).out, "");
    // The removed profiles' values stay behind.
    EXPECT_EQ(cli.stored("\\MTM2", "Location"), "C:\\Games\\MTM2");

    EXPECT_EQ(cli.run({"profiles"}).status, 2);
    EXPECT_EQ(cli.run({"profiles", "list", "--name", "x"}).status, 2);
}

TEST(CliSettings, getsSetsAndShowsValues) {
    StartupCli cli;
    EXPECT_EQ(cli.run({"settings", "get", "Associate"}).status, 1); // nothing stored yet
    ASSERT_EQ(cli.run({"settings", "--profile", "MTM2", "set", "Slider", "4000"}).status, 0);
    ASSERT_EQ(cli.run({"settings", "set", "Associate", "1"}).status, 0);
    EXPECT_EQ(cli.run({"settings", "get", "Associate"}).out, "1\n");
    EXPECT_EQ(cli.run({"settings", "--profile", "MTM2", "get", "Slider"}).out, "4000\n");
    EXPECT_EQ(cli.stored("\\MTM2", "Slider"), "4000");

    CliRun unset = cli.run({"settings", "--profile", "MTM2", "get", "Screen"});
    EXPECT_EQ(unset.status, 1);
    EXPECT_EQ(unset.err, "Screen is not set.\n");
    EXPECT_EQ(cli.run({"settings", "--profile", "MTM2", "show"}).out, "Slider=4000\n");
    EXPECT_EQ(cli.run({"settings", "--profile", "Other", "show"}).status, 1);
    EXPECT_EQ(cli.run({"settings", "set", "Associate"}).status, 2);
    EXPECT_EQ(cli.run({"settings", "--profile", "", "show"}).status, 2);
}

TEST(CliAssociate, registersAndUnregistersTheArchiveType) {
    StartupCli cli;
    const QString program = cli.path("bin/korvel");
    ASSERT_EQ(cli.run({"associate", "on", "--program", program}).status, 0);
    EXPECT_EQ(cli.stored("", "Associate"), "1");
    korvel::FileRegistry registry(cli.registryFile());
    EXPECT_EQ(registry.readValue(korvel::RegistryRoot::ClassesRoot, ".pod", ""), "Korvel");
    const std::optional<std::string> command =
        registry.readValue(korvel::RegistryRoot::ClassesRoot, "Korvel\\shell\\open\\command", "");
    ASSERT_TRUE(command);
    EXPECT_TRUE(command->ends_with("\\bin\\korvel.exe\" \"%1\"")) << *command;

    QFile entry(cli.path("data/applications/korvel.desktop"));
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    const QByteArray text = entry.readAll();
    entry.close();
    EXPECT_TRUE(text.contains("Exec=\"" + program.toUtf8() + "\" %f\n"));
    EXPECT_TRUE(text.contains("MimeType=application/x-pod-archive;"));
    EXPECT_TRUE(QFile::exists(cli.path("data/mime/packages/korvel-pod.xml")));

    ASSERT_EQ(cli.run({"associate", "off"}).status, 0);
    EXPECT_EQ(cli.stored("", "Associate"), "0");
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    EXPECT_FALSE(entry.readAll().contains("MimeType="));
    korvel::FileRegistry after(cli.registryFile());
    EXPECT_EQ(after.readValue(korvel::RegistryRoot::ClassesRoot, ".pod", ""), "Korvel"); // the keys stay

    EXPECT_EQ(cli.run({"associate", "maybe"}).status, 2);
}
