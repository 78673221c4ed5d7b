#pragma once

#include "console/console_context.h"

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace cvd::console {

// "Program Settings": any setting by category and name, read with Get and written with Set. Nothing is saved
// here; the change reaches the database with the next save.
class frmSetting : public QDialog
{
    Q_OBJECT

public:
    frmSetting(ConsoleContext& context, QWidget* parent);

private:
    ConsoleContext& m_context;
    QLineEdit* txtCategory;
    QLineEdit* txtName;
    QLineEdit* txtValue;
    QPushButton* btnGet;
    QPushButton* btnSet;
    QPushButton* btnClose;
};

} // namespace cvd::console
