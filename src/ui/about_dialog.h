#pragma once

#include <QDialog>

namespace korvel {
class Shell;
}

namespace korvel::ui {

// `frmAbout`: the version text, the legal notice and the web and mail links, opened through the
// shell service. A link whose address is not set says where to set it instead.
class AboutDialog : public QDialog {
    Q_OBJECT

public:
    struct Links {
        QString web;     // the program's web site
        QString support; // the support mail address
    };

    AboutDialog(const QString& versionText, const Links& links, Shell& shell, QWidget* parent = nullptr);
};

} // namespace korvel::ui
