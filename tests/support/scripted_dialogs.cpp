#include "scripted_dialogs.h"

namespace korvel::testing {

MessageAnswer ScriptedDialogs::message(const QString& title, const QString& text, MessageIcon icon,
                                       MessageButtons buttons) {
    m_messages.push_back({title, text, icon, buttons});
    if (whileShown)
        whileShown(m_messages.back());
    if (buttons == MessageButtons::Ok && m_answers.empty())
        return MessageAnswer::Ok;
    return next(m_answers, buttons == MessageButtons::YesNo ? MessageAnswer::No : MessageAnswer::Cancel);
}

std::optional<QString> ScriptedDialogs::input(const QString& title, const QString& prompt, const QString& proposal) {
    m_asked.push_back({QStringLiteral("input"), title, prompt, proposal, {}, {}, false});
    return next(m_inputs);
}

std::vector<std::string> ScriptedDialogs::openFiles(const OpenFileRequest& request) {
    m_asked.push_back(
        {QStringLiteral("open"), request.title, {}, {}, request.startFolder, request.filters, request.multiSelect});
    return next(m_files);
}

std::optional<std::string> ScriptedDialogs::browseFolder(const QString& caption, const std::string& startFolder) {
    m_asked.push_back({QStringLiteral("folder"), caption, {}, {}, startFolder, {}, false});
    return next(m_folders);
}

QStringList ScriptedDialogs::messageTexts() const {
    QStringList texts;
    for (const Shown& shown : m_messages)
        texts << shown.text;
    return texts;
}

void ScriptedDialogs::clear() {
    m_answers.clear();
    m_inputs.clear();
    m_files.clear();
    m_folders.clear();
    m_messages.clear();
    m_asked.clear();
    m_unscripted = 0;
}

} // namespace korvel::testing
