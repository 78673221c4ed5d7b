#pragma once

#include "console/console_context.h"

#include <QDialog>

class QGroupBox;
class QPushButton;

namespace cvd::console {

class MaskedEntry;

// "Password Setup": the three level passwords, each typed twice. Apply stores them encoded and closes;
// a refusal keeps the window open with what was typed. Close leaves without saving.
class frmPasswordSetup : public QDialog
{
    Q_OBJECT

public:
    frmPasswordSetup(ConsoleContext& context, QWidget* parent);

private:
    QGroupBox* make_level(const char* name, const QString& heading, const QString& explanation, MaskedEntry* first,
                          MaskedEntry* second, const QString& password);
    void on_apply();

    ConsoleContext& m_context;
    MaskedEntry* fAdmin1;
    MaskedEntry* fAdmin2;
    MaskedEntry* fSuper1;
    MaskedEntry* fSuper2;
    MaskedEntry* fUser1;
    MaskedEntry* fUser2;
    QPushButton* add;
    QPushButton* btnClose;
};

// Opens the password setup modally over the send window.
void show_password_setup(ConsoleContext& context);

} // namespace cvd::console
