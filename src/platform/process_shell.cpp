#include "process_shell.h"

#include "game_text.h"
#include "wine.h"

#include <QFileInfo>
#include <QProcess>
#include <QUrl>

namespace korvel {

namespace {

bool startOpener(const QString& target) {
#ifdef Q_OS_WIN
    return QProcess::startDetached(QStringLiteral("cmd"),
                                   {QStringLiteral("/c"), QStringLiteral("start"), QString(), target});
#elif defined(Q_OS_MACOS)
    return QProcess::startDetached(QStringLiteral("open"), {target});
#else
    return QProcess::startDetached(QStringLiteral("xdg-open"), {target});
#endif
}

} // namespace

bool ProcessShell::openDocument(const std::string& gamePath) {
    const QString host = m_paths.toHost(gamePath);
    return !host.isEmpty() && QFileInfo::exists(host) && startOpener(host);
}

bool ProcessShell::openUrl(const QString& url) {
    return startOpener(url);
}

bool ProcessShell::launch(const std::string& executable, const std::string& workingFolder) {
    return launchWith(QString(), executable, workingFolder);
}

bool ProcessShell::launchWith(const QString& launchCommand, const std::string& executable,
                              const std::string& workingFolder) {
    m_launchFailure.clear();
    const QString host = m_paths.toHost(executable);
    const Result<GameLaunchPlan> plan =
        planGameLaunch(host.isEmpty() ? fromGameText(executable) : host, m_paths.toHost(workingFolder), launchCommand,
                       PathMap::hostWinePrefix());
    if (!plan) {
        m_launchFailure = plan.failure().message;
        return false;
    }
    QProcess process;
    process.setProgram(plan->program);
    process.setArguments(plan->arguments);
    process.setWorkingDirectory(plan->workingFolder);
    process.setProcessEnvironment(plan->environment);
    if (!process.startDetached()) {
        m_launchFailure = QStringLiteral("%1 could not be started: %2").arg(plan->program, process.errorString());
        return false;
    }
    return true;
}

} // namespace korvel
