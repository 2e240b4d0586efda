#include "mounter/widgets/check_pods_window.h"
#include "mounter/widgets/conflicts_window.h"
#include "palette/widgets/palette_window.h"
#include "pod/widgets/create_pod_dialog.h"
#include "startup/widgets/games_dialog.h"
#include "startup/widgets/options_dialog.h"
#include "ui/mode_status_bar.h"
#include "ui_rig.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessible>
#include <QAccessibleInterface>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTabBar>
#include <QTest>

#include <gtest/gtest.h>

namespace korvel::testing {
namespace {

// What a screen reader announces as the control's name. A control that has none of its own gets
// no help here from its contents (a combo box's current text, a list's first row) nor from the
// frame around it: those say what the control holds or where it is, not what it is for.
QString announcedName(QWidget* widget) {
    if (!widget->accessibleName().isEmpty())
        return widget->accessibleName();
    if (QWidget* parent = widget->parentWidget()) {
        for (QLabel* label : parent->findChildren<QLabel*>(Qt::FindDirectChildrenOnly)) {
            if (label->buddy() == widget && !label->text().isEmpty())
                return label->text();
        }
    }
    if (qobject_cast<QAbstractButton*>(widget) || qobject_cast<QTabBar*>(widget)) {
        QAccessibleInterface* face = QAccessible::queryAccessibleInterface(widget);
        return face ? face->text(QAccessible::Name) : QString();
    }
    return QString();
}

// Parts a composite control is made of (a combo box's text box and pop-up list, a list's header
// and scroll bars): they are announced through the control that owns them.
bool isInnerPart(QWidget* widget) {
    for (QWidget* owner = widget->parentWidget(); owner; owner = owner->parentWidget()) {
        if (qobject_cast<QComboBox*>(owner) || qobject_cast<QAbstractItemView*>(owner))
            return true;
    }
    return false;
}

bool needsName(QWidget* widget) {
    if (isInnerPart(widget) || qobject_cast<QLabel*>(widget))
        return false;
    const bool listLike = qobject_cast<QAbstractItemView*>(widget) || qobject_cast<QComboBox*>(widget);
    return listLike || (widget->focusPolicy() & Qt::TabFocus);
}

// A name says something only with a word in it: "...", "X" or "+" on a button does not.
bool saysSomething(const QString& name) {
    static const QRegularExpression word(QStringLiteral("[A-Za-z]{2,}"));
    return name.contains(word);
}

// "objectName (class)" of every control of `form` a screen reader could not name.
QStringList unnamedControls(QWidget* form) {
    QStringList unnamed;
    for (QWidget* widget : form->findChildren<QWidget*>()) {
        if (needsName(widget) && !saysSomething(announcedName(widget)))
            unnamed << QStringLiteral("%1 (%2)").arg(widget->objectName(), widget->metaObject()->className());
    }
    return unnamed;
}

TEST(Accessibility, everyControlOfTheWindowAndItsDialogsHasAName) {
    AppRig rig;
    GameLayout layout;
    layout.archives = {{"TRUCKS.POD", "POD"}};
    rig.addGame("MTM2", layout);
    ASSERT_TRUE(rig.start());
    Session session = rig.app->session();
    OptionsDialog options(rig.store, session, rig.drive.dialogs());
    GamesDialog games;
    PaletteWindow palette(rig.drive.services());
    CreatePodDialog create(rig.drive.dialogs(), "C:\\Games\\MTM2");
    rig.pane().showConflicts();
    rig.pane().checkMountedPods();
    const std::pair<const char*, QWidget*> forms[] = {{"frmMain", &rig.window()},
                                                      {"frmOptions", &options},
                                                      {"frmGames", &games},
                                                      {"frmPalette", &palette},
                                                      {"frmAbout", rig.window().showAbout()},
                                                      {"frmCreatePod", &create},
                                                      {"frmConflicts", rig.pane().conflictsWindow()},
                                                      {"frmCheckPods", rig.pane().checkPodsWindow()}};
    for (const auto& [name, form] : forms) {
        SCOPED_TRACE(name);
        ASSERT_NE(form, nullptr);
        EXPECT_EQ(unnamedControls(form).join(", ").toStdString(), "");
    }
    // The controls the names come from are the captions the user sees beside them.
    const std::pair<const char*, const char*> named[] = {
        {"lstMounted", "Mounted PODs"}, {"lstUnmounted", "Unmounted PODs"}, {"cmbRecent", "Recent PODs"}};
    for (const auto& [control, caption] : named) {
        SCOPED_TRACE(control);
        ASSERT_NE(rig.find(control), nullptr);
        EXPECT_EQ(announcedName(rig.find(control)).toStdString(), caption);
    }
}

} // namespace
} // namespace korvel::testing
