#pragma once

#include "console/console_context.h"
#include "desk/spelling.h"

#include <QDialog>
#include <optional>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace cvd::console {

// "Spell Check": one misspelt word at a time in its line, the dictionary's suggestions and the operator's
// answer. It closes by itself, accepted, once the walk has no word left.
class frmSpellCheck : public QDialog
{
    Q_OBJECT

public:
    frmSpellCheck(ConsoleContext& context, QWidget* parent, desk::SpellWalk& walk);

private:
    void show_current();
    void on_replace();

    ConsoleContext& m_context;
    desk::SpellWalk& m_walk;
    QLabel* lblContext;
    QLineEdit* txtChangeTo;
    QListWidget* lstSuggestions;
    QPushButton* btnReplace;
    QPushButton* btnIgnore;
    QPushButton* btnIgnoreAll;
    QPushButton* btnAdd;
    QPushButton* btnCancel;
};

// The spell check of a message text with the installed dictionary: the corrected text, or nullopt when the
// operator cancelled or no dictionary is installed (its box has then been shown).
std::optional<QString> check_spelling(ConsoleContext& context, QWidget* parent, const QString& text);
// The same over a given dictionary.
std::optional<QString> check_spelling_with(ConsoleContext& context, QWidget* parent, desk::Dictionary& dictionary,
                                           const QString& text);

} // namespace cvd::console
