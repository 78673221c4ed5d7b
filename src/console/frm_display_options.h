#pragma once

#include "console/console_context.h"

#include <QDialog>

class QCheckBox;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace cvd::console {

// "Display Setup": the message limit, what the send window hides, the group mark's side, where minimising
// goes, the lists' font and the comment labels. Apply stores them and the send window takes them up at once.
class frmDisplayOptions : public QDialog
{
    Q_OBJECT

public:
    frmDisplayOptions(ConsoleContext& context, QWidget* parent);

private:
    void fill_boxes();
    void on_apply();

    ConsoleContext& m_context;
    QLineEdit* fMaxLength;
    QCheckBox* fClear;
    QCheckBox* fWarning;
    QCheckBox* fRemovePresets;
    QCheckBox* fRemoveOptions;
    QCheckBox* fRemoveLogs;
    QCheckBox* fRemoveReports;
    QRadioButton* optAfter;
    QRadioButton* optBefore;
    QRadioButton* optTaskBar;
    QRadioButton* optSysTray;
    QCheckBox* fSmallFont;
    QLineEdit* fExtra1;
    QLineEdit* fExtra2;
    QPushButton* apply;
    QPushButton* btnClose;
};

} // namespace cvd::console
