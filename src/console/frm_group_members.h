#pragma once

#include <QDialog>

class QListWidget;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// The members of a group by full name, for reading. The group is ConsoleState::selected_name; its label
// (ConsoleState::info_group_label, as frmInfo shows it) makes the caption.
class frmGroupMembers : public QDialog
{
public:
    frmGroupMembers(ConsoleContext& context, QWidget* parent);

private:
    QListWidget* lstMembers;
    // Named apart from its objectName "close": a member called close would hide QWidget::close.
    QPushButton* close_button;
};

} // namespace cvd::console
