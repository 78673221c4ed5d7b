#pragma once

#include "core/prompter.h"

#include <QPointer>
#include <QWidget>

namespace cvd::console {

// The console's boxes: QMessageBox with the program's titles, texts, icons and buttons, the password dialogs
// and the file dialogs. Boxes are owned by the window set as parent (the send window once it exists), so
// they are modal to it and centred over it.
class ConsolePrompter : public Prompter
{
public:
    BoxAnswer show_box(const Notice& notice) override;
    std::optional<QString> ask_password(PasswordKind kind, const QString& prompt) override;
    std::optional<QString> choose_open_file(const FileChoice& choice) override;
    std::optional<QString> choose_save_file(const FileChoice& choice) override;

    void set_parent_window(QWidget* parent) { m_parent = parent; }

private:
    QPointer<QWidget> m_parent;
};

} // namespace cvd::console
