#pragma once

#include "window_mode.h"

#include <QAbstractButton>

namespace korvel::ui {

// One mode panel of the status bar as the keyboard and assistive technology meet it: a button
// named after its mode, reached with Tab and pressed with Space or Enter, checked while its mode is
// the one on view. The status bar draws the panel and answers the pointer over it (its hot zones),
// so the button lets every mouse event through to the bar and draws only its focus frame.
class ModePanel : public QAbstractButton {
    Q_OBJECT

public:
    ModePanel(Mode mode, QWidget* parent);

    Mode mode() const { return m_mode; }
    // Marks the panel of the mode on view; the change is announced to assistive technology.
    void setCurrent(bool current);
    bool isCurrent() const { return isChecked(); }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    // Pressing the panel chooses its mode; only setCurrent() moves the check mark.
    void nextCheckState() override {}

private:
    Mode m_mode;
};

} // namespace korvel::ui
