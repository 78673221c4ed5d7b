#include "support/scripted_prompter.h"

namespace cvd::testing {

namespace {

std::optional<QString> take_front(std::deque<std::optional<QString>>& script)
{
    if (script.empty() || !script.front().has_value()) {
        if (!script.empty()) {
            script.pop_front();
        }
        return std::nullopt;
    }
    const QString next = *script.front();
    script.pop_front();
    return next;
}

} // namespace

BoxAnswer ScriptedPrompter::show_box(const Notice& notice)
{
    boxes.append(notice);
    if (notice.buttons == BoxButtons::Ok) {
        return BoxAnswer::Ok;
    }
    if (m_answers.empty()) {
        return notice.buttons == BoxButtons::OkCancel ? BoxAnswer::Cancel : BoxAnswer::No;
    }
    const BoxAnswer answer = m_answers.front();
    m_answers.pop_front();
    return answer;
}

std::optional<QString> ScriptedPrompter::ask_password(PasswordKind, const QString& prompt)
{
    password_prompts.append(prompt);
    return take_front(m_passwords);
}

std::optional<QString> ScriptedPrompter::choose_open_file(const FileChoice& choice)
{
    return next_file(choice);
}

std::optional<QString> ScriptedPrompter::choose_save_file(const FileChoice& choice)
{
    return next_file(choice);
}

std::optional<QString> ScriptedPrompter::next_file(const FileChoice& choice)
{
    file_choices.append(choice);
    return take_front(m_files);
}

QStringList ScriptedPrompter::box_titles() const
{
    QStringList titles;
    for (const Notice& box : boxes) {
        titles.append(box.title);
    }
    return titles;
}

} // namespace cvd::testing
