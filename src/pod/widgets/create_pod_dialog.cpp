#include "create_pod_dialog.h"

#include "platform/dialogs.h"
#include "platform/game_path.h"
#include "platform/game_text.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvel {

namespace {

QLineEdit* makeBox(const char* name, const QString& accessibleName, QWidget* parent) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setAccessibleName(accessibleName);
    return box;
}

QLabel* makeCaption(const QString& text, QWidget* buddy, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setBuddy(buddy);
    return label;
}

} // namespace

CreatePodDialog::CreatePodDialog(Dialogs& dialogs, const std::string& startFolder, QWidget* parent)
    : QDialog(parent), m_dialogs(dialogs) {
    setObjectName(QStringLiteral("frmCreatePod"));
    setWindowTitle(QStringLiteral("Create POD"));
    setAccessibleName(windowTitle());
    setSizeGripEnabled(true);

    m_folder = makeBox("txtPackFolder", QStringLiteral("Folder to pack"), this);
    m_folder->setText(fromGameText(withoutTrailingBackslash(startFolder)));
    auto* browse = new QPushButton(QStringLiteral("&Browse..."), this);
    browse->setObjectName(QStringLiteral("cmdPackBrowse"));
    browse->setAccessibleName(QStringLiteral("Browse for the folder to pack"));
    browse->setAutoDefault(false);
    m_target = makeBox("txtPackTarget", QStringLiteral("POD to create"), this);
    m_target->setText(fromGameText(proposedTarget(startFolder)));
    m_format = new QComboBox(this);
    m_format->setObjectName(QStringLiteral("cmbPackFormat"));
    m_format->setAccessibleName(QStringLiteral("Format"));
    m_format->addItem(QStringLiteral("POD1"), static_cast<int>(PodFormat::Pod1));
    m_format->addItem(QStringLiteral("POD2"), static_cast<int>(PodFormat::Pod2));
    m_comment = makeBox("txtPackComment", QStringLiteral("Comment"), this);
    m_comment->setMaxLength(static_cast<int>(kCommentLimit));

    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(m_folder, 1);
    folderRow->addWidget(browse);
    auto* form = new QFormLayout;
    form->addRow(makeCaption(QStringLiteral("&Folder:"), m_folder, this), folderRow);
    form->addRow(makeCaption(QStringLiteral("&POD:"), m_target, this), m_target);
    form->addRow(makeCaption(QStringLiteral("F&ormat:"), m_format, this), m_format);
    form->addRow(makeCaption(QStringLiteral("Co&mment:"), m_comment, this), m_comment);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* create = buttons->addButton(QStringLiteral("&Create"), QDialogButtonBox::AcceptRole);
    create->setObjectName(QStringLiteral("cmdPackCreate"));
    create->setAccessibleName(QStringLiteral("Create"));
    create->setDefault(true);
    QPushButton* cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setObjectName(QStringLiteral("cmdPackCancel"));
    cancel->setAccessibleName(QStringLiteral("Cancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &CreatePodDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    auto* note = new QLabel(QStringLiteral("Every file beneath the folder goes into the POD, under its path relative "
                                           "to the folder."),
                            this);
    note->setWordWrap(true);
    layout->addWidget(note);
    layout->addLayout(form);
    layout->addStretch(1);
    layout->addWidget(buttons);
    resize(520, sizeHint().height());

    connect(browse, &QPushButton::clicked, this, &CreatePodDialog::browse);
    connect(m_folder, &QLineEdit::textChanged, this, &CreatePodDialog::folderEdited);
    connect(m_target, &QLineEdit::textEdited, this,
            [this](const QString& text) { m_targetTyped = !text.trimmed().isEmpty(); });
}

CreatePodDialog::~CreatePodDialog() = default;

std::string CreatePodDialog::proposedTarget(const std::string& folder) {
    const std::string trimmed = withoutTrailingBackslash(trimBlanks(folder));
    if (trimmed.empty())
        return {};
    // A drive's root has no name of its own to give the archive.
    if (trimmed.back() == ':')
        return trimmed + "\\NEW.POD";
    return trimmed + ".POD";
}

void CreatePodDialog::browse() {
    const std::optional<std::string> folder =
        m_dialogs.browseFolder(QStringLiteral("Folder to pack"), toGameText(m_folder->text().trimmed()));
    if (folder && !folder->empty())
        m_folder->setText(fromGameText(withoutTrailingBackslash(*folder)));
}

void CreatePodDialog::folderEdited(const QString& text) {
    if (!m_targetTyped)
        m_target->setText(fromGameText(proposedTarget(toGameText(text))));
}

CreatePodRequest CreatePodDialog::request() const {
    CreatePodRequest request;
    request.folder = withoutTrailingBackslash(toGameText(m_folder->text().trimmed()));
    request.target = toGameText(m_target->text().trimmed());
    request.options.format = static_cast<PodFormat>(m_format->currentData().toInt());
    request.options.comment = m_comment->text();
    return request;
}

void CreatePodDialog::accept() {
    QString problem;
    if (m_folder->text().trimmed().isEmpty())
        problem = QStringLiteral("Choose the folder whose files go into the POD.");
    else if (!isAbsoluteGamePath(toGameText(m_folder->text().trimmed())))
        problem = QStringLiteral("Give the folder's whole path, with its drive.");
    else if (m_target->text().trimmed().isEmpty())
        problem = QStringLiteral("Type the path of the POD to create.");
    else if (!isAbsoluteGamePath(toGameText(m_target->text().trimmed())))
        problem = QStringLiteral("Give the POD's whole path, with its drive.");
    else if (const Result<std::string> comment = podComment(m_comment->text()); !comment)
        problem = comment.failure().message;
    if (!problem.isEmpty()) {
        m_dialogs.message(QStringLiteral("Create POD"), problem, MessageIcon::Information);
        return;
    }
    QDialog::accept();
}

} // namespace korvel
