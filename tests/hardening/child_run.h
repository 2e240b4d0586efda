#pragma once

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <chrono>

namespace korvel::testing {

// Limits a child process runs under. Zero means no limit.
struct ChildLimits {
    std::chrono::milliseconds timeout{20000};
    qint64 addressSpace = 0; // bytes of virtual memory (ignored in sanitizer builds, which reserve terabytes)
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

// Runs `program` with `arguments` and waits for it within the limits.
ChildResult runChild(const QString& program, const QStringList& arguments, const ChildLimits& limits = {});

// Starts `program`, kills it with SIGKILL after `delay` unless it ended before, and waits for it.
// Returns true when the kill happened while the child was still running.
bool runAndKill(const QString& program, const QStringList& arguments, std::chrono::microseconds delay,
                const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());

// True when this program was built with AddressSanitizer.
bool builtWithAddressSanitizer();

// korvel-cli as built next to the tests.
QString cliProgram();

} // namespace korvel::testing
