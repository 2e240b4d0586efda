#pragma once

#include <QFrame>

namespace korvel {

// The bar between the Mounter's two lists (`sldMounter`). It only reports the pointer; the pane
// moves it and the lists. Grey while a drag is in progress, the button face otherwise.
class SplitterBar : public QFrame {
    Q_OBJECT
public:
    explicit SplitterBar(QWidget* parent = nullptr);

    static constexpr QRgb kDragColour = 0x808080;

    bool dragging() const { return m_dragging; }
    void setDragging(bool dragging);
    QColor colour() const;

signals:
    void pressed();
    // Pointer y relative to the bar, in pixels.
    void dragged(int pointerY);
    void released(bool rightButton);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    bool m_dragging = false;
};

} // namespace korvel
