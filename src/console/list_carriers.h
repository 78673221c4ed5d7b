#pragma once

#include <QDialog>

class QListWidget;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// The carriers by name, for choosing one to edit or to delete. The list is read afresh each time the window
// is activated, so it shows what an edit or another console changed meanwhile.
class list_carriers : public QDialog
{
public:
    // `edit_mode` true: "Edit Carrier", the chosen row opens in frmAddCarrier; false: "Delete Carrier".
    list_carriers(ConsoleContext& context, bool edit_mode, QWidget* parent);

protected:
    bool event(QEvent* event) override;

private:
    void load();
    void on_edit();

    ConsoleContext& m_context;
    bool m_edit_mode;
    QListWidget* lstCarriers;
    QPushButton* btnEdit;
    QPushButton* btnClose;
};

} // namespace cvd::console
