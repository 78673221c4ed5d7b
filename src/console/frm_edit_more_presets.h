#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;
class PresetRecipientList;

// The edit window of one preset of the preset list. Accepted means the preset was stored and saved; the list
// reads the new values back from the presets in memory.
class frmEditMorePresets : public QDialog
{
public:
    frmEditMorePresets(ConsoleContext& context, int preset_number, QWidget* parent);

private:
    void on_accept();

    ConsoleContext& m_context;
    int m_number;
    QLineEdit* txtDescription;
    QLineEdit* txtMessage;
    PresetRecipientList* lstRecipient;
    QPushButton* btnAccept;
    QPushButton* btnCancel;
};

} // namespace cvd::console
