#include "mode_panel.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QPainter>

namespace korvel::ui {

namespace {

QString currentDescription() {
    return QStringLiteral("The mode on view");
}

// A push button that can be checked: assistive technology would otherwise take a checkable button
// for a check box.
class ModePanelAccessible : public QAccessibleWidget {
public:
    explicit ModePanelAccessible(ModePanel* panel) : QAccessibleWidget(panel, QAccessible::Button) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = panel()->isCurrent();
        return state;
    }
    QStringList actionNames() const override { return QStringList{pressAction()} + QAccessibleWidget::actionNames(); }
    void doAction(const QString& action) override {
        if (action == pressAction())
            panel()->click();
        else
            QAccessibleWidget::doAction(action);
    }

private:
    ModePanel* panel() const { return static_cast<ModePanel*>(widget()); }
};

QAccessibleInterface* modePanelAccessible(const QString& className, QObject* object) {
    if (className == QLatin1String(ModePanel::staticMetaObject.className()) && object->isWidgetType())
        return new ModePanelAccessible(static_cast<ModePanel*>(object));
    return nullptr;
}

} // namespace

ModePanel::ModePanel(Mode mode, QWidget* parent) : QAbstractButton(parent), m_mode(mode) {
    static const bool kFactoryInstalled = [] {
        QAccessible::installFactory(&modePanelAccessible);
        return true;
    }();
    Q_UNUSED(kFactoryInstalled);
    setObjectName(QStringLiteral("pnl") + modeName(mode));
    setText(modeName(mode));
    setAccessibleName(modeName(mode));
    setCheckable(true);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void ModePanel::setCurrent(bool current) {
    if (current == isChecked())
        return;
    setChecked(current);
    QAccessible::State checked;
    checked.checked = true;
    QAccessibleStateChangeEvent changed(this, checked);
    QAccessible::updateAccessibility(&changed);
    setAccessibleDescription(current ? currentDescription() : QString());
}

QSize ModePanel::sizeHint() const {
    return QSize(16, 16);
}

void ModePanel::paintEvent(QPaintEvent*) {
    if (!hasFocus())
        return;
    // Drawn whatever the style: some draw a focus frame only after a key moved the focus.
    QPainter painter(this);
    painter.setPen(QPen(palette().highlight().color(), 1, Qt::DotLine));
    painter.drawRect(rect().adjusted(1, 1, -2, -2));
}

void ModePanel::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

} // namespace korvel::ui
