#include "about_dialog.h"

#include "app_info.h"
#include "kit/gold_button.h"
#include "kit/twips.h"
#include "platform/dialogs.h"
#include "platform/shell.h"
#include "startup/web_addresses.h"

#include <QLabel>
#include <QVBoxLayout>

namespace korvel::ui {

namespace {

// A link to `href` showing `shown`; without an address, the hint on how to set one.
QLabel* linkLabel(const QString& prefix, const QString& href, const QString& shown, WebAddress which, const char* name,
                  QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    if (shown.isEmpty()) {
        label->setTextFormat(Qt::PlainText);
        label->setText(prefix + missingAddressHint(which));
        label->setWordWrap(true);
        return label;
    }
    label->setText(prefix + QStringLiteral("<a href=\"") + href.toHtmlEscaped() + QStringLiteral("\">") +
                   shown.toHtmlEscaped() + QStringLiteral("</a>"));
    label->setTextFormat(Qt::RichText);
    label->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    label->setOpenExternalLinks(false);
    return label;
}

} // namespace

AboutDialog::AboutDialog(const QString& versionText, const Links& links, Shell& shell, QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("About ") + applicationTitle());

    auto* title = new QLabel(applicationTitle(), this);
    title->setObjectName(QStringLiteral("lblTitle"));
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 2.0);
    big.setBold(true);
    title->setFont(big);
    auto* version = new QLabel(QStringLiteral("Version ") + versionText, this);
    version->setObjectName(QStringLiteral("lblVersion"));
    auto* notice = new QLabel(legalNotice(), this);
    notice->setObjectName(QStringLiteral("lblLegal"));
    auto* blurb =
        new QLabel(QStringLiteral("Mounts, lists and extracts the POD archives of Monster Truck Madness 2 and "
                                  "4x4 Evolution, and edits Monster Truck Madness 2's own settings. "
                                  "Korvel is donationware: if it serves you well, please consider a "
                                  "donation through the web site."),
                   this);
    blurb->setWordWrap(true);
    blurb->setFixedWidth(twipsToPixels(5000, this));
    auto* web = linkLabel(QStringLiteral("Web: "), links.web, links.web, WebAddress::Home, "lblWeb", this);
    auto* email = linkLabel(QStringLiteral("Mail: "), QStringLiteral("mailto:") + links.support, links.support,
                            WebAddress::Support, "lblMail", this);
    for (QLabel* link : {web, email}) {
        link->setFixedWidth(twipsToPixels(5000, this));
        connect(link, &QLabel::linkActivated, this, [&shell](const QString& url) { shell.openUrl(url); });
    }

    auto* ok = new GoldButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setFixedWidth(twipsToPixels(1200, this));
    connect(ok, &GoldButton::clicked, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(version);
    layout->addWidget(notice);
    layout->addSpacing(twipsToPixels(120, this));
    layout->addWidget(blurb);
    layout->addSpacing(twipsToPixels(120, this));
    layout->addWidget(web);
    layout->addWidget(email);
    layout->addSpacing(twipsToPixels(120, this));
    layout->addWidget(ok, 0, Qt::AlignRight);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace korvel::ui
