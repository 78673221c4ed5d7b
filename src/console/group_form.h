#pragma once

#include "addressbook/groups.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// What add_group and edit_group share: the boxes of a group row, the on-call check box with the button to its
// roster, and Apply (`Command1`), which stays disabled until something changes.
class GroupForm : public QDialog
{
public:
    GroupForm(ConsoleContext& context, bool adding, QWidget* parent);

protected:
    addressbook::GroupEntry entry() const;
    void show_entry(const addressbook::GroupEntry& entry);
    // The name whose roster btnOnCall opens.
    virtual QString roster_name() const = 0;
    virtual void apply() = 0;

    ConsoleContext& m_context;
    QLabel* lblShortName;
    QLineEdit* fuser;
    QLabel* lblDescription;
    QLineEdit* ffull_name;
    QLabel* lblExtra1;
    QLineEdit* fExtra1;
    QLabel* lblExtra2;
    QLineEdit* fExtra2;
    QCheckBox* fon_call;
    QPushButton* btnOnCall;
    QPushButton* Command1;
    QPushButton* btnClose;

private:
    void build_layout();
    void connect_boxes();
    void open_roster();

    bool m_adding;
};

} // namespace cvd::console
