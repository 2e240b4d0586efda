#pragma once

#include "platform/path_map.h"
#include "platform/shell.h"

namespace korvel {

// The shell of the desktop application: QDesktopServices for documents and addresses.
class DesktopShell : public Shell {
public:
    explicit DesktopShell(const PathMap& paths) : m_paths(paths) {}
    bool openDocument(const std::string& gamePath) override;
    bool openUrl(const QString& url) override;
    bool launch(const std::string& executable, const std::string& workingFolder) override;
    bool launchWith(const QString& launchCommand, const std::string& executable,
                    const std::string& workingFolder) override;
    QString launchFailure() const override { return m_launchFailure; }

private:
    const PathMap& m_paths;
    QString m_launchFailure;
};

} // namespace korvel
