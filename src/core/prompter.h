#pragma once

#include <QString>
#include <optional>

namespace cvd {

enum class BoxButtons { Ok, YesNo };
enum class BoxIcon { Information, Warning, Critical, Question };
enum class BoxAnswer { Ok, Yes, No };

enum class PasswordKind {
    Application, // the level password: start gate and guarded actions
    Database,    // the database password of the open routines
};

// Every box, question and password prompt that the program needs goes through this seam: the console shows
// dialogs, the headless program uses the terminal, tests script the answers.
class Prompter
{
public:
    virtual ~Prompter() = default;
    virtual BoxAnswer show_box(const QString& text, const QString& title, BoxButtons buttons, BoxIcon icon) = 0;
    // The entered text, or nullopt when the operator cancelled.
    virtual std::optional<QString> ask_password(PasswordKind kind, const QString& prompt) = 0;
};

} // namespace cvd
