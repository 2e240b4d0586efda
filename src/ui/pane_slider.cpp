#include "pane_slider.h"

#include "kit/twips.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFrame>
#include <QTimer>

#include <algorithm>

namespace korvel::ui {

PaneSlider::PaneSlider(QFrame* configure, QFrame* extract, QFrame* mount, QObject* parent)
    : QObject(parent), m_frames{configure, extract, mount} {
    for (Mode mode : {Mode::Configurator, Mode::Extractor, Mode::Mounter})
        setTop(mode, kHiddenTop);
}

void PaneSlider::setTop(Mode mode, int twips) {
    m_tops[index(mode)] = twips;
    QFrame* pane = frame(mode);
    if (!pane)
        return;
    QRect rect = twipsRect(0, twips, kPaneWidth, kPaneHeight, pane);
    rect.setWidth(std::max(rect.width(), m_area.width()));
    // A hidden pane keeps its designed height, so that it stays above a taller window's view.
    if (twips > kHiddenTop)
        rect.setHeight(std::max(rect.height(), m_area.height() - twipsToPixels(kShownTop, pane)));
    pane->setGeometry(rect);
}

void PaneSlider::setArea(QSize pixels) {
    m_area = pixels;
    for (Mode mode : {Mode::Configurator, Mode::Extractor, Mode::Mounter})
        setTop(mode, top(mode));
}

std::optional<Mode> PaneSlider::shownMode() const {
    for (Mode mode : {Mode::Configurator, Mode::Extractor, Mode::Mounter}) {
        if (top(mode) == kShownTop)
            return mode;
    }
    return std::nullopt;
}

void PaneSlider::letEventsThrough() {
    if (m_stepPause <= 0) {
        QCoreApplication::processEvents();
        return;
    }
    QEventLoop loop;
    QTimer::singleShot(m_stepPause, &loop, &QEventLoop::quit);
    loop.exec();
}

void PaneSlider::bringUp(Mode mode, bool slide) {
    const QPointer<QFrame> pane = frame(mode);
    if (!pane)
        return;
    pane->setEnabled(true);
    pane->raise();
    m_lastSteps = 0;
    if (slide) {
        // Events handled between steps may move this pane too (another mode chosen meanwhile); the
        // top is read afresh at every step.
        while (m_lastSteps < kMaxSteps && top(mode) < kShownTop) {
            setTop(mode, top(mode) + kStep);
            ++m_lastSteps;
            letEventsThrough();
            if (!pane)
                return;
        }
    }
    // A mode chosen during the slide may have disabled this pane meanwhile; the last one placed wins.
    setTop(mode, kShownTop);
    pane->setEnabled(true);
    pane->raise();
    for (Mode other : {Mode::Configurator, Mode::Extractor, Mode::Mounter}) {
        if (other == mode)
            continue;
        setTop(other, kHiddenTop);
        if (QFrame* hidden = frame(other))
            hidden->setEnabled(false);
    }
}

} // namespace korvel::ui
