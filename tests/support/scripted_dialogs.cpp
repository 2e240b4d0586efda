#include "scripted_dialogs.h"

namespace korvel::testing {

ScriptedDialogs& ScriptedDialogs::answer(MessageAnswer answer) {
    m_answers.push_back(answer);
    return *this;
}

ScriptedDialogs& ScriptedDialogs::typeInput(std::optional<QString> text) {
    m_inputs.push_back(std::move(text));
    return *this;
}

ScriptedDialogs& ScriptedDialogs::chooseFiles(std::vector<std::string> gamePaths) {
    m_files.push_back(std::move(gamePaths));
    return *this;
}

ScriptedDialogs& ScriptedDialogs::chooseFolder(std::optional<std::string> gamePath) {
    m_folders.push_back(std::move(gamePath));
    return *this;
}

MessageAnswer ScriptedDialogs::message(const QString& title, const QString& text, MessageIcon icon,
                                       MessageButtons buttons) {
    m_messages.push_back({title, text, icon, buttons});
    if (whileShown)
        whileShown(m_messages.back());
    if (buttons == MessageButtons::Ok && m_answers.empty())
        return MessageAnswer::Ok;
    if (m_answers.empty()) {
        ++m_unscripted;
        return buttons == MessageButtons::YesNo ? MessageAnswer::No : MessageAnswer::Cancel;
    }
    MessageAnswer next = m_answers.front();
    m_answers.pop_front();
    return next;
}

std::optional<QString> ScriptedDialogs::input(const QString& title, const QString& prompt, const QString& proposal) {
    m_asked.push_back({QStringLiteral("input"), title, prompt, proposal, {}, {}, false});
    if (m_inputs.empty()) {
        ++m_unscripted;
        return std::nullopt;
    }
    auto next = m_inputs.front();
    m_inputs.pop_front();
    return next;
}

std::vector<std::string> ScriptedDialogs::openFiles(const OpenFileRequest& request) {
    m_asked.push_back(
        {QStringLiteral("open"), request.title, {}, {}, request.startFolder, request.filters, request.multiSelect});
    if (m_files.empty()) {
        ++m_unscripted;
        return {};
    }
    auto next = m_files.front();
    m_files.pop_front();
    return next;
}

std::optional<std::string> ScriptedDialogs::browseFolder(const QString& caption, const std::string& startFolder) {
    m_asked.push_back({QStringLiteral("folder"), caption, {}, {}, startFolder, {}, false});
    if (m_folders.empty()) {
        ++m_unscripted;
        return std::nullopt;
    }
    auto next = m_folders.front();
    m_folders.pop_front();
    return next;
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
