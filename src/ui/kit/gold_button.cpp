#include "gold_button.h"

#include <QBitmap>
#include <QEnterEvent>
#include <QFontMetrics>
#include <QLinearGradient>
#include <QPainter>

#include <array>

namespace korvel::ui {

namespace {

struct Look {
    int bevel;   // 0 none, 1 thin, 2 thick
    bool sunken; // pressed-in rather than standing out
    bool lit;    // brighter face
    bool rim;    // highlight rim inside the edge
};

constexpr std::array<Look, 11> kLooks{{
    {0, false, false, false}, // 0 flat
    {0, false, false, true},  // 1 flat, rim
    {1, true, false, false},  // 2 thin sunken
    {1, false, false, true},  // 3 thin raised, rim
    {1, false, false, false}, // 4 thin raised
    {2, false, true, false},  // 5 thick raised, lit
    {2, false, false, false}, // 6 thick raised
    {0, false, true, false},  // 7 flat, lit
    {1, true, true, false},   // 8 thin sunken, lit
    {2, true, true, false},   // 9 thick sunken, lit
    {2, true, false, false},  // 10 thick sunken
}};

Look lookFor(int code) {
    return code >= 0 && code < static_cast<int>(kLooks.size()) ? kLooks[static_cast<size_t>(code)] : kLooks[0];
}

const QColor kGoldLight{0xf7, 0xdc, 0x7c};
const QColor kGoldMid{0xd9, 0xb0, 0x48};
const QColor kGoldDark{0x9c, 0x74, 0x1c};
const QColor kEdgeDark{0x5a, 0x40, 0x08};
const QColor kDisabledFace{0xcf, 0xc4, 0xa8};

} // namespace

GoldButton::GoldButton(const QString& caption, QWidget* parent) : QAbstractButton(parent) {
    setText(caption);
    setAttribute(Qt::WA_Hover);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
}

void GoldButton::setAlignment(Qt::Alignment alignment) {
    m_alignment = alignment;
    update();
}
void GoldButton::setForeColor(const QColor& color) {
    m_foreColor = color;
    update();
}
void GoldButton::setHoverColor(const QColor& color) {
    m_hoverColor = color;
    update();
}
void GoldButton::setDownColor(const QColor& color) {
    m_downColor = color;
    update();
}
void GoldButton::setSkinDisabledText(const QColor& color) {
    m_disabledText = color;
    update();
}
void GoldButton::setSkinHighlight(const QColor& color) {
    m_highlight = color;
    update();
}
void GoldButton::setPictureBackColor(const QColor& color) {
    m_pictureBack = color;
    update();
}
void GoldButton::setOnUp(int look) {
    m_onUp = look;
    update();
}
void GoldButton::setOnHover(int look) {
    m_onHover = look;
    update();
}
void GoldButton::setOnDown(int look) {
    m_onDown = look;
    update();
}
void GoldButton::setStyle(int style) {
    m_style = style;
    update();
}
void GoldButton::setMaskColor(const QColor& color) {
    m_maskColor = color;
    update();
}
void GoldButton::setUseMaskColor(bool use) {
    m_useMaskColor = use;
    update();
}
void GoldButton::setSkinPicture(const QPixmap& picture) {
    m_skinPicture = picture;
    update();
}
void GoldButton::setPicture(const QPixmap& picture) {
    m_picture = picture;
    updateGeometry();
    update();
}
void GoldButton::setPictureHover(const QPixmap& picture) {
    m_pictureHover = picture;
    update();
}
void GoldButton::setPictureDown(const QPixmap& picture) {
    m_pictureDown = picture;
    update();
}
void GoldButton::setPictureDisabled(const QPixmap& picture) {
    m_pictureDisabled = picture;
    update();
}

bool GoldButton::setFlatLook(std::optional<bool> flat) {
    if (!flat)
        return false;
    if (*flat) {
        m_onUp = 0;
        m_onHover = 4;
        m_onDown = 2;
    } else {
        m_onUp = 4;
        m_onHover = 5;
        m_onDown = 10;
    }
    update();
    return true;
}

GoldButton::State GoldButton::state() const {
    if (isDown())
        return State::Down;
    if (m_hovered && isEnabled())
        return State::Hover;
    return State::Up;
}

int GoldButton::currentLook() const {
    switch (state()) {
    case State::Down:
        return m_onDown;
    case State::Hover:
        return m_onHover;
    case State::Up:
        break;
    }
    return m_onUp;
}

QSize GoldButton::sizeHint() const {
    const QFontMetrics metrics(font());
    QSize size(metrics.horizontalAdvance(text()) + 24, metrics.height() + 12);
    if (!m_picture.isNull()) {
        size.rwidth() += m_picture.width() + 4;
        size.setHeight(std::max(size.height(), m_picture.height() + 8));
    }
    return size.expandedTo(QSize(40, 22));
}

QSize GoldButton::minimumSizeHint() const {
    return QSize(16, 16);
}

void GoldButton::enterEvent(QEnterEvent* event) {
    m_hovered = true;
    update();
    QAbstractButton::enterEvent(event);
}

void GoldButton::leaveEvent(QEvent* event) {
    m_hovered = false;
    update();
    QAbstractButton::leaveEvent(event);
}

QPixmap GoldButton::masked(const QPixmap& picture) const {
    if (picture.isNull() || !m_useMaskColor)
        return picture;
    QPixmap copy = picture;
    copy.setMask(picture.createMaskFromColor(m_maskColor, Qt::MaskInColor));
    return copy;
}

QPixmap GoldButton::pictureFor(State state) const {
    if (!isEnabled() && !m_pictureDisabled.isNull())
        return masked(m_pictureDisabled);
    if (state == State::Down && !m_pictureDown.isNull())
        return masked(m_pictureDown);
    if (state == State::Hover && !m_pictureHover.isNull())
        return masked(m_pictureHover);
    return masked(m_picture);
}

void GoldButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const State current = state();
    const Look look = lookFor(currentLook());
    const QRect outer = rect();

