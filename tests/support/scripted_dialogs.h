#pragma once

#include "platform/dialogs.h"

#include <QStringList>

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace korvel::testing {

// A dialogs service that answers from queues and records everything it was asked.
//
// When a queue is empty the answer is the cautious one: Ok for an Ok-only box, otherwise Cancel
// (or No for Yes/No), and "cancelled" for inputs, files and folders; `unscripted` counts those.
class ScriptedDialogs : public Dialogs {
public:
    struct Shown {
        QString title;
        QString text;
        MessageIcon icon;
        MessageButtons buttons;
    };
    struct Asked {
        QString kind; // "input", "open", "folder"
        QString title;
        QString prompt;
        QString proposal;
        std::string start;
        std::vector<FileFilter> filters;
        bool multiSelect = false;
    };

    ScriptedDialogs& answer(MessageAnswer answer) { return m_answers.push_back(answer), *this; }
    ScriptedDialogs& typeInput(std::optional<QString> text) { return m_inputs.push_back(std::move(text)), *this; }
    ScriptedDialogs& chooseFiles(std::vector<std::string> paths) { return m_files.push_back(std::move(paths)), *this; }
    ScriptedDialogs& chooseFolder(std::optional<std::string> path) {
        return m_folders.push_back(std::move(path)), *this;
    }

    MessageAnswer message(const QString& title, const QString& text, MessageIcon icon,
                          MessageButtons buttons = MessageButtons::Ok) override;
    std::optional<QString> input(const QString& title, const QString& prompt, const QString& proposal) override;
    std::vector<std::string> openFiles(const OpenFileRequest& request) override;
    std::optional<std::string> browseFolder(const QString& caption, const std::string& startFolder) override;

    const std::vector<Shown>& messages() const { return m_messages; }
    const std::vector<Asked>& asked() const { return m_asked; }
    const Shown& lastMessage() const { return m_messages.back(); }
    QStringList messageTexts() const;
    int unscripted() const { return m_unscripted; }
    void clear();

    // Runs while a message is up, as if the user did something else meanwhile.
    std::function<void(const Shown&)> whileShown;

private:
    // The queue's next answer, or `cautious` (counted as unscripted) when it is empty.
    template <typename T> T next(std::deque<T>& queue, T cautious = {}) {
        if (queue.empty())
            return ++m_unscripted, cautious;
        T answer = std::move(queue.front());
        queue.pop_front();
        return answer;
    }

    std::deque<MessageAnswer> m_answers;
    std::deque<std::optional<QString>> m_inputs;
    std::deque<std::vector<std::string>> m_files;
    std::deque<std::optional<std::string>> m_folders;
    std::vector<Shown> m_messages;
    std::vector<Asked> m_asked;
    int m_unscripted = 0;
};

} // namespace korvel::testing
