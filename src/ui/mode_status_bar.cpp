#include "mode_status_bar.h"

#include "kit/twips.h"
#include "mode_panel.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

#include <cmath>

namespace korvel::ui {

namespace {

struct Zone {
    Mode mode;
    int left;  // exclusive
    int right; // exclusive
};

constexpr std::array<Zone, 3> kZones{{
    {Mode::Configurator, 4940, 5210},
    {Mode::Extractor, 5240, 5530},
    {Mode::Mounter, 5560, 5850},
}};

int panelOf(Mode mode) {
    switch (mode) {
    case Mode::Configurator:
        return 2;
    case Mode::Extractor:
        return 3;
    case Mode::Mounter:
        break;
    }
    return 4;
}

} // namespace

ModeStatusBar::ModeStatusBar(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("StatusBar"));
    setMouseTracking(true);
    setFixedHeight(twipsToPixels(kHeightTwips, this));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(QStringLiteral("Status bar"));
    for (Mode mode : {Mode::Configurator, Mode::Extractor, Mode::Mounter}) {
        auto* panel = new ModePanel(mode, this);
        connect(panel, &ModePanel::clicked, this, [this, mode] {
            if (mode != Mode::Configurator || m_configuratorAvailable)
                emit modeChosen(mode);
        });
        m_panels[index(mode)] = panel;
    }
    placePanels();
}

std::optional<Mode> ModeStatusBar::zoneAt(int xTwips) {
    for (const Zone& zone : kZones) {
        if (xTwips > zone.left && xTwips < zone.right)
            return zone.mode;
    }
    return std::nullopt;
}

std::optional<Mode> ModeStatusBar::zoneAt(int xTwips, int yTwips) {
    if (yTwips < 0 || yTwips > kZoneBottomTwips)
        return std::nullopt;
    return zoneAt(xTwips);
}

bool ModeStatusBar::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    auto* help = static_cast<QHelpEvent*>(event);
    if (const std::optional<Mode> mode = availableZoneAt(help->pos()))
        QToolTip::showText(help->globalPos(), modeToolTip(*mode), this);
    else
        QToolTip::hideText();
    return true;
}

void ModeStatusBar::setConfiguratorAvailable(bool available) {
    m_configuratorAvailable = available;
    placePanels();
    update();
}

void ModeStatusBar::setCurrentMode(Mode mode) {
    for (ModePanel* panel : m_panels)
        panel->setCurrent(panel->mode() == mode);
}

void ModeStatusBar::placePanels() {
    for (ModePanel* panel : m_panels) {
        const QRect place = panelRect(panelOf(panel->mode()));
        panel->setGeometry(place);
        panel->setVisible(!place.isEmpty());
    }
}

void ModeStatusBar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placePanels();
}

void ModeStatusBar::setPanelText(int panel, const QString& text) {
    if (panel < 1 || panel > 4)
        return;
    m_texts[static_cast<size_t>(panel - 1)] = text;
    if (panel == 1)
        setAccessibleDescription(text);
    update();
}

QString ModeStatusBar::panelText(int panel) const {
    return panel >= 1 && panel <= 4 ? m_texts[static_cast<size_t>(panel - 1)] : QString();
}

QRect ModeStatusBar::panelRect(int panel) const {
    const int infoWidth = kInfoWidthTwips + (m_configuratorAvailable ? 0 : kModePanelWidthTwips);
    const int h = height();
    if (panel == 1)
        return QRect(0, 0, twipsToPixels(infoWidth, this), h);
    if (panel == 2 && !m_configuratorAvailable)
        return QRect();
    if (panel < 2 || panel > 4)
        return QRect();
    const int left = kInfoWidthTwips + (panel - 2) * kModePanelWidthTwips;
    const int x = twipsToPixels(left, this);
    return QRect(x, 0, twipsToPixels(left + kModePanelWidthTwips, this) - x, h);
}

void ModeStatusBar::resetHighlight() {
    setOnly(std::nullopt, Bevel::Flat);
    setPanelText(1, QString());
}

QSize ModeStatusBar::sizeHint() const {
    return QSize(twipsToPixels(6930, this), twipsToPixels(kHeightTwips, this));
}

std::optional<Mode> ModeStatusBar::availableZoneAt(const QPoint& pixels) const {
    const auto mode = zoneAt(pixelsToTwips(pixels.x(), this), pixelsToTwips(pixels.y(), this));
    if (mode == Mode::Configurator && !m_configuratorAvailable)
        return std::nullopt;
    return mode;
}

void ModeStatusBar::setOnly(std::optional<Mode> mode, Bevel bevel) {
    for (Mode each : {Mode::Configurator, Mode::Extractor, Mode::Mounter})
        m_bevels[index(each)] = (mode == each) ? bevel : Bevel::Flat;
    update();
}

void ModeStatusBar::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() != Qt::NoButton)
        return;
    const int x = pixelsToTwips(event->position().toPoint().x(), this);
    auto mode = zoneAt(x);
    if (mode == Mode::Configurator && !m_configuratorAvailable)
        mode.reset();
    if (mode) {
        setOnly(mode, Bevel::Raised);
        setPanelText(1, modeName(*mode));
    } else {
        resetHighlight();
    }
}

void ModeStatusBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    if (const auto mode = availableZoneAt(event->position().toPoint()))
        setOnly(mode, Bevel::Inset);
}

void ModeStatusBar::mouseReleaseEvent(QMouseEvent* event) {
    std::optional<Mode> chosen;
    if (event->button() == Qt::LeftButton) {
        const auto mode = availableZoneAt(event->position().toPoint());
        if (mode && bevel(*mode) == Bevel::Inset)
            chosen = mode;
    }
    setOnly(std::nullopt, Bevel::Flat);
    if (chosen)
        emit modeChosen(*chosen);
}

void ModeStatusBar::leaveEvent(QEvent* event) {
    resetHighlight();
    QWidget::leaveEvent(event);
}

void ModeStatusBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    const QColor light = palette().light().color();
    const QColor dark = palette().dark().color();
    auto bevelRect = [&](const QRect& r, bool raised) {
        painter.setPen(raised ? light : dark);
        painter.drawLine(r.topLeft(), r.topRight());
        painter.drawLine(r.topLeft(), r.bottomLeft());
        painter.setPen(raised ? dark : light);
        painter.drawLine(r.bottomLeft(), r.bottomRight());
        painter.drawLine(r.topRight(), r.bottomRight());
    };

    const QRect info = panelRect(1).adjusted(1, 1, -2, -2);
    bevelRect(info, false);
    painter.setPen(palette().windowText().color());
    painter.drawText(info.adjusted(4, 0, -2, 0), Qt::AlignVCenter | Qt::AlignLeft, m_texts[0]);

    for (Mode mode : {Mode::Configurator, Mode::Extractor, Mode::Mounter}) {
        const QRect r = panelRect(panelOf(mode)).adjusted(1, 1, -2, -2);
        if (r.isEmpty())
            continue;
        if (bevel(mode) != Bevel::Flat)
            bevelRect(r, bevel(mode) == Bevel::Raised);
        QRect icon = r.adjusted(2, 2, -2, -2);
        if (bevel(mode) == Bevel::Inset)
            icon.translate(1, 1);
        drawModeIcon(painter, mode, icon);
    }
}

void ModeStatusBar::drawModeIcon(QPainter& painter, Mode mode, const QRect& rect) const {
    const int side = std::min(rect.width(), rect.height());
    const QRectF box(rect.center().x() - side / 2.0 + 0.5, rect.center().y() - side / 2.0 + 0.5, side - 1, side - 1);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0x5a, 0x40, 0x08), 1));
    switch (mode) {
    case Mode::Mounter: {
        // A stack of three archives.
        const double h = box.height() / 4.0;
        for (int i = 0; i < 3; ++i) {
            painter.setBrush(i == 0 ? QColor(0xf7, 0xdc, 0x7c) : QColor(0xd9, 0xb0, 0x48));
            painter.drawRoundedRect(QRectF(box.left(), box.top() + h * 0.5 + i * h * 1.05, box.width(), h * 0.9), 1.5,
                                    1.5);
        }
        break;
    }
    case Mode::Extractor: {
        // An open box with an arrow coming out of it.
        const QRectF body(box.left(), box.top() + box.height() * 0.5, box.width(), box.height() * 0.5);
        painter.setBrush(QColor(0xd9, 0xb0, 0x48));
        painter.drawRect(body);
        QPainterPath arrow;
        const double cx = box.center().x();
        arrow.moveTo(cx, box.top());
        arrow.lineTo(cx + box.width() * 0.3, box.top() + box.height() * 0.3);
        arrow.lineTo(cx + box.width() * 0.12, box.top() + box.height() * 0.3);
        arrow.lineTo(cx + box.width() * 0.12, body.top() + 2);
        arrow.lineTo(cx - box.width() * 0.12, body.top() + 2);
        arrow.lineTo(cx - box.width() * 0.12, box.top() + box.height() * 0.3);
        arrow.lineTo(cx - box.width() * 0.3, box.top() + box.height() * 0.3);
        arrow.closeSubpath();
        painter.setBrush(QColor(0x2e, 0x7d, 0x32));
        painter.drawPath(arrow);
        break;
    }
    case Mode::Configurator: {
        // A cog.
        painter.setBrush(QColor(0x90, 0x9a, 0xa8));
        const QPointF c = box.center();
        const double r = box.width() / 2.0;
        QPainterPath cog;
        for (int i = 0; i < 16; ++i) {
            const double angle = i * 3.14159265358979 / 8.0;
            const double radius = (i % 2 == 0) ? r : r * 0.72;
            const QPointF p(c.x() + radius * std::cos(angle), c.y() + radius * std::sin(angle));
            if (i == 0)
                cog.moveTo(p);
            else
                cog.lineTo(p);
        }
        cog.closeSubpath();
        cog.addEllipse(c, r * 0.3, r * 0.3);
        painter.drawPath(cog);
        break;
    }
    }
    painter.restore();
}

} // namespace korvel::ui
