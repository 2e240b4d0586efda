#pragma once

#include "path_map.h"
#include "shell.h"

namespace korvel {

// The shell for programs without a desktop session of their own (the command line): xdg-open or
// the system's "start", and the game run through Wine off Windows.
class ProcessShell : public Shell {
public:
    explicit ProcessShell(const PathMap& paths) : m_paths(paths) {}
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
