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

// What stands in the way of saving, and the system's refusal the message names.
struct Obstacle {
    const char* name;
    const char* reason; // in the error message
    const char* cause;  // also in it, whatever its case
    bool everyCommand;  // else only the commands that make the file grow
    std::function<void(class FailedSave&)> arrange;
};

class FailedSave : public CliFolder {
protected:
    void SetUp() override {
        write("Games/MTM2/monster.exe", "MZ");
        write("Games/Evo/4x4.exe", "MZ");
        const CliRun added = succeeds({"profiles", "add", path("Games/MTM2/monster.exe")});
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
    void restore() {
        m_childSetup = {};
        QFile::setPermissions(m_dir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }
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
    const QFileDevice::Permissions readOnly = QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
    const QFileDevice::Permissions searchable = QFileDevice::ExeOwner | QFileDevice::ExeGroup | QFileDevice::ExeOther;
    const std::vector<Obstacle> obstacles = {
        {"no room for the lock file", "Cannot create the lock file", "File too large", true,
         [](FailedSave& f) { f.limitFileSize(16); }},
        {"no room for the settings", "registry.json: File too large", "File too large", false,
         [size](FailedSave& f) { f.limitFileSize(rlim_t(size) + 8); }},
        {"read-only folder", "Cannot create the lock file", "permission denied", true,
         [=](FailedSave& f) { f.runWithoutPrivileges(readOnly | searchable, readOnly); }},
        {"read-only file", "Could not save", "", true,
         [readOnly](FailedSave& f) { f.runWithoutPrivileges(QFileDevice::Permissions(0x7777), readOnly); }},
    };
    const QByteArray before = read("registry.json");
    for (const Obstacle& obstacle : obstacles) {
        for (const WritingCommand& command : commands) {
            if (!obstacle.everyCommand && !command.growsTheFile)
                continue;
            obstacle.arrange(*this);
            const CliRun run = cli(command.args);
            restore();
            SCOPED_TRACE(std::string(command.name) + " with " + obstacle.name + ": " + run.err.toStdString());
            EXPECT_EQ(run.status, 1);
            EXPECT_TRUE(run.err.contains(obstacle.reason));
            EXPECT_TRUE(run.err.contains(obstacle.cause, Qt::CaseInsensitive));
            EXPECT_FALSE(run.err.contains("locked by another program"));
            EXPECT_EQ(run.out, "");                   // no "Added ..." or "Opening ..."
            EXPECT_EQ(read("registry.json"), before); // nothing half-written
        }
    }
}

TEST_F(FailedSave, aLockHeldByAnotherProgramIsNamedAsSuch) {
    QLockFile lock(path("registry.json.lock")); // as another korvel-cli holds it
    ASSERT_TRUE(lock.tryLock(0));
    const CliRun run = cli({"settings", "set", "Associate", "1"});
    lock.unlock();
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.contains("locked by another program")) << run.err.toStdString();
    EXPECT_EQ(cli({"settings", "get", "Associate"}).status, 1); // not written
    EXPECT_EQ(cli({"settings", "set", "Associate", "1"}).status, 0);
}

TEST_F(FailedSave, twoProfilesAddedAtOnceAreBothKept) {
    QStringList expected{"MTM2"};
    for (int round = 0; round < 12; ++round) {
        std::vector<std::unique_ptr<QProcess>> adds;
        for (const QString& name : {QStringLiteral("A%1").arg(round), QStringLiteral("B%1").arg(round)}) {
            auto& process = adds.emplace_back(std::make_unique<QProcess>());
            process->setProcessEnvironment(environment());
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
    serveEvents();
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
