#include "qt_dialogs.h"

#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>

namespace korvel {

MessageAnswer QtDialogs::message(const QString& title, const QString& text, MessageIcon icon, MessageButtons buttons) {
    QMessageBox box(m_parent);
    box.setWindowTitle(title);
    box.setText(text);
    switch (icon) {
    case MessageIcon::None:
        box.setIcon(QMessageBox::NoIcon);
        break;
    case MessageIcon::Critical:
        box.setIcon(QMessageBox::Critical);
        break;
    case MessageIcon::Question:
        box.setIcon(QMessageBox::Question);
        break;
    case MessageIcon::Exclamation:
        box.setIcon(QMessageBox::Warning);
        break;
    case MessageIcon::Information:
        box.setIcon(QMessageBox::Information);
        break;
    }
    switch (buttons) {
    case MessageButtons::Ok:
        box.setStandardButtons(QMessageBox::Ok);
        break;
    case MessageButtons::OkCancel:
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        break;
    case MessageButtons::YesNo:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        break;
    case MessageButtons::YesNoCancel:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        break;
    }
    switch (box.exec()) {
    case QMessageBox::Yes:
        return MessageAnswer::Yes;
    case QMessageBox::No:
        return MessageAnswer::No;
    case QMessageBox::Cancel:
        return MessageAnswer::Cancel;
    default:
        return buttons == MessageButtons::Ok      ? MessageAnswer::Ok
               : buttons == MessageButtons::YesNo ? MessageAnswer::No
                                                  : MessageAnswer::Cancel;
    }
}

std::optional<QString> QtDialogs::input(const QString& title, const QString& prompt, const QString& proposal) {
    bool ok = false;
    const QString text = QInputDialog::getText(m_parent, title, prompt, QLineEdit::Normal, proposal, &ok);
    if (!ok)
        return std::nullopt;
    return text;
}

std::vector<std::string> QtDialogs::openFiles(const OpenFileRequest& request) {
    QStringList filters;
    for (const FileFilter& filter : request.filters)
        filters << filter.description.section(QLatin1Char('('), 0, 0).trimmed() + QStringLiteral(" (") +
                       QString(filter.pattern).replace(QLatin1Char(';'), QLatin1Char(' ')) + QLatin1Char(')');
    const QString start = request.startFolder.empty() ? QString() : m_paths.toHost(request.startFolder);
    QStringList chosen;
    if (request.multiSelect) {
        chosen = QFileDialog::getOpenFileNames(m_parent, request.title, start, filters.join(QStringLiteral(";;")));
    } else {
        const QString one =
            QFileDialog::getOpenFileName(m_parent, request.title, start, filters.join(QStringLiteral(";;")));
        if (!one.isEmpty())
            chosen << one;
    }
    std::vector<std::string> out;
    for (const QString& host : chosen) {
        Result<std::string> game = m_paths.gamePathOf(host);
        if (!game) {
            message(game.failure().title(), game.failure().message, MessageIcon::Exclamation);
            return {};
        }
        out.push_back(std::move(*game));
    }
    return out;
}

std::optional<std::string> QtDialogs::browseFolder(const QString& caption, const std::string& startFolder) {
    const QString start = startFolder.empty() ? QString() : m_paths.toHost(startFolder);
    const QString chosen = QFileDialog::getExistingDirectory(m_parent, caption, start);
    if (chosen.isEmpty())
        return std::nullopt;
    Result<std::string> game = m_paths.gamePathOf(chosen);
    if (!game) {
        message(game.failure().title(), game.failure().message, MessageIcon::Exclamation);
        return std::nullopt;
    }
    return std::move(*game);
}

} // namespace korvel
