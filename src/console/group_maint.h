#pragma once

#include <QDialog>

class QLabel;
class QListWidget;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// The members of the group named by ConsoleState::selected_name: two lists, and a left click (or Enter or the
// space bar) moves an entry to the other. Apply replaces the group's member rows in one go and closes.
class group_maint : public QDialog
{
public:
    group_maint(ConsoleContext& context, QWidget* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void build_controls();
    void move_entry(QListWidget& from, int row);
    void apply();

    ConsoleContext& m_context;
    QString m_group;
    bool m_label_after;
    QLabel* lblNonMembers;
    QListWidget* non_list;
    QLabel* lblMembers;
    QListWidget* member_list;
    QPushButton* Command3;
    QPushButton* btnClose;
};

} // namespace cvd::console
