#pragma once

#include "core/prompter.h"

#include <QList>
#include <QString>
#include <deque>
#include <optional>

namespace cvd::testing {

// Answers boxes, password prompts and file choosers from a script and records everything that was shown.
class ScriptedPrompter : public Prompter
{
public:
    BoxAnswer show_box(const Notice& notice) override;
    std::optional<QString> ask_password(PasswordKind kind, const QString& prompt) override;
    std::optional<QString> choose_open_file(const FileChoice& choice) override;
    std::optional<QString> choose_save_file(const FileChoice& choice) override;

    // Answers for questions in order; when the script runs out a question is answered No (or Cancel when
    // the box has no No button).
    void answer_next(BoxAnswer answer) { m_answers.push_back(answer); }
    // Entries for password prompts in order; nullopt cancels. When the script runs out, prompts are cancelled.
    void enter_next(std::optional<QString> password) { m_passwords.push_back(std::move(password)); }
    // Paths for file choosers, open and save alike, in order; nullopt cancels, as does an empty script.
    void choose_next(std::optional<QString> path) { m_files.push_back(std::move(path)); }

    QList<Notice> boxes;
    QStringList password_prompts;
    QList<FileChoice> file_choices;

    QStringList box_titles() const;

private:
    std::optional<QString> next_file(const FileChoice& choice);

    std::deque<BoxAnswer> m_answers;
    std::deque<std::optional<QString>> m_passwords;
    std::deque<std::optional<QString>> m_files;
};

} // namespace cvd::testing
