#include "palette_window.h"

#include "platform/game_text.h"
#include "platform/services.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFrame>
#include <QLabel>
#include <QMimeData>
#include <QUrl>

namespace korvel {

namespace {

constexpr int kColumns = 16;
constexpr int kBoxSize = 18; // pixels
constexpr int kGap = 2;
constexpr int kMargin = 8;

} // namespace

PaletteWindow::PaletteWindow(Services& services, QWidget* parent) : QWidget(parent, Qt::Window), m_services(services) {
    setObjectName(QStringLiteral("frmPalette"));
    setWindowTitle(QStringLiteral("Palette Viewer"));
    setAcceptDrops(true);

    for (int i = 0; i < kPaletteColors; ++i) {
        auto* box = new QFrame(this);
        box->setObjectName(QStringLiteral("picColor_%1").arg(i));
        box->setProperty("index", i);
        box->setFrameShape(QFrame::Box);
        box->setAutoFillBackground(true);
        box->setGeometry(kMargin + (i % kColumns) * (kBoxSize + kGap), kMargin + (i / kColumns) * (kBoxSize + kGap),
                         kBoxSize, kBoxSize);
        box->setToolTip(paletteTooltip(i, PaletteColor{}));
        m_boxes[static_cast<size_t>(i)] = box;
    }
    const int gridSize = kColumns * (kBoxSize + kGap) - kGap;
    const int lineTop = kMargin + gridSize + 6;
    m_line = new QFrame(this);
    m_line->setObjectName(QStringLiteral("frmLine"));
    m_line->setFrameShape(QFrame::HLine);
    m_line->setFrameShadow(QFrame::Sunken);
    m_line->setGeometry(kMargin, lineTop, gridSize, 4);

    m_instructions = new QLabel(
        QStringLiteral("Drag a 768-byte palette file onto this window to see its colours. Rest the pointer on a "
                       "colour to read its number and its red, green and blue values."),
        this);
    m_instructions->setObjectName(QStringLiteral("lblInstructions"));
    m_instructions->setWordWrap(true);
    m_instructions->setGeometry(kMargin, lineTop + 10, gridSize, 48);
    setFixedSize(gridSize + 2 * kMargin, lineTop + 10 + 48 + kMargin);

    for (QWidget* target : findChildren<QWidget*>()) {
        target->setAcceptDrops(true);
        target->installEventFilter(this);
    }
}

void PaletteWindow::ShowPalette(const QString& hostPath) {
    QFile file(hostPath);
    if (!file.open(QIODevice::ReadOnly)) {
        m_services.dialogs.message(QStringLiteral("Unexpected Error"),
                                   unexpectedErrorText(file.exists() ? 70 : 53, file.errorString()),
                                   MessageIcon::Critical);
        return;
    }
    if (file.size() != kPaletteFileSize) {
        const Failure wrongSize = readError(unrecognizedPaletteText());
        m_services.dialogs.message(wrongSize.title(), wrongSize.message, MessageIcon::Critical);
        return;
    }
    const Result<Palette> palette = decodePalette(file.readAll());
    if (!palette) {
        m_services.dialogs.message(palette.failure().title(), palette.failure().message, MessageIcon::Critical);
        return;
    }
    showColors(*palette);
    std::string gamePath = m_services.paths.toGame(hostPath).value_or(std::string());
    if (gamePath.empty())
        gamePath = toGameText(QDir::toNativeSeparators(hostPath).replace(QLatin1Char('/'), QLatin1Char('\\')));
    setWindowTitle(paletteWindowTitle(gamePath));
}

void PaletteWindow::showColors(const Palette& palette) {
    for (int i = 0; i < kPaletteColors; ++i) {
        const PaletteColor& color = palette.colors[static_cast<size_t>(i)];
        QFrame* box = m_boxes[static_cast<size_t>(i)];
        QPalette look = box->palette();
        look.setColor(QPalette::Window, QColor(color.red, color.green, color.blue));
        box->setPalette(look);
        box->setToolTip(paletteTooltip(i, color));
    }
}

bool PaletteWindow::acceptsDrag(QDropEvent* event) const {
    const QMimeData* data = event->mimeData();
    return data && data->hasUrls() && !data->urls().isEmpty() && data->urls().front().isLocalFile();
}

void PaletteWindow::takeDrop(QDropEvent* event) {
    if (!acceptsDrag(event))
        return;
    event->acceptProposedAction();
    ShowPalette(event->mimeData()->urls().front().toLocalFile());
}

bool PaletteWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched != this && watched->isWidgetType()) {
        switch (event->type()) {
        case QEvent::DragEnter:
        case QEvent::DragMove:
            if (acceptsDrag(static_cast<QDropEvent*>(event)))
                static_cast<QDropEvent*>(event)->acceptProposedAction();
            return true;
        case QEvent::Drop:
            takeDrop(static_cast<QDropEvent*>(event));
            return true;
        default:
            break;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void PaletteWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (acceptsDrag(event))
        event->acceptProposedAction();
}

void PaletteWindow::dragMoveEvent(QDragMoveEvent* event) {
    if (acceptsDrag(event))
        event->acceptProposedAction();
}

void PaletteWindow::dropEvent(QDropEvent* event) {
    takeDrop(event);
}

PaletteViewer::~PaletteViewer() {
    delete m_window.data();
}

void PaletteViewer::show() {
    if (!m_window)
        m_window = new PaletteWindow(m_services);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

} // namespace korvel
