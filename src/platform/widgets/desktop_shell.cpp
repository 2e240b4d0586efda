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

bool DesktopShell::openUrl(const QString& url) { return QDesktopServices::openUrl(QUrl(url)); }

bool DesktopShell::launch(const std::string& executable, const std::string& workingFolder) {
    return ProcessShell(m_paths).launch(executable, workingFolder);
}

} // namespace korvel
