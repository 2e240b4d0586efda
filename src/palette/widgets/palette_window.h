#pragma once

#include "palette/palette.h"

#include <QPointer>
#include <QWidget>

#include <array>
#include <string>

class QFrame;
class QLabel;

namespace korvel {

struct Services;

// `frmPalette`: the 256 colour boxes `picColor` of a palette file, 16 to a row. Files are dropped
// onto it (on the window, the line `frmLine`, the label `lblInstructions` or any box); the first
// dropped file is shown. A file that is not a palette leaves the boxes and the title as they were.
class PaletteWindow : public QWidget {
    Q_OBJECT
public:
    explicit PaletteWindow(Services& services, QWidget* parent = nullptr);

    // Loads and shows the palette file at a host path.
    void ShowPalette(const QString& hostPath);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    bool acceptsDrag(QDropEvent* event) const;
    void takeDrop(QDropEvent* event);
    void showColors(const Palette& palette);

    Services& m_services;
    std::array<QFrame*, kPaletteColors> m_boxes{};
    QFrame* m_line = nullptr;
    QLabel* m_instructions = nullptr;
};

// The palette viewer behind the main window's menu: one window, kept between openings and closed
// with this object.
class PaletteViewer : public QObject {
    Q_OBJECT
public:
    explicit PaletteViewer(Services& services, QObject* parent = nullptr) : QObject(parent), m_services(services) {}
    ~PaletteViewer() override;

    void show();
    PaletteWindow* window() const { return m_window; }

private:
    Services& m_services;
    QPointer<PaletteWindow> m_window;
};

} // namespace korvel
