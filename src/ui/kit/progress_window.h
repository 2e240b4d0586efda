#pragma once

#include <QString>
#include <QtGlobal>

#include <functional>
#include <memory>

class QProgressDialog;
class QWidget;

namespace korvel::ui {

// The progress window of a long piece of work that runs on the user-interface thread: it appears
// only when the work takes longer than a moment, blocks input to the program's other windows while
// it is up, keeps them painting, and offers Cancel. callback() is what the cores take as their
// progress callback (done, total; false cancels).
class ProgressWindow {
public:
    ProgressWindow(QWidget* parent, const QString& title, const QString& label);
    ~ProgressWindow();
    ProgressWindow(const ProgressWindow&) = delete;
    ProgressWindow& operator=(const ProgressWindow&) = delete;

    std::function<bool(qint64 done, qint64 total)> callback();
    bool cancelled() const;
    QProgressDialog* dialog() const { return m_dialog.get(); }

private:
    std::unique_ptr<QProgressDialog> m_dialog;
};

} // namespace korvel::ui
