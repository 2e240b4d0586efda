#include "process_shell.h"

#include <QFileInfo>
#include <QProcess>
#include <QUrl>

namespace korvel {

namespace {

bool startOpener(const QString& target) {
#ifdef Q_OS_WIN
    return QProcess::startDetached(QStringLiteral("cmd"), {QStringLiteral("/c"), QStringLiteral("start"), QString(), target});
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

bool ProcessShell::openUrl(const QString& url) { return startOpener(url); }

bool ProcessShell::launch(const std::string& executable, const std::string& workingFolder) {
    const QString host = m_paths.toHost(executable);
    if (host.isEmpty() || !QFileInfo(host).isFile())
        return false;
    const QString folder = m_paths.toHost(workingFolder);
#ifdef Q_OS_WIN
    return QProcess::startDetached(host, {}, folder);
#else
    const QString wine = qEnvironmentVariable("KORVEL_WINE", QStringLiteral("wine"));
    return QProcess::startDetached(wine, {host}, folder);
#endif
}

} // namespace korvel
