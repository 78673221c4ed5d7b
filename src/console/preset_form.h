#pragma once

#include <QDialog>

class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;
class PresetRecipientList;

// The preset of one program button, opened by a click on the button with any but the left mouse button.
class preset_form : public QDialog
{
public:
    preset_form(ConsoleContext& context, int preset_number, QWidget* parent);

private:
    void cut_text();
    void on_apply();

    ConsoleContext& m_context;
    int m_number;
    QLineEdit* fbutton;
    QPlainTextEdit* preset_text;
    PresetRecipientList* lstRecipient;
    // Named apart from their objectNames "apply" and "close": a member called close would hide QWidget::close.
    QPushButton* apply_button;
    QPushButton* close_button;
};

} // namespace cvd::console
