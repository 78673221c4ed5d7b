#pragma once

#include <QString>
#include <optional>

namespace cvd {

enum class BoxButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class BoxIcon { None, Information, Warning, Critical, Question };
enum class BoxAnswer { Ok, Cancel, Yes, No };

// One message box as the program shows it: subsystems return these, windows and the terminal show them.
struct Notice
{
    QString text;
    QString title;
    BoxIcon icon = BoxIcon::None;
    BoxButtons buttons = BoxButtons::Ok;

    bool operator==(const Notice&) const = default;
};

enum class PasswordKind {
    Application, // the level password: start gate and guarded actions
    Database,    // the database password of the open routines
};

// What a file chooser shows: its caption, a Qt name filter ("Text File (*.txt)") and the name it starts with.
struct FileChoice
{
    QString caption;
    QString filter;
    QString start_name;
};

// Every box, question, password prompt and file chooser that the program needs goes through this seam: the
// console shows dialogs, the headless program uses the terminal, tests script the answers.
class Prompter
{
public:
    virtual ~Prompter() = default;
    virtual BoxAnswer show_box(const Notice& notice) = 0;
    // The entered text, or nullopt when the operator cancelled.
    virtual std::optional<QString> ask_password(PasswordKind kind, const QString& prompt) = 0;
    // The chosen path, or nullopt when the operator cancelled.
    virtual std::optional<QString> choose_open_file(const FileChoice& choice) = 0;
    virtual std::optional<QString> choose_save_file(const FileChoice& choice) = 0;
};

} // namespace cvd
