#pragma once

#include "platform/dialogs.h"
#include "platform/path_map.h"

class QWidget;

namespace korvel {

// The dialogs service of the desktop application: Qt message, input, file and folder dialogs.
// Paths cross this boundary as game paths; the drive map turns them into host paths and back.
class QtDialogs : public Dialogs {
public:
    explicit QtDialogs(const PathMap& paths, QWidget* parent = nullptr) : m_paths(paths), m_parent(parent) {}
    void setParent(QWidget* parent) { m_parent = parent; }

    MessageAnswer message(const QString& title, const QString& text, MessageIcon icon,
                          MessageButtons buttons = MessageButtons::Ok) override;
    std::optional<QString> input(const QString& title, const QString& prompt, const QString& proposal) override;
    std::vector<std::string> openFiles(const OpenFileRequest& request) override;
    std::optional<std::string> browseFolder(const QString& caption, const std::string& startFolder) override;

private:
    const PathMap& m_paths;
    QWidget* m_parent;
};

} // namespace korvel
