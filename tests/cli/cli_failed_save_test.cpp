#include "../tracklist/loopback_http_server.h"
#include "cli_run.h"

#include <QLockFile>

#include <functional>

#ifdef Q_OS_UNIX
#include <grp.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace {

#ifdef Q_OS_UNIX

// Commands that write the settings file. Each one finds a settings file holding the profile MTM2,
// and a second game to add.
struct WritingCommand {
    const char* name;
    QStringList args;
    bool growsTheFile; // a failed save can come from the size of what it writes
};

// What stands in the way of saving.
struct Obstacle {
    const char* name;
    const char* reason; // in the error message
    bool everyCommand;  // else only the commands that make the file grow
    std::function<void(class FailedSave&)> arrange;
};

class FailedSave : public CliFolder {
protected:
    void SetUp() override {
        write("Games/MTM2/monster.exe", "MZ");
        write("Games/Evo/4x4.exe", "MZ");
        const CliRun added = cli({"profiles", "add", path("Games/MTM2/monster.exe")});
        ASSERT_EQ(added.status, 0) << added.err.toStdString();
    }

public:
    // Writes larger than `bytes` fail in the command, as on a full disk.
    void limitFileSize(rlim_t bytes) {
        m_childSetup = [bytes] {
            ::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{bytes, bytes};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        };
    }
    // The command runs as a user without rights beyond the folder's and the file's permissions
    // (root ignores them).
    void runWithoutPrivileges(QFileDevice::Permissions folder, QFileDevice::Permissions file) {
        const QFileDevice::Permissions readable = QFileDevice::ReadOwner | QFileDevice::ReadGroup |
                                                  QFileDevice::ReadOther | QFileDevice::ExeOwner |
                                                  QFileDevice::ExeGroup | QFileDevice::ExeOther;
        for (const char* sub : {"Games", "Games/MTM2", "Games/Evo"})
            QFile::setPermissions(path(sub), readable | QFileDevice::WriteOwner);
        QFile::setPermissions(m_dir.path(), folder);
        QFile::setPermissions(path("registry.json"), file);
        if (::geteuid() == 0) {
            m_childSetup = [] {
                if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0)
                    ::_exit(99);
            };
        }
    }
    // Another korvel-cli holds the settings file's lock.
    void holdLock() {
        m_lock = std::make_unique<QLockFile>(path("registry.json.lock"));
        ASSERT_TRUE(m_lock->tryLock(0));
    }
    void restore() {
        m_childSetup = {};
        m_lock.reset();
        QFile::setPermissions(m_dir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

    std::unique_ptr<QLockFile> m_lock;
};

TEST_F(FailedSave, everySettingsWriteExitsWithTheReasonAndLeavesTheFileAsItWas) {
    const QStringList associate{"associate", "on", "--program", path("Tools/korvel")};
    const std::vector<WritingCommand> commands = {
        {"settings set", {"settings", "--profile", "MTM2", "set", "Slider", "4000"}, true},
        {"profiles add", {"profiles", "add", path("Games/Evo/4x4.exe")}, true},
        {"profiles remove", {"profiles", "remove", "MTM2"}, false},
        {"associate on", associate, true},
    };
    const qint64 size = QFileInfo(path("registry.json")).size();
    const QFileDevice::Permissions all = QFileDevice::Permissions(0x7777);
    const QFileDevice::Permissions readOnly = QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
    const std::vector<Obstacle> obstacles = {
        {"no room for the lock file", "Cannot create the lock file", true, [](FailedSave& f) { f.limitFileSize(16); }},
        {"no room for the settings", "registry.json: File too large", false,
         [size](FailedSave& f) { f.limitFileSize(rlim_t(size) + 8); }},
        {"read-only folder", "Cannot create the lock file", true,
         [readOnly](FailedSave& f) {
             f.runWithoutPrivileges(readOnly | QFileDevice::ExeOwner | QFileDevice::ExeGroup | QFileDevice::ExeOther,
                                    readOnly);
         }},
        {"read-only file", "Could not save", true,
         [all, readOnly](FailedSave& f) { f.runWithoutPrivileges(all, readOnly); }},
    };
    const QByteArray before = read("registry.json");
    for (const Obstacle& obstacle : obstacles) {
        for (const WritingCommand& command : commands) {
            if (!obstacle.everyCommand && !command.growsTheFile)
                continue;
            obstacle.arrange(*this);
            const CliRun run = cli(command.args);
            restore();
            const std::string row = std::string(command.name) + " with " + obstacle.name + ": " + run.err.toStdString();
            EXPECT_EQ(run.status, 1) << row;
            EXPECT_TRUE(run.err.contains(obstacle.reason)) << row;
            EXPECT_FALSE(run.err.contains("locked by another program")) << row;
            EXPECT_EQ(run.out, "") << row;                   // no "Added ..." or "Opening ..."
            EXPECT_EQ(read("registry.json"), before) << row; // nothing half-written
        }
    }
    // The reason names the system's refusal.
    runWithoutPrivileges(readOnly | QFileDevice::ExeOther | QFileDevice::ExeOwner, readOnly);
    const CliRun denied = cli(commands.front().args);
    restore();
    EXPECT_TRUE(denied.err.contains("permission denied", Qt::CaseInsensitive)) << denied.err.toStdString();
    limitFileSize(16);
    const CliRun full = cli(commands.front().args);
    restore();
    EXPECT_TRUE(full.err.contains("File too large")) << full.err.toStdString();
}

TEST_F(FailedSave, aLockHeldByAnotherProgramIsNamedAsSuch) {
    holdLock();
    const CliRun run = cli({"settings", "set", "Associate", "1"});
    restore();
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.contains("locked by another program")) << run.err.toStdString();
    EXPECT_EQ(cli({"settings", "get", "Associate"}).status, 1); // not written
    EXPECT_EQ(cli({"settings", "set", "Associate", "1"}).status, 0);
}

