#pragma once

#include <QObject>

#include <string>
#include <vector>

class QComboBox;
class QListWidget;
class QListWidgetItem;
class QWidget;

namespace korvel {

class Dialogs;
class FileServices;

// The Extractor's three browsing boxes: the drive box `driveBox`, the folder box `dirBox` (the
// current folder's ancestors, the folder itself and its sub-folders, as an indented tree) and the
// file box `fileBox` (the folder's "*.pod" files). The folder box follows the drive box and the file
// box follows the folder box. Paths are game paths; the folder box's path has no trailing "\"
// except at a drive's root.
class FileBrowser : public QObject {
    Q_OBJECT
public:
    FileBrowser(const FileServices& files, Dialogs& dialogs, QWidget* parent);

    QComboBox* driveBox() const { return m_driveBox; }
    QListWidget* dirBox() const { return m_dirBox; }
    QListWidget* fileBox() const { return m_fileBox; }

    // Where a drive that cannot be read sends the boxes back to.
    void setGameFolder(const std::string& folder) { m_gameFolder = folder; }

    // Shows the drive in the drive box without moving the folder box.
    void setDrive(char letter);
    // Points the folder box (and so the file box) at a folder.
    void setPath(const std::string& folder);
    std::string path() const { return m_path; }
    // The drive box's change: the folder box moves to the drive's root. A drive that cannot be read
    // puts all three boxes back at the game folder, without a message.
    void changeDrive(char letter);

    // The names the file box shows now, and listing them again from the disk.
    std::vector<std::string> fileNames() const;
    void refreshFiles();

    // The file box's double click on the entry `name`: checks the file is still there ("File not
    // found!" and a refreshed file box otherwise) and hands it on.
    void openFile(const std::string& name);

signals:
    void pathChanged(const QString& folder);
    // An archive chosen in the file box: folder with its trailing "\", and the file name.
    void archiveChosen(const std::string& folder, const std::string& fileName);

private:
    void fillDrives();
    void fillFolders();
    int driveIndex(char letter) const;

    const FileServices& m_fileServices;
    Dialogs& m_dialogs;
    QComboBox* m_driveBox;
    QListWidget* m_dirBox;
    QListWidget* m_fileBox;
    std::string m_path;
    std::string m_gameFolder;
};

} // namespace korvel
