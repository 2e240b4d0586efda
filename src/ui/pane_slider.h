#pragma once

#include "window_mode.h"

#include <QObject>
#include <QPointer>

#include <array>
#include <optional>

#include <QFrame>

namespace korvel::ui {

// Places the three panes, which occupy one place: the pane shown sits with its top at -90 twips,
// the hidden ones at -6090, disabled. Bringing a pane up may slide it down in 100-twip steps,
// letting the window process pending events after each step, so it repaints and further clicks
// arrive while the pane moves.
class PaneSlider : public QObject {
    Q_OBJECT

public:
    static constexpr int kShownTop = -90;
    static constexpr int kHiddenTop = -6090;
    static constexpr int kStep = 100;
    static constexpr int kPaneWidth = 6930;
    static constexpr int kPaneHeight = 6000;
    // No slide takes more steps than this, whatever the pane's top was.
    static constexpr int kMaxSteps = 1000;

    PaneSlider(QFrame* configure, QFrame* extract, QFrame* mount, QObject* parent = nullptr);

    QFrame* frame(Mode mode) const { return m_frames[index(mode)]; }
    // The pane's top in twips; the pixel geometry follows it.
    int top(Mode mode) const { return m_tops[index(mode)]; }
    void setTop(Mode mode, int twips);
    // The pixel size of the place the panes share: a pane is as wide as that place and reaches its
    // bottom when shown, but never smaller than its designed size.
    void setArea(QSize pixels);

    // Enables the pane and brings it to the front; slides it down when asked (from wherever it is,
    // stopping once its top reaches -90), then places it at -90 and hides the other two.
    void bringUp(Mode mode, bool slide);
    // The mode whose pane sits at -90, if any.
    std::optional<Mode> shownMode() const;
    // Steps of the latest slide, and the pause after each step (milliseconds; 0 only lets pending
    // events through).
    int lastSteps() const { return m_lastSteps; }
    void setStepPause(int milliseconds) { m_stepPause = milliseconds; }

private:
    static size_t index(Mode mode) { return static_cast<size_t>(mode); }
    void letEventsThrough();

    std::array<QPointer<QFrame>, 3> m_frames;
    std::array<int, 3> m_tops{kHiddenTop, kHiddenTop, kHiddenTop};
    int m_lastSteps = 0;
    int m_stepPause = 4;
    QSize m_area;
};

} // namespace korvel::ui
