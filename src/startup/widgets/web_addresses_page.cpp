#include "web_addresses_page.h"

#include "platform/dialogs.h"
#include "startup/settings_store.h"
#include "startup/web_addresses.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

namespace korvel {

namespace {

const char* boxName(WebAddress which) {
    switch (which) {
    case WebAddress::TrackSite:
        return "txtTrackSite";
    case WebAddress::TrackList:
        return "txtTrackList";
    case WebAddress::Home:
        return "txtWebAddress";
    case WebAddress::Support:
        break;
    }
    return "txtSupportAddress";
}

} // namespace

WebAddressesPage::WebAddressesPage(SettingsStore& store, QWidget* parent)
    : QGroupBox(QStringLiteral("Web Addresses"), parent), m_store(store) {
    setObjectName(QStringLiteral("fraWeb"));
    const ProgramSettings settings(m_store);
    auto* layout = new QGridLayout(this);
    auto* about =
        new QLabel(QStringLiteral("Where Korvel finds the add-on tracks and their list, and the addresses the About "
                                  "box shows. An empty box leaves the commands that need its address disabled."),
                   this);
    about->setWordWrap(true);
    layout->addWidget(about, 0, 0, 1, 2);
    int row = 1;
    for (size_t i = 0; i < kOrder.size(); ++i) {
        const WebAddress which = kOrder[i];
        const QString caption = addressCaption(which);
        auto* label = new QLabel(caption, this);
        auto* box = new QLineEdit(this);
        box->setObjectName(QString::fromLatin1(boxName(which)));
        box->setAccessibleName(caption.chopped(1));
        label->setBuddy(box);
        m_loaded[i] = settings.address(which);
        box->setText(m_loaded[i]);
        layout->addWidget(label, row, 0);
        layout->addWidget(box, row, 1);
        ++row;
        m_boxes[i] = box;
        const QString overridden = addressOverride(which);
        if (overridden.isEmpty())
            continue;
        const QString note = QStringLiteral("In force instead: %1 (the environment variable %2).")
                                 .arg(overridden, QString::fromLatin1(addressVariable(which)));
        auto* noteLabel = new QLabel(note, this);
        noteLabel->setObjectName(box->objectName() + QStringLiteral("Override"));
        noteLabel->setWordWrap(true);
        box->setAccessibleDescription(note);
        layout->addWidget(noteLabel, row++, 1);
    }
    layout->setColumnStretch(1, 1);
    layout->setRowStretch(row, 1);
}

QLineEdit* WebAddressesPage::refuseUnusable(Dialogs& dialogs) const {
    for (size_t i = 0; i < kOrder.size(); ++i) {
        if (const std::optional<QString> problem = addressProblem(kOrder[i], m_boxes[i]->text())) {
            dialogs.message(QStringLiteral("Input Required"), *problem, MessageIcon::Exclamation);
            return m_boxes[i];
        }
    }
    return nullptr;
}

void WebAddressesPage::save() {
    ProgramSettings settings(m_store);
    settings.createKey();
    for (size_t i = 0; i < kOrder.size(); ++i) {
        const QString address = m_boxes[i]->text().trimmed();
        if (address != m_loaded[i]) {
            settings.setAddress(kOrder[i], address);
            m_loaded[i] = address;
        }
    }
}

} // namespace korvel
