#include "anchors.h"

#include "twips.h"

#include <algorithm>

namespace korvel::ui {

Anchors::Anchors(QWidget& container, QSize designed) : m_container(container), m_designed(designed) {}

void Anchors::add(QWidget* control, unsigned edges) {
    m_anchors.push_back({control, control->geometry(), edges});
}

QSize Anchors::extra() const {
    const int width = twipsToPixels(m_designed.width(), &m_container);
    const int height = twipsToPixels(m_designed.height(), &m_container);
    return {std::max(0, m_container.width() - width), std::max(0, m_container.height() - height)};
}

void Anchors::place() {
    const QSize more = extra();
    for (const Anchor& anchor : m_anchors) {
        if (!anchor.control)
            continue;
        QRect rect = anchor.designed;
        if (anchor.edges & FollowRight)
            rect.translate(more.width(), 0);
        if (anchor.edges & FollowBottom)
            rect.translate(0, more.height());
        if (anchor.edges & GrowWidth)
            rect.setWidth(rect.width() + more.width());
        if (anchor.edges & GrowHeight)
            rect.setHeight(rect.height() + more.height());
        anchor.control->setGeometry(rect);
    }
}

} // namespace korvel::ui