    // Face.
    if (m_style == kStyleSkinPicture && !m_skinPicture.isNull()) {
        painter.drawPixmap(outer, masked(m_skinPicture));
    } else if (!isEnabled()) {
        painter.fillRect(outer, kDisabledFace);
    } else {
        QLinearGradient face(outer.topLeft(), outer.bottomLeft());
        const QColor top = look.lit ? m_highlight : kGoldLight;
        const QColor bottom = look.sunken ? kGoldDark.darker(110) : kGoldDark;
        face.setColorAt(0.0, look.sunken ? bottom : top);
        face.setColorAt(0.5, look.lit ? kGoldLight : kGoldMid);
        face.setColorAt(1.0, look.sunken ? top : bottom);
        painter.fillRect(outer, face);
    }

    // Edge and bevel.
    painter.setPen(kEdgeDark);
    painter.drawRect(outer.adjusted(0, 0, -1, -1));
    const QColor light = look.sunken ? kEdgeDark : m_highlight;
    const QColor dark = look.sunken ? m_highlight : kEdgeDark;
    for (int i = 1; i <= look.bevel; ++i) {
        const QRect r = outer.adjusted(i, i, -1 - i, -1 - i);
        painter.setPen(light);
        painter.drawLine(r.topLeft(), r.topRight());
        painter.drawLine(r.topLeft(), r.bottomLeft());
        painter.setPen(dark);
        painter.drawLine(r.bottomLeft(), r.bottomRight());
        painter.drawLine(r.topRight(), r.bottomRight());
    }
    if (look.rim) {
        painter.setPen(m_highlight);
        painter.drawRect(outer.adjusted(2, 2, -3, -3));
    }

    // Content: picture, then caption; pressed contents shift by one pixel.
    QRect content = outer.adjusted(4, 2, -4, -2);
    if (look.sunken)
        content.translate(1, 1);
    const QPixmap pic = pictureFor(current);
    if (!pic.isNull()) {
        const QRect target(content.left(), content.top() + (content.height() - pic.height()) / 2, pic.width(),
                           pic.height());
        if (m_style == kStyleGold && m_pictureBack.isValid() && !m_useMaskColor)
            painter.fillRect(target, m_pictureBack);
        painter.drawPixmap(target.topLeft(), pic);
        content.setLeft(target.right() + 4);
    }
    QColor textColor = m_foreColor;
    if (!isEnabled())
        textColor = m_disabledText;
    else if (current == State::Down)
        textColor = m_downColor;
    else if (current == State::Hover)
        textColor = m_hoverColor;
    painter.setPen(textColor);
    painter.setFont(font());
    painter.drawText(content, static_cast<int>(m_alignment) | Qt::TextShowMnemonic, text());

    if (hasFocus()) {
        painter.setPen(QPen(kEdgeDark, 1, Qt::DotLine));
        painter.drawRect(outer.adjusted(3, 3, -4, -4));
    }
}

} // namespace korvel::ui
