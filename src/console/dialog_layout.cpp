#include "console/dialog_layout.h"

#include "console/controls.h"
#include "console/geometry.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QPushButton>

namespace cvd::console {

QHBoxLayout* button_row(std::initializer_list<QPushButton*> buttons)
{
    auto* row = new QHBoxLayout;
    row->addStretch();
    for (QPushButton* button : buttons) {
        row->addWidget(button);
    }
    return row;
}

void settle_over_parent(QDialog& dialog, QWidget* parent)
{
    publish_accessibility(dialog);
    dialog.adjustSize();
    if (parent != nullptr) {
        center_on_form(dialog, *parent);
    }
}

} // namespace cvd::console
