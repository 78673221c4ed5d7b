#pragma once

#include "core/prompter.h"

#include <QList>
#include <QString>
#include <deque>
#include <optional>

namespace cvd::testing {

// Answers boxes and password prompts from a script and records everything that was shown.
class ScriptedPrompter : public Prompter
{
public:
    struct Box
    {
        QString text;
        QString title;
        BoxButtons buttons;
    };

    BoxAnswer show_box(const QString& text, const QString& title, BoxButtons buttons, BoxIcon icon) override;
    std::optional<QString> ask_password(PasswordKind kind, const QString& prompt) override;

    // Answers for questions (Yes/No) in order; when the script runs out a question is answered No.
    void answer_next(BoxAnswer answer) { m_answers.push_back(answer); }
    // Entries for password prompts in order; nullopt cancels. When the script runs out, prompts are cancelled.
    void enter_next(std::optional<QString> password) { m_passwords.push_back(std::move(password)); }

    QList<Box> boxes;
    QStringList password_prompts;

    QStringList box_titles() const;

private:
    std::deque<BoxAnswer> m_answers;
    std::deque<std::optional<QString>> m_passwords;
};

} // namespace cvd::testing
