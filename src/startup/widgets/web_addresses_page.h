#pragma once

#include "startup/typed_settings.h"

#include <QGroupBox>

#include <array>
#include <optional>

class QLabel;
class QLineEdit;

namespace korvel {

class Dialogs;
class SettingsStore;

// The Options dialog's "Web" page (`fraWeb`, "Web Addresses"): the add-on tracks' site, the
// track-list document, Korvel's web site and the support mail address, kept in the program key.
// A box whose address an environment variable overrides says so beneath it.
class WebAddressesPage : public QGroupBox {
    Q_OBJECT

public:
    explicit WebAddressesPage(SettingsStore& store, QWidget* parent = nullptr);

    // The first box that holds an address that cannot be used, after telling the user why
    // ("Input Required"); nullptr when every box is fine.
    QLineEdit* refuseUnusable(Dialogs& dialogs) const;
    // Writes the addresses that were changed; unchanged ones are not written again.
    void save();
    QLineEdit* firstBox() const { return m_boxes[0]; }

private:
    static constexpr std::array<WebAddress, 4> kOrder{WebAddress::TrackSite, WebAddress::TrackList, WebAddress::Home,
                                                      WebAddress::Support};

    SettingsStore& m_store;
    std::array<QLineEdit*, 4> m_boxes{};
    std::array<QString, 4> m_loaded;
};

} // namespace korvel
