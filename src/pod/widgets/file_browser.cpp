#include "file_browser.h"

#include "platform/dialogs.h"
#include "platform/file_services.h"
#include "platform/game_path.h"
#include "platform/game_text.h"
#include "pod/extraction.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QListWidget>
#include <QSignalBlocker>
#include <QStyle>

namespace korvel {

namespace {

constexpr int kPathRole = Qt::UserRole + 1;

std::string driveRoot(char letter) {
    return std::string(1, upperGameChar(letter)) + ":\\";
}

// "C:\" stays as it is; "C:\Games\" loses its trailing separator.
std::string normalFolder(const std::string& folder) {
    if (folder.size() <= 3)
        return withTrailingBackslash(folder);
    return withoutTrailingBackslash(folder);
}

} // namespace

FileBrowser::FileBrowser(const FileServices& files, Dialogs& dialogs, QWidget* parent)
    : QObject(parent), m_fileServices(files), m_dialogs(dialogs), m_driveBox(new QComboBox(parent)),
      m_dirBox(new QListWidget(parent)), m_fileBox(new QListWidget(parent)) {
    m_driveBox->setObjectName(QStringLiteral("driveBox"));
    m_dirBox->setObjectName(QStringLiteral("dirBox"));
    m_fileBox->setObjectName(QStringLiteral("fileBox"));
    m_driveBox->setAccessibleName(QStringLiteral("Drive"));
    m_dirBox->setAccessibleName(QStringLiteral("Folders"));
    m_fileBox->setAccessibleName(QStringLiteral("POD files"));
    m_dirBox->setUniformItemSizes(true);
    m_fileBox->setUniformItemSizes(true);
    m_fileBox->setToolTip(QStringLiteral("Double-click a POD to list its contents"));
    fillDrives();

    connect(m_driveBox, &QComboBox::activated, this, [this](int index) {
        const QString text = m_driveBox->itemText(index);
        if (!text.isEmpty())
            changeDrive(text.at(0).toLatin1());
    });
    connect(m_dirBox, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { setPath(toGameText(item->data(kPathRole).toString())); });
    connect(m_fileBox, &QListWidget::itemDoubleClicked, this,
            [this](QListWidgetItem* item) { openFile(toGameText(item->text())); });
}

void FileBrowser::fillDrives() {
    QStringList letters;
    const PathMap& paths = m_fileServices.paths();
    if (paths.isIdentity()) {
        for (const QFileInfo& drive : QDir::drives()) {
            const QString root = drive.absolutePath();
            if (root.size() >= 2 && root.at(1) == QLatin1Char(':'))
                letters << root.left(1).toUpper();
        }
    } else {
        for (char letter = 'A'; letter <= 'Z'; ++letter) {
            if (!paths.driveRoot(letter).isEmpty())
                letters << QString(QLatin1Char(letter));
        }
    }
    for (const QString& letter : letters)
        m_driveBox->addItem(letter.toLower() + QLatin1Char(':'));
}

int FileBrowser::driveIndex(char letter) const {
    const QString wanted = QString(QLatin1Char(upperGameChar(letter))).toLower() + QLatin1Char(':');
    return m_driveBox->findText(wanted);
}

void FileBrowser::setDrive(char letter) {
    const QSignalBlocker blocker(m_driveBox);
    int index = driveIndex(letter);
    if (index < 0) {
        m_driveBox->addItem(QString(QLatin1Char(upperGameChar(letter))).toLower() + QLatin1Char(':'));
        index = m_driveBox->count() - 1;
    }
    m_driveBox->setCurrentIndex(index);
}

void FileBrowser::changeDrive(char letter) {
    const std::string root = driveRoot(letter);
    if (m_fileServices.folderExists(root)) {
        setDrive(letter);
        setPath(root);
        return;
    }
    // A drive without a medium, or one the drive map does not know.
    if (!m_gameFolder.empty())
        setDrive(m_gameFolder.front());
    setPath(m_gameFolder);
}

void FileBrowser::setPath(const std::string& folder) {
    if (folder.empty())
        return;
    m_path = normalFolder(folder);
    fillFolders();
    refreshFiles();
    emit pathChanged(fromGameText(m_path));
}

void FileBrowser::fillFolders() {
    m_dirBox->clear();
    const QIcon open = QApplication::style()->standardIcon(QStyle::SP_DirOpenIcon);
    const QIcon closed = QApplication::style()->standardIcon(QStyle::SP_DirClosedIcon);
    // The ancestors from the drive's root down to the folder itself, each a step further in.
    std::vector<std::string> chain;
    std::string walk = withTrailingBackslash(m_path);
    for (std::string piece = walk; !piece.empty(); piece = FolderOf(withoutTrailingBackslash(piece))) {
        chain.insert(chain.begin(), normalFolder(piece));
        if (piece.size() <= 3)
            break;
    }
    int depth = 0;
    for (const std::string& folder : chain) {
        const std::string shown = depth == 0 ? folder : FileNameOf(folder);
        auto* item = new QListWidgetItem(open, QString(depth * 2, QLatin1Char(' ')) + fromGameText(shown), m_dirBox);
        item->setData(kPathRole, fromGameText(folder));
        ++depth;
    }
    m_dirBox->setCurrentRow(m_dirBox->count() - 1);
    for (const std::string& name : m_fileServices.search(withTrailingBackslash(m_path) + "*", SearchFilter::Folders)) {
        if (name == "." || name == "..")
            continue;
        auto* item = new QListWidgetItem(closed, QString(depth * 2, QLatin1Char(' ')) + fromGameText(name), m_dirBox);
        item->setData(kPathRole, fromGameText(withTrailingBackslash(m_path) + name));
    }
}

void FileBrowser::refreshFiles() {
    m_fileBox->clear();
    if (m_path.empty())
        return;
    for (const std::string& name :
         m_fileServices.search(withTrailingBackslash(m_path) + "*.pod", SearchFilter::NormalFiles))
        m_fileBox->addItem(fromGameText(name));
}

std::vector<std::string> FileBrowser::fileNames() const {
    std::vector<std::string> names;
    names.reserve(static_cast<size_t>(m_fileBox->count()));
    for (int i = 0; i < m_fileBox->count(); ++i)
        names.push_back(toGameText(m_fileBox->item(i)->text()));
    return names;
}

void FileBrowser::openFile(const std::string& name) {
    const std::string folder = withTrailingBackslash(m_path);
    if (!m_fileServices.findsName(folder, name)) {
        m_dialogs.message(QStringLiteral("Read Error"), fileNotFoundText(), MessageIcon::Critical);
        refreshFiles();
        return;
    }
    emit archiveChosen(folder, name);
}

} // namespace korvel
