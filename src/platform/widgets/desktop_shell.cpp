#include "desktop_shell.h"

#include "platform/process_shell.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace korvel {

bool DesktopShell::openDocument(const std::string& gamePath) {
    const QString host = m_paths.toHost(gamePath);
    return !host.isEmpty() && QFileInfo::exists(host) && QDesktopServices::openUrl(QUrl::fromLocalFile(host));
}

bool DesktopShell::openUrl(const QString& url) {
    return QDesktopServices::openUrl(QUrl(url));
}

bool DesktopShell::launch(const std::string& executable, const std::string& workingFolder) {
    return launchWith(QString(), executable, workingFolder);
}

bool DesktopShell::launchWith(const QString& launchCommand, const std::string& executable,
                              const std::string& workingFolder) {
    ProcessShell shell(m_paths);
    const bool started = shell.launchWith(launchCommand, executable, workingFolder);
    m_launchFailure = shell.launchFailure();
    return started;
}

} // namespace korvel
