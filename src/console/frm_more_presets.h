#pragma once

#include "addressbook/presets.h"

#include <QDialog>
#include <optional>

class QPushButton;
class QTreeWidget;

namespace cvd::console {

struct ConsoleContext;

// The list of all presets: one is used in the send window, or opened for editing.
class frmMorePresets : public QDialog
{
public:
    frmMorePresets(ConsoleContext& context, QWidget* parent);

private:
    // Fills the list in the order of m_rows, with the preset of that number selected.
    void show_rows(std::optional<int> selected);
    void sort_by(addressbook::PresetSortOrder order);
    void on_heading_clicked(int column);
    std::optional<int> selected_number() const;
    void use_selected();
    void edit_selected();

    ConsoleContext& m_context;
    QList<addressbook::PresetListRow> m_rows; // in the order shown
    std::optional<addressbook::PresetSortOrder> m_order;
    QTreeWidget* lstPresets;
    QPushButton* btnAccept;
    QPushButton* btnEdit;
    QPushButton* btnCancel;
};

} // namespace cvd::console
