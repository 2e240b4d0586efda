#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

struct CliRun {
    int status = -1; // -1 when the program crashed
    QString out, err;
};

// A temporary folder that is drive C: and holds korvel-cli's settings file and the desktop's data
// folder, with files to write into it and read back.
class CliFolder : public ::testing::Test {
protected:
    QString path(const QString& relative) const { return m_dir.filePath(relative); }
    QString write(const QString& relative, QByteArrayView bytes) {
        QDir().mkpath(QFileInfo(path(relative)).absolutePath());
        QFile file(path(relative));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << relative.toStdString();
        file.write(bytes.data(), bytes.size());
        return path(relative);
    }
    QByteArray read(const QString& relative) const {
        QFile file(path(relative));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }

    // korvel-cli's environment: this folder as drive C: and the settings file, no Wine, unreachable
    // web addresses, then NAME=value pairs.
    QProcessEnvironment environment(const QStringList& extra = {}) const {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const QString& pair :
             QStringList{"KORVEL_REGISTRY=" + path("registry.json"), "KORVEL_DRIVES=C=" + m_dir.path(),
                         "WINEPREFIX=" + path("no-wine"), "XDG_DATA_HOME=" + path("data"),
                         "KORVEL_TRACK_SITE=http://127.0.0.1:1/site/",
                         "KORVEL_TRACK_LIST_URL=http://127.0.0.1:1/tracklist.txt"} +
                 extra)
            env.insert(pair.section(QLatin1Char('='), 0, 0), pair.section(QLatin1Char('='), 1));
        return env;
    }
    // An application object whose events serve loopback servers while korvel-cli runs.
    static void serveEvents() {
        static int argc = 1;
        static char* argv[] = {const_cast<char*>("cli_tests"), nullptr};
        [[maybe_unused]] static const auto* app = new QCoreApplication(argc, argv);
    }

    // Runs korvel-cli with NAME=value pairs added to its environment, in `folder` when one is given,
    // while this process's events are served (for loopback servers).
    CliRun cli(const QStringList& args, const QStringList& extra = {}, const QString& folder = {}) const {
        QProcess process;
        process.setProcessEnvironment(environment(extra));
#ifdef Q_OS_UNIX
        if (m_childSetup)
            process.setChildProcessModifier(m_childSetup);
#endif
        process.setWorkingDirectory(folder);
        process.start(QStringLiteral(KORVEL_CLI_PATH), args);
        for (int i = 0; i < 6000 && !process.waitForFinished(10) && process.state() != QProcess::NotRunning; ++i)
            QCoreApplication::processEvents();
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
    }

    // cli() that must succeed; its error output is shown when it does not.
    CliRun succeeds(const QStringList& args, const QStringList& extra = {}, const QString& folder = {}) const {
        CliRun run = cli(args, extra, folder);
        EXPECT_EQ(run.status, 0) << args.join(' ').toStdString() << ": " << run.err.toStdString();
        return run;
    }

    QTemporaryDir m_dir;
    // Runs in the child between fork and exec (Unix): limits, another user.
    std::function<void()> m_childSetup;
};
