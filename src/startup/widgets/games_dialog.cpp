#include "games_dialog.h"

#include "platform/game_text.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>

namespace korvel {

namespace {

// The Shift argument of a mouse press: 1 Shift, 2 Ctrl, 4 Alt, added up.
int shiftState(Qt::KeyboardModifiers modifiers) {
    int state = 0;
    if (modifiers.testFlag(Qt::ShiftModifier))
        state |= 1;
    if (modifiers.testFlag(Qt::ControlModifier))
        state |= 2;
    if (modifiers.testFlag(Qt::AltModifier))
        state |= 4;
    return state;
}

// The pictures of the two picture buttons: a green plus and a red cross.
QIcon signIcon(bool plus) {
    QPixmap picture(24, 24);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(plus ? QColor(0x1e, 0x8c, 0x2a) : QColor(0xc0, 0x20, 0x18), 4, Qt::SolidLine, Qt::RoundCap));
    if (plus) {
        painter.drawLine(QPointF(12, 4), QPointF(12, 20));
        painter.drawLine(QPointF(4, 12), QPointF(20, 12));
    } else {
        painter.drawLine(QPointF(6, 6), QPointF(18, 18));
        painter.drawLine(QPointF(18, 6), QPointF(6, 18));
    }
    return QIcon(picture);
}

QToolButton* pictureButton(const char* name, bool plus, const QString& caption, const QString& tip, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setObjectName(QString::fromLatin1(name));
    button->setAccessibleName(caption);
    button->setIcon(signIcon(plus));
    button->setIconSize(QSize(24, 24));
    button->setToolTip(tip);
    button->setAutoRaise(false);
    return button;
}

} // namespace

GamesDialog::GamesDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmGames"));
    setWindowTitle(QStringLiteral("My Game Profiles"));
    setModal(true);

    m_gameList = new QListWidget(this);
    m_gameList->setObjectName(QStringLiteral("lstGames"));
    m_gameList->setAccessibleName(QStringLiteral("My Game Profiles"));
    m_gameList->setSelectionMode(QAbstractItemView::SingleSelection);
    m_gameList->installEventFilter(this);
    m_addButton = pictureButton("cmdAdd", true, QStringLiteral("Add Game"),
                                QStringLiteral("Add a game (hold Shift to type its path)"), this);
    m_addButton->installEventFilter(this);
    m_removeButton = pictureButton("cmdRemove", false, QStringLiteral("Remove Game"),
                                   QStringLiteral("Remove the selected game"), this);
    m_loadButton = new QPushButton(QStringLiteral("&Load Game"), this);
    m_loadButton->setObjectName(QStringLiteral("cmdLoad"));
    m_loadButton->setDefault(true);
    m_exitButton = new QPushButton(QStringLiteral("E&xit"), this);
    m_exitButton->setObjectName(QStringLiteral("cmdExit"));

    auto* layout = new QGridLayout(this);
    layout->addWidget(m_gameList, 0, 0, 3, 1);
    layout->addWidget(m_addButton, 0, 1);
    layout->addWidget(m_removeButton, 1, 1);
    layout->setRowStretch(2, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_loadButton);
    buttons->addWidget(m_exitButton);
    layout->addLayout(buttons, 3, 0, 1, 2);
    resize(360, 240);

    connect(m_addButton, &QAbstractButton::clicked, this, &GamesDialog::add);
    connect(m_removeButton, &QAbstractButton::clicked, this, &GamesDialog::remove);
    connect(m_loadButton, &QAbstractButton::clicked, this, &GamesDialog::load);
    connect(m_exitButton, &QAbstractButton::clicked, this, &GamesDialog::exitProgram);
    connect(m_gameList, &QListWidget::itemDoubleClicked, this, &GamesDialog::load);
    connect(m_gameList, &QListWidget::currentRowChanged, this, [this](int row) {
        if (m_logic && !m_filling)
            m_logic->select(row);
    });
    connect(m_gameList, &QListWidget::itemSelectionChanged, this, [this] {
        if (m_logic && !m_filling && m_gameList->selectedItems().isEmpty())
            m_logic->select(-1);
    });
}

void GamesDialog::choose(GameProfiles& logic) {
    m_logic = &logic;
    showList();
    exec();
    m_lastState = logic.state();
    m_logic = nullptr;
}

void GamesDialog::showList() {
    m_filling = true;
    m_gameList->clear();
    for (const std::string& name : m_logic->games())
        m_gameList->addItem(fromGameText(name));
    if (m_logic->selectedIndex() >= 0)
        m_gameList->setCurrentRow(m_logic->selectedIndex());
    m_loadButton->setEnabled(m_logic->loadEnabled());
    m_filling = false;
}

void GamesDialog::add() {
    if (!m_logic)
        return;
    m_logic->AddGame(false);
    showList();
}

void GamesDialog::remove() {
    if (!m_logic)
        return;
    m_logic->remove();
    showList();
}

void GamesDialog::load() {
    if (m_logic && m_logic->load())
        accept();
}

void GamesDialog::exitProgram() {
    if (!m_logic)
        return;
    m_logic->exit();
    reject();
}

bool GamesDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_addButton && event->type() == QEvent::MouseButtonPress && m_logic)
        m_logic->setAddShiftState(shiftState(static_cast<QMouseEvent*>(event)->modifiers()));
    if (watched == m_gameList && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Delete) {
        remove();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace korvel
