#pragma once

#include <QProcess>

#include <chrono>
#include <thread>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
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

// Limits a child process runs under. Zero means no limit.
struct ChildLimits {
    std::chrono::milliseconds timeout{20000};
    qint64 addressSpace = 0; // bytes of virtual memory (ignored under AddressSanitizer, which reserves terabytes)
    qint64 fileSize = 0;     // the largest file the child may write; writes beyond fail with EFBIG
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

} // namespace korvel::testing
