#include "progress_window.h"

#include <QProgressDialog>

#include <algorithm>
#include <limits>

namespace korvel::ui {

namespace {

// The dialog counts in ints: larger totals are shown in thousandths.
constexpr qint64 kScaledSteps = 1000;
// Work that ends sooner never shows the window.
constexpr int kShowAfterMilliseconds = 400;

} // namespace

ProgressWindow::ProgressWindow(QWidget* parent, const QString& title, const QString& label)
    : m_dialog(std::make_unique<QProgressDialog>(label, QStringLiteral("Cancel"), 0, 1, parent)) {
    m_dialog->setObjectName(QStringLiteral("dlgProgress"));
    m_dialog->setWindowTitle(title);
    m_dialog->setAccessibleName(title);
    m_dialog->setWindowModality(Qt::ApplicationModal);
    m_dialog->setMinimumDuration(kShowAfterMilliseconds);
    m_dialog->setAutoClose(false);
    m_dialog->setAutoReset(false);
    m_dialog->setValue(0);
}

ProgressWindow::~ProgressWindow() {
    m_dialog->close();
}

std::function<bool(qint64, qint64)> ProgressWindow::callback() {
    return [dialog = m_dialog.get()](qint64 done, qint64 total) {
        const bool scaled = total > std::numeric_limits<int>::max();
        const qint64 maximum = scaled ? kScaledSteps : std::max<qint64>(total, 1);
        const qint64 value = scaled ? done * kScaledSteps / total : std::clamp<qint64>(done, 0, maximum);
        if (dialog->maximum() != maximum)
            dialog->setMaximum(static_cast<int>(maximum));
        // A modal progress dialog lets pending events through here, so the windows keep painting
        // and Cancel can be pressed.
        dialog->setValue(static_cast<int>(value));
        return !dialog->wasCanceled();
    };
}

bool ProgressWindow::cancelled() const {
    return m_dialog->wasCanceled();
}

} // namespace korvel::ui
