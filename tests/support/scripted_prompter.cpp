#include "support/scripted_prompter.h"

namespace cvd::testing {

BoxAnswer ScriptedPrompter::show_box(const QString& text, const QString& title, BoxButtons buttons, BoxIcon)
{
    boxes.append({text, title, buttons});
    if (buttons == BoxButtons::Ok) {
        return BoxAnswer::Ok;
    }
    if (m_answers.empty()) {
        return BoxAnswer::No;
    }
    const BoxAnswer answer = m_answers.front();
    m_answers.pop_front();
    return answer;
}

std::optional<QString> ScriptedPrompter::ask_password(PasswordKind, const QString& prompt)
{
    password_prompts.append(prompt);
    if (m_passwords.empty()) {
        return std::nullopt;
    }
    if (!m_passwords.front().has_value()) {
        m_passwords.pop_front();
        return std::nullopt;
    }
    const QString entry = *m_passwords.front();
    m_passwords.pop_front();
    return entry;
}

QStringList ScriptedPrompter::box_titles() const
{
    QStringList titles;
    for (const Box& box : boxes) {
        titles.append(box.title);
    }
    return titles;
}

} // namespace cvd::testing
