#pragma once

#include <QPointer>
#include <QRect>
#include <QSize>
#include <QWidget>

#include <vector>

namespace korvel::ui {

// Lets a form placed in twips grow with its container: each control keeps its designed place at the
// designed size, and whatever the container has beyond that size either widens or heightens the
// control, or moves it right or down. A container smaller than designed keeps the designed places.
class Anchors {
public:
    enum Edge : unsigned {
        Fixed = 0,
        GrowWidth = 1,  // the right edge follows the container's right edge
        GrowHeight = 2, // the bottom edge follows the container's bottom edge
        FollowRight = 4,
        FollowBottom = 8,
    };

    // `designed` is the container's designed size in twips.
    Anchors(QWidget& container, QSize designed);

    // Remembers the control's present geometry as its designed place.
    void add(QWidget* control, unsigned edges);
    // Places every control for the container's present size.
    void place();
    // What the container has beyond its designed size, in pixels (never negative).
    QSize extra() const;

private:
    struct Anchor {
        QPointer<QWidget> control;
        QRect designed;
        unsigned edges;
    };

    QWidget& m_container;
    QSize m_designed;
    std::vector<Anchor> m_anchors;
};

} // namespace korvel::ui
