#pragma once

#include <QDialog>

namespace korvel {
class Shell;
}

namespace korvel::ui {

// `frmAbout`: the version text, the legal notice and the web and mail links, opened through the
// shell service.
class AboutDialog : public QDialog {
    Q_OBJECT

public:
    AboutDialog(const QString& versionText, Shell& shell, QWidget* parent = nullptr);
};

} // namespace korvel::ui
