#include "recent_archives_box.h"

#include "platform/file_services.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "pod/recent_archives.h"
#include "ui/kit/gold_button.h"
#include "ui/kit/twips.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>

namespace korvel {

RecentArchivesBox::RecentArchivesBox(const FileServices& files, std::function<std::string()> listedArchive,
                                     QWidget* parent)
    : QWidget(parent), m_files(files), m_listedArchive(std::move(listedArchive)), m_combo(new QComboBox(this)),
      m_removeButton(new ui::GoldButton(QStringLiteral("X"), this)) {
    setObjectName(QStringLiteral("recentArchives"));
    m_combo->setObjectName(QStringLiteral("cmbRecent"));
    m_combo->setAccessibleName(QStringLiteral("Recent PODs"));
    m_combo->setEditable(true);
    m_combo->setInsertPolicy(QComboBox::NoInsert);
    m_combo->setToolTip(QStringLiteral("Recently opened PODs"));
    m_combo->lineEdit()->installEventFilter(this);
    m_removeButton->setObjectName(QStringLiteral("cmdX"));
    m_removeButton->setAccessibleName(QStringLiteral("Remove from the recent PODs"));
    m_removeButton->setToolTip(QStringLiteral("Remove this entry from the list"));
    m_removeButton->setFixedWidth(ui::twipsToPixels(330, this));

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(ui::twipsToPixels(45, this));
    layout->addWidget(m_combo, 1);
    layout->addWidget(m_removeButton);

    connect(m_combo, &QComboBox::activated, this, &RecentArchivesBox::chooseEntry);
    connect(m_removeButton, &ui::GoldButton::clicked, this, &RecentArchivesBox::removeSelected);
}

QStringList RecentArchivesBox::entries() const {
    QStringList list;
    for (int i = 0; i < m_combo->count(); ++i)
        list << m_combo->itemText(i);
    return list;
}

void RecentArchivesBox::setEntries(const QStringList& entries) {
    m_combo->clear();
    m_combo->addItems(entries);
}

void RecentArchivesBox::remember(const std::string& folder, const std::string& file) {
    std::vector<std::string> recent;
    for (const QString& entry : entries())
        recent.push_back(toGameText(entry));
    QStringList updated;
    for (const std::string& entry : updateRecentArchives(std::move(recent), folder, file))
        updated << fromGameText(entry);
    setEntries(updated);
    m_combo->setCurrentIndex(0);
}

void RecentArchivesBox::removeSelected() {
    const int current = m_combo->currentIndex();
    if (current < 0)
        return;
    m_combo->removeItem(current);
    m_combo->setCurrentIndex(m_combo->count() > 0 ? 0 : -1);
}

void RecentArchivesBox::chooseEntry(int index) {
    if (index < 0)
        return;
    const std::string path = toGameText(m_combo->itemText(index));
    if (path != m_listedArchive())
        choose(path);
}

void RecentArchivesBox::openTyped() {
    const std::string path = toGameText(m_combo->currentText());
    if (path.empty() || !(m_files.FileExists(path) || m_files.folderExists(path)))
        return;
    if (upperGame(path) != upperGame(m_listedArchive()))
        choose(path);
}

void RecentArchivesBox::choose(const std::string& path) {
    emit archiveChosen(FolderOf(path), FileNameOf(path));
}

bool RecentArchivesBox::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_combo->lineEdit() && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            openTyped();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace korvel
