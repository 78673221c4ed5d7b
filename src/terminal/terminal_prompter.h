#pragma once

#include "core/prompter.h"

#include <cstdio>

namespace cvd::terminal {

// The prompter of the program without windows: boxes become lines on stderr, questions and passwords are
// asked on the controlling terminal. Without a terminal a question is answered No and a password prompt is
// cancelled, so the program never waits for an answer nobody can give.
class TerminalPrompter : public Prompter
{
public:
    explicit TerminalPrompter(std::FILE* messages = stderr) : m_messages(messages) {}
    BoxAnswer show_box(const Notice& notice) override;
    std::optional<QString> ask_password(PasswordKind kind, const QString& prompt) override;
    std::optional<QString> choose_open_file(const FileChoice& choice) override;
    std::optional<QString> choose_save_file(const FileChoice& choice) override;

private:
    std::optional<QString> ask_path(const FileChoice& choice);

    std::FILE* m_messages;
};

} // namespace cvd::terminal
