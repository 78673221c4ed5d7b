#pragma once

#include "addressbook/presets.h"

#include <QTreeWidget>

namespace cvd::console {

// The two-column recipient picker of the preset windows ("full name", "short name"), whose first entry
// "(none)" stands for a preset without a recipient.
class PresetRecipientList : public QTreeWidget
{
public:
    explicit PresetRecipientList(QWidget* parent);

    // Shows the choices and selects the one of that short name; nothing is selected when none has it.
    void fill(const QList<addressbook::PresetRecipientChoice>& choices, const QString& selected_name);
    // The short name of the selected entry; empty for "(none)" or no selection.
    QString selected_name() const;
};

} // namespace cvd::console
