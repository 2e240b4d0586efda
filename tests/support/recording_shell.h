#pragma once

#include "platform/shell.h"

#include <QStringList>

#include <string>
#include <vector>

namespace korvel::testing {

// A shell that only records what it was asked to open or launch.
class RecordingShell : public Shell {
public:
    bool openDocument(const std::string& gamePath) override {
        documents.push_back(gamePath);
        return succeed;
    }
    bool openUrl(const QString& url) override {
        urls << url;
        return succeed;
    }
    bool launch(const std::string& executable, const std::string& workingFolder) override {
        launches.push_back({executable, workingFolder});
        return succeed;
    }
    bool launchWith(const QString& launchCommand, const std::string& executable,
                    const std::string& workingFolder) override {
        launchCommands << launchCommand;
        return launch(executable, workingFolder);
    }
    QString launchFailure() const override { return succeed ? QString() : failure; }

    bool succeed = true;
    QString failure; // what launchFailure() reports when launching does not succeed
    QStringList launchCommands;
    std::vector<std::string> documents;
    QStringList urls;
    std::vector<std::pair<std::string, std::string>> launches;
};

} // namespace korvel::testing
