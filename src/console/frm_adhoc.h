#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// Asks for the PIN or ID an ad hoc recipient is to be paged at, for the one message being written.
class frmAdhoc : public QDialog
{
    Q_OBJECT

public:
    frmAdhoc(ConsoleContext& context, QWidget* parent);

    // Shows the dialog modally; the PIN entered (at most 40 characters), or empty text when cancelled.
    static QString ask(ConsoleContext& context, QWidget* parent);

    const QString& pin() const { return m_pin; }

private:
    void apply();

    QString m_pin;
    QLineEdit* fpin = nullptr;
    QPushButton* btnApply = nullptr;
    QPushButton* btnCancel = nullptr;
};

} // namespace cvd::console
