#pragma once

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>

namespace korvel::testing {

// Kills a child process at random moments while it saves a file over and over, and checks after
// every kill that the file holds one of the two contents the child alternates between.
//
// The child is this test program itself, running the disabled test `childTest` with
// KORVEL_SAVE_CHILD_DIR naming the folder to work in. It prints "ready" once it has started saving.
inline void killWhileSaving(const QString& childTest, const QString& folder, int rounds,
                            const std::function<void()>& checkFile) {
    static int argc = 1;
    static char name[] = "configurator_tests";
    static char* argv[] = {name, nullptr};
    if (!QCoreApplication::instance())
        new QCoreApplication(argc, argv);
    const QString self = QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget();
    if (self.isEmpty())
        GTEST_SKIP() << "the program's own path is not known on this system";

    std::mt19937 random(12345);
    std::uniform_int_distribution<int> delay(0, 25);
    for (int round = 0; round < rounds; ++round) {
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KORVEL_SAVE_CHILD_DIR"), folder);
        child.setProcessEnvironment(environment);
        child.start(self,
                    {QStringLiteral("--gtest_also_run_disabled_tests"), QStringLiteral("--gtest_filter=") + childTest});
        ASSERT_TRUE(child.waitForStarted(5000));
        bool ready = false;
        while (!ready && child.state() == QProcess::Running) {
            if (!child.canReadLine() && !child.waitForReadyRead(5000))
                break;
            while (!ready && child.canReadLine())
                ready = child.readLine().startsWith("ready");
        }
        ASSERT_TRUE(ready) << "round " << round << ": the child did not start saving";
        QThread::msleep(static_cast<unsigned long>(delay(random)));
        child.kill();
        ASSERT_TRUE(child.waitForFinished(5000));
        checkFile();
        if (::testing::Test::HasFailure())
            return;
    }
}

// The folder of a child run, or empty when this is not one.
inline QString saveChildFolder() {
    return qEnvironmentVariable("KORVEL_SAVE_CHILD_DIR");
}

} // namespace korvel::testing
