#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// The program's name and version, the versions of the libraries it runs with, and where it keeps its files.
class about_form : public QDialog
{
    Q_OBJECT

public:
    about_form(ConsoleContext& context, QWidget* parent);

private:
    QLabel* lblProgram = nullptr;
    QLabel* lblLibraries = nullptr;
    QLabel* lblFolders = nullptr;
    QPushButton* btnOK = nullptr;
};

} // namespace cvd::console
