#include "child_run.h"

#include <QCoreApplication>
#include <QProcess>

#include <thread>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

namespace korvel::testing {

bool builtWithAddressSanitizer() {
#if defined(__SANITIZE_ADDRESS__)
    return true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
    return true;
#else
    return false;
#endif
#else
    return false;
#endif
}

QString cliProgram() {
    return QStringLiteral(KORVEL_CLI_PATH);
}

ChildResult runChild(const QString& program, const QStringList& arguments, const ChildLimits& limits) {
    ChildResult result;
    QProcess process;
    process.setProcessEnvironment(limits.environment);
#ifdef Q_OS_UNIX
    const qint64 addressSpace = builtWithAddressSanitizer() ? 0 : limits.addressSpace;
    const qint64 fileSize = limits.fileSize;
    // Runs in the forked child before exec: only async-signal-safe calls.
    process.setChildProcessModifier([addressSpace, fileSize] {
        if (addressSpace > 0) {
            const rlimit limit{rlim_t(addressSpace), rlim_t(addressSpace)};
            setrlimit(RLIMIT_AS, &limit);
        }
        if (fileSize > 0) {
            // A write past the limit then fails with EFBIG instead of killing the process.
            signal(SIGXFSZ, SIG_IGN);
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

bool runAndKill(const QString& program, const QStringList& arguments, std::chrono::microseconds delay,
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
    process.kill(); // SIGKILL
    process.waitForFinished(10000);
    return running && process.exitStatus() == QProcess::CrashExit;
}

} // namespace korvel::testing
