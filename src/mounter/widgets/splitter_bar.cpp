#include "splitter_bar.h"

#include <QMouseEvent>

namespace korvel {

SplitterBar::SplitterBar(QWidget* parent) : QFrame(parent) {
    setObjectName(QStringLiteral("sldMounter"));
    setFrameStyle(QFrame::Panel | QFrame::Raised);
    setLineWidth(1);
    setAutoFillBackground(true);
    setCursor(Qt::SizeVerCursor);
    setDragging(false);
}

void SplitterBar::setDragging(bool dragging) {
    m_dragging = dragging;
    QPalette colours = palette();
    colours.setColor(QPalette::Window, dragging ? QColor(kDragColour) : colours.color(QPalette::Button));
    setPalette(colours);
    update();
}

QColor SplitterBar::colour() const {
    return palette().color(QPalette::Window);
}

void SplitterBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        emit pressed();
    event->accept();
}

void SplitterBar::mouseMoveEvent(QMouseEvent* event) {
    if (m_dragging)
        emit dragged(qRound(event->position().y()));
    event->accept();
}

void SplitterBar::mouseReleaseEvent(QMouseEvent* event) {
    emit released(event->button() == Qt::RightButton);
    event->accept();
}

} // namespace korvel