TEST_F(FailedSave, twoProfilesAddedAtOnceAreBothKept) {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("KORVEL_REGISTRY", path("registry.json"));
    env.insert("KORVEL_DRIVES", "C=" + m_dir.path());
    env.insert("WINEPREFIX", path("no-wine"));
    QStringList expected{"MTM2"};
    for (int round = 0; round < 12; ++round) {
        std::vector<std::unique_ptr<QProcess>> adds;
        for (const char* game : {"A", "B"}) {
            const QString name = QStringLiteral("%1%2").arg(QLatin1String(game)).arg(round);
            auto& process = adds.emplace_back(std::make_unique<QProcess>());
            process->setProcessEnvironment(env);
            process->start(QStringLiteral(KORVEL_CLI_PATH),
                           {"profiles", "add", path("Games/Evo/4x4.exe"), "--name", name});
            expected << name;
        }
        for (auto& process : adds)
            ASSERT_TRUE(process->waitForFinished(20000) && process->exitCode() == 0)
                << process->readAllStandardError().toStdString();
    }
    QStringList listed = cli({"profiles", "list"}).out.split('\n', Qt::SkipEmptyParts);
    listed.sort();
    expected.sort();
    EXPECT_EQ(listed, expected);
}

TEST_F(FailedSave, aDownloadedTrackListThatCannotBeStoredIsNoSuccess) {
    static int argc = 1;
    static char* argv[] = {const_cast<char*>("cli_tests"), nullptr};
    [[maybe_unused]] static const auto* app = new QCoreApplication(argc, argv); // serves the loopback server
    korvel::testing::LoopbackHttpServer list("QXMTL$Rock & Roll|Race|r.zip");
    const QByteArray before = read("registry.json");
    limitFileSize(16);
    const CliRun run = cli({"tracks", "update", "--url", list.url().toString()});
    restore();
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.contains("Cannot create the lock file")) << run.err.toStdString();
    EXPECT_EQ(read("registry.json"), before);
}

#endif

} // namespace
