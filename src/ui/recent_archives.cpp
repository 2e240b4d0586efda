#include "recent_archives.h"

#include "platform/file_services.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "widgets/gold_button.h"
#include "widgets/twips.h"
#include "window_hooks.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>

namespace korvel::ui {

RecentArchives::RecentArchives(const FileServices& files, WindowHooks& hooks, QWidget* parent)
    : QWidget(parent), m_files(files), m_hooks(&hooks), m_combo(new QComboBox(this)),
      m_remove(new GoldButton(QStringLiteral("X"), this)) {
    setObjectName(QStringLiteral("recentArchives"));
    m_combo->setObjectName(QStringLiteral("cmbRecent"));
    m_combo->setEditable(true);
    m_combo->setInsertPolicy(QComboBox::NoInsert);
    m_combo->setToolTip(QStringLiteral("Recently opened PODs"));
    m_combo->lineEdit()->installEventFilter(this);
    m_remove->setObjectName(QStringLiteral("cmdX"));
    m_remove->setToolTip(QStringLiteral("Remove this entry from the list"));
    m_remove->setFixedWidth(twipsToPixels(330, this));

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(twipsToPixels(45, this));
    layout->addWidget(m_combo, 1);
    layout->addWidget(m_remove);

    connect(m_combo, &QComboBox::activated, this, &RecentArchives::chooseEntry);
    connect(m_remove, &GoldButton::clicked, this, &RecentArchives::removeSelected);
}

QStringList RecentArchives::entries() const {
    QStringList list;
    for (int i = 0; i < m_combo->count(); ++i)
        list << m_combo->itemText(i);
    return list;
}

void RecentArchives::setEntries(const QStringList& entries) {
    m_combo->clear();
    m_combo->addItems(entries);
}

void RecentArchives::remember(const std::string& folder, const std::string& file) {
    const QString full = fromGameText(folder + file);
    const int old = m_combo->findText(full, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (old >= 0)
        m_combo->removeItem(old);
    QString shown = fromGameText(folder);
    if (!shown.isEmpty())
        shown[0] = fromGameText(std::string(1, upperGameChar(folder[0])))[0];
    m_combo->insertItem(0, shown + fromGameText(file));
    m_combo->setCurrentIndex(0);
    while (m_combo->count() > kMaxEntries)
        m_combo->removeItem(kMaxEntries);
}

void RecentArchives::removeSelected() {
    const int current = m_combo->currentIndex();
    if (current < 0)
        return;
    m_combo->removeItem(current);
    m_combo->setCurrentIndex(m_combo->count() > 0 ? 0 : -1);
}

void RecentArchives::chooseEntry(int index) {
    if (index < 0)
        return;
    const std::string path = toGameText(m_combo->itemText(index));
    if (path != m_hooks->listedArchive())
        list(path);
}

void RecentArchives::openTyped() {
    const std::string path = toGameText(m_combo->currentText());
    if (path.empty() || !(m_files.FileExists(path) || m_files.folderExists(path)))
        return;
    if (upperGame(path) != upperGame(m_hooks->listedArchive()))
        list(path);
}

void RecentArchives::list(const std::string& path) {
    m_hooks->listArchive(FolderOf(path), FileNameOf(path));
}

bool RecentArchives::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_combo->lineEdit() && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            openTyped();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace korvel::ui
