#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// Where the program keeps its files. The folders cannot be changed here: the browse buttons only let the
// operator look into them.
class frmFolders : public QDialog
{
    Q_OBJECT

public:
    frmFolders(ConsoleContext& context, QWidget* parent);

private:
    void add_folder_row(int row, const char* label_name, const QString& caption, QLineEdit* box, QPushButton* browse,
                        const QString& folder, const QString& browse_title);

    ConsoleContext& m_context;
    QLineEdit* txtProgramFolder = nullptr;
    QLineEdit* txtSettingsFolder = nullptr;
    QLineEdit* txtDatabaseFolder = nullptr;
    QPushButton* btnBrowseProgram = nullptr;
    QPushButton* btnBrowseUser = nullptr;
    QPushButton* btnBrowseGlobal = nullptr;
    QPushButton* btnVersions = nullptr;
    QPushButton* btnClose = nullptr;
};

} // namespace cvd::console
