#pragma once

#include <QDialog>
#include <QString>
#include <optional>

class QLabel;
class QPushButton;

namespace cvd::console {

class MaskedEntry;

// What the level and the database password dialogs share: a prompt over one masked box, Apply and Cancel.
// Enter applies, Escape and the window's close button cancel.
class PasswordPrompt : public QDialog
{
    Q_OBJECT

public:
    // Centred on the screen, shown modally: the entry after Apply, nullopt after Cancel.
    std::optional<QString> ask();

protected:
    PasswordPrompt(QWidget* parent, const QString& title, const QString& prompt, int limit);

    QLabel* lblPrompt;
    MaskedEntry* fpassword;
    QPushButton* btnApply;
    QPushButton* btnCancel;
};

} // namespace cvd::console
