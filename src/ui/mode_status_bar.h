#pragma once

#include "window_mode.h"

#include <QWidget>

#include <array>
#include <optional>

namespace korvel::ui {

class ModePanel;

// The main window's status bar "StatusBar": panel 1 carries free text, panels 2-4 choose the mode
// (Configurator, Extractor, Mounter). Each mode panel reacts only inside its fixed hot zone, in
// twips from the bar's left edge, bounds exclusive; the gaps between zones belong to no panel.
// For the keyboard and assistive technology each mode panel is also a button (ModePanel) that
// says which mode is on view.
class ModeStatusBar : public QWidget {
    Q_OBJECT

public:
    enum class Bevel { Flat, Raised, Inset };

    static constexpr int kHeightTwips = 300;
    static constexpr int kZoneBottomTwips = 285;
    static constexpr int kInfoWidthTwips = 4920;
    static constexpr int kModePanelWidthTwips = 310;

    explicit ModeStatusBar(QWidget* parent = nullptr);

    // The mode whose hot zone holds x (twips), regardless of availability.
    static std::optional<Mode> zoneAt(int xTwips);
    static std::optional<Mode> zoneAt(int xTwips, int yTwips);

    // Without the Configurator its panel is hidden and panel 1 takes its width.
    void setConfiguratorAvailable(bool available);

    // Panels are numbered 1 to 4 as on screen.
    void setPanelText(int panel, const QString& text);
    QString panelText(int panel) const;
    Bevel bevel(Mode mode) const { return m_bevels[index(mode)]; }
    // The panel's rectangle in pixels; empty for a hidden panel.
    QRect panelRect(int panel) const;
    // Every mode panel flat and panel 1 cleared: what leaving the bar or moving over a pane does.
    void resetHighlight();

    // The mode on view, as the mode panels announce it.
    void setCurrentMode(Mode mode);
    ModePanel* modePanel(Mode mode) const { return m_panels[index(mode)]; }

    QSize sizeHint() const override;

signals:
    // The left button went down and up again inside the same available mode panel.
    void modeChosen(korvel::ui::Mode mode);

protected:
    bool event(QEvent* event) override; // a mode panel's tooltip
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    static size_t index(Mode mode) { return static_cast<size_t>(mode); }
    std::optional<Mode> availableZoneAt(const QPoint& pixels) const;
    void setOnly(std::optional<Mode> mode, Bevel bevel);
    void drawModeIcon(class QPainter& painter, Mode mode, const QRect& rect) const;
    void placePanels();

    bool m_configuratorAvailable = true;
    std::array<QString, 4> m_texts;
    std::array<Bevel, 3> m_bevels{Bevel::Flat, Bevel::Flat, Bevel::Flat};
    std::array<ModePanel*, 3> m_panels{};
};

} // namespace korvel::ui
