#pragma once

#include "addressbook/rosters.h"

#include <QDialog>
#include <optional>

class QComboBox;
class QPushButton;
class QTimeEdit;

namespace cvd::console {

struct ConsoleContext;

// One duty span of the roster grid, added or edited. It touches no table: the roster window takes the row it
// leaves and keeps it in its grid until its own Apply.
class frmAddOncall : public QDialog
{
public:
    // `edited` is the grid row to edit, or nullopt to add a row for `group`.
    frmAddOncall(ConsoleContext& context, const QString& group, std::optional<addressbook::RosterGridRow> edited,
                 QWidget* parent);

    // The row that Apply left: a new row, the edited row, or nullopt when nothing is to change (Close, or an
    // add for a group without members).
    const std::optional<addressbook::RosterGridRow>& result() const { return m_result; }

private:
    void show_row(const addressbook::RosterGridRow& row);
    void on_apply();

    QString m_group;
    std::optional<addressbook::RosterGridRow> m_edited;
    std::optional<addressbook::RosterGridRow> m_result;
    QComboBox* fuser;
    QComboBox* fstart_day;
    QComboBox* fstop_day;
    QTimeEdit* fstart_time;
    QTimeEdit* fstop_time;
    QPushButton* btnApply;
    QPushButton* btnCancel;
};

} // namespace cvd::console
