#pragma once

#include "pod/pod_pack.h"

#include <QDialog>

#include <string>

class QComboBox;
class QLineEdit;

namespace korvel {

class Dialogs;

// What Create POD... is asked to do: pack every file beneath `folder` into `target`.
struct CreatePodRequest {
    std::string folder; // game paths
    std::string target;
    PackOptions options;
};

// `frmCreatePod`: the folder to pack (typed, or chosen with Browse...), the archive to write (beside
// the folder, named after it, until the user types another), the format and the comment. Create is
// refused, with the reason, while the folder or the archive is empty or the comment cannot be
// stored; whether an existing archive may be replaced is asked afterwards, by the caller.
class CreatePodDialog : public QDialog {
    Q_OBJECT
public:
    CreatePodDialog(Dialogs& dialogs, const std::string& startFolder, QWidget* parent = nullptr);
    ~CreatePodDialog() override;

    CreatePodRequest request() const;

    // The archive proposed for a folder: the folder's own name with ".POD", beside it.
    static std::string proposedTarget(const std::string& folder);

    QLineEdit* folderBox() const { return m_folder; }
    QLineEdit* targetBox() const { return m_target; }
    QComboBox* formatBox() const { return m_format; }
    QLineEdit* commentBox() const { return m_comment; }

    void accept() override;

private:
    void browse();
    void folderEdited(const QString& text);

    Dialogs& m_dialogs;
    QLineEdit* m_folder = nullptr;
    QLineEdit* m_target = nullptr;
    QComboBox* m_format = nullptr;
    QLineEdit* m_comment = nullptr;
    bool m_targetTyped = false; // the user has typed the archive's path: the folder no longer names it
};

} // namespace korvel
