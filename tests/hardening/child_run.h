#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <cctype>
#include <chrono>
#include <string>
#include <thread>

#ifdef Q_OS_UNIX
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vector>
#endif

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KORVEL_TEST_ASAN 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define KORVEL_TEST_ASAN 1
#endif

namespace korvel::testing {

// A file's bytes, or "<missing>" when it cannot be read.
inline QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// Writes `bytes` as the whole file, making its folder first.
inline bool writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}
inline bool writeFile(const QString& path, const std::string& bytes) {
    return writeFile(path, QByteArray::fromStdString(bytes));
}

// A test-parameter name made of letters, digits and "_" only.
inline std::string paramName(std::string name) {
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return name;
}

// Limits a child process runs under. Zero means no limit.
struct ChildLimits {
    std::chrono::milliseconds timeout{20000};
    QString workingDirectory; // empty: this process's
    qint64 addressSpace = 0;  // bytes of virtual memory (ignored under AddressSanitizer, which reserves terabytes)
    qint64 fileSize = 0;      // the largest file the child may write; writes beyond fail with EFBIG
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};

struct ChildResult {
    bool started = false;
    bool timedOut = false; // still running at the deadline; it was killed
    bool crashed = false;  // ended by a signal
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

inline QString cliProgram() {
    return QStringLiteral(KORVEL_CLI_PATH);
}

inline ChildResult runChild(const QString& program, const QStringList& arguments, const ChildLimits& limits = {}) {
    ChildResult result;
    QProcess process;
    process.setProcessEnvironment(limits.environment);
#ifdef Q_OS_UNIX
#ifdef KORVEL_TEST_ASAN
    const qint64 addressSpace = 0;
#else
    const qint64 addressSpace = limits.addressSpace;
#endif
    const qint64 fileSize = limits.fileSize;
    // Runs in the forked child before exec: only async-signal-safe calls.
    process.setChildProcessModifier([addressSpace, fileSize] {
        if (addressSpace > 0) {
            const rlimit limit{rlim_t(addressSpace), rlim_t(addressSpace)};
            setrlimit(RLIMIT_AS, &limit);
        }
        if (fileSize > 0) {
            signal(SIGXFSZ, SIG_IGN); // a write past the limit fails with EFBIG instead of killing
            const rlimit limit{rlim_t(fileSize), rlim_t(fileSize)};
            setrlimit(RLIMIT_FSIZE, &limit);
        }
    });
#endif
    if (!limits.workingDirectory.isEmpty())
        process.setWorkingDirectory(limits.workingDirectory);
    process.start(program, arguments);
    result.started = process.waitForStarted(10000);
    if (!result.started)
        return result;
    if (!process.waitForFinished(int(limits.timeout.count()))) {
        result.timedOut = true;
        process.kill();
        process.waitForFinished(5000);
    }
    result.crashed = !result.timedOut && process.exitStatus() == QProcess::CrashExit;
    result.exitCode = process.exitCode();
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

// Starts `program` and sends SIGKILL after `delay`; true when the child was still running then.
inline bool runAndKill(const QString& program, const QStringList& arguments, std::chrono::microseconds delay,
                       const QProcessEnvironment& environment) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForStarted(10000))
        return false;
    std::this_thread::sleep_for(delay);
    const bool running = process.state() == QProcess::Running;
    process.kill();
    process.waitForFinished(10000);
    return running && process.exitStatus() == QProcess::CrashExit;
}

// A game folder in a temporary folder, and the environment korvel-cli runs in over it: its settings
// file is "registry.json" inside the game folder, drive C: is the temporary folder, and the Wine
// prefix does not exist.
class CliGameFolder {
public:
    CliGameFolder() : m_game(m_temp.path() + QStringLiteral("/game")) {}
    QString inGame(const char* relative) const { return m_game + QLatin1Char('/') + QLatin1String(relative); }
    // A command line whose "%g" stand for the game folder.
    QStringList command(const char* text) const {
        return QString::fromLatin1(text).split(QLatin1Char(' ')).replaceInStrings("%g", m_game);
    }
    QProcessEnvironment environment() const {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KORVEL_REGISTRY"), inGame("registry.json"));
        environment.insert(QStringLiteral("KORVEL_DRIVES"), QStringLiteral("C=") + m_temp.path());
        environment.insert(QStringLiteral("WINEPREFIX"), m_temp.path() + QStringLiteral("/no-wine"));
        return environment;
    }
    ChildLimits limits() const {
        ChildLimits limits;
        limits.environment = environment();
        return limits;
    }
    ChildResult runCli(const char* text) const { return runChild(cliProgram(), command(text), limits()); }

protected:
    QTemporaryDir m_temp;
    QString m_game;
};

#ifdef Q_OS_UNIX
// What one child process cost, as the system accounted it when the child was reaped.
struct MeasuredResult {
    bool finished = false; // ended by itself before the deadline
    int exitCode = -1;
    qint64 peakRssKiB = 0; // the child's largest resident set
    double cpuSeconds = 0; // user + system time
    QByteArray err;        // standard output goes to `outFile`
};

// Runs `program` with standard output into `outFile` and reaps it with wait4(), which reports that
// one child's peak memory and processor time (QProcess cannot tell them).
inline MeasuredResult runMeasured(const QString& program, const QStringList& arguments, const QString& outFile,
                                  std::chrono::milliseconds timeout = std::chrono::seconds(20)) {
    MeasuredResult result;
    std::vector<QByteArray> storage{program.toLocal8Bit()};
    for (const QString& argument : arguments)
        storage.push_back(argument.toLocal8Bit());
    std::vector<char*> argv;
    for (QByteArray& item : storage)
        argv.push_back(item.data());
    argv.push_back(nullptr);
    const QByteArray errPath = (outFile + QStringLiteral(".err")).toLocal8Bit();
    const int out = ::open(outFile.toLocal8Bit().constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const int err = ::open(errPath.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (out < 0 || err < 0)
        return result;
    const pid_t pid = ::fork();
    if (pid == 0) { // only async-signal-safe calls until exec
        ::dup2(out, 1);
        ::dup2(err, 2);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(out);
    ::close(err);
    if (pid < 0)
        return result;
    int status = 0;
    rusage usage{};
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    pid_t done = 0;
    while ((done = ::wait4(pid, &status, WNOHANG, &usage)) == 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    if (done == 0) {
        ::kill(pid, SIGKILL);
        ::wait4(pid, &status, 0, &usage);
    } else {
        result.finished = WIFEXITED(status);
        result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    result.peakRssKiB = usage.ru_maxrss;
    result.cpuSeconds = double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                        double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    result.err = readFile(QString::fromLocal8Bit(errPath));
    return result;
}
#endif

} // namespace korvel::testing
