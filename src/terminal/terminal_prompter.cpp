#include "terminal/terminal_prompter.h"

#include <QByteArray>
#include <fcntl.h>
#include <string>
#include <termios.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::terminal {

namespace {

// The controlling terminal, opened for one question; -1 when there is none.
class Terminal
{
public:
    Terminal() : m_fd(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {}
    ~Terminal()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool available() const { return m_fd >= 0; }

    void write_text(const QString& text) const
    {
        const QByteArray bytes = text.toUtf8();
        [[maybe_unused]] const ssize_t written = ::write(m_fd, bytes.constData(), static_cast<size_t>(bytes.size()));
    }

    // One line without its newline; nullopt at end of input.
    std::optional<QString> read_line(bool hidden) const
    {
        termios saved{};
        const bool can_hide = hidden && ::tcgetattr(m_fd, &saved) == 0;
        if (can_hide) {
            termios quiet = saved;
            quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            ::tcsetattr(m_fd, TCSAFLUSH, &quiet);
        }
        std::string line;
        char ch = 0;
        bool got_any = false;
        while (::read(m_fd, &ch, 1) == 1) {
            got_any = true;
            if (ch == '\n') {
                break;
            }
            line.push_back(ch);
        }
        if (can_hide) {
            ::tcsetattr(m_fd, TCSAFLUSH, &saved);
            write_text(u"\n"_s);
        }
        if (!got_any) {
            return std::nullopt;
        }
        return QString::fromStdString(line);
    }

private:
    int m_fd;
};

} // namespace

BoxAnswer TerminalPrompter::show_box(const Notice& notice)
{
    std::fprintf(m_messages, "%s: %s\n", qUtf8Printable(notice.title), qUtf8Printable(notice.text));
    std::fflush(m_messages);
    if (notice.buttons == BoxButtons::Ok) {
        return BoxAnswer::Ok;
    }
    const bool yes_no = notice.buttons == BoxButtons::YesNo || notice.buttons == BoxButtons::YesNoCancel;
    const BoxAnswer refusal = yes_no ? BoxAnswer::No : BoxAnswer::Cancel;
    const Terminal terminal;
    if (!terminal.available()) {
        return refusal;
    }
    terminal.write_text(yes_no ? u"[y/N] "_s : u"[o/C] "_s);
    const QString answer = terminal.read_line(false).value_or(QString()).trimmed();
    if (yes_no) {
        return answer.startsWith(u'y', Qt::CaseInsensitive) ? BoxAnswer::Yes : refusal;
    }
    return answer.startsWith(u'o', Qt::CaseInsensitive) ? BoxAnswer::Ok : refusal;
}

std::optional<QString> TerminalPrompter::ask_password(PasswordKind kind, const QString& prompt)
{
    const Terminal terminal;
    if (!terminal.available()) {
        std::fprintf(m_messages, "%s (no terminal to ask on)\n", qUtf8Printable(prompt));
        std::fflush(m_messages);
        return std::nullopt;
    }
    const QString label = kind == PasswordKind::Database ? u"Database Password"_s : u"Password Required"_s;
    terminal.write_text(label + u": "_s + prompt + u"\nPassword: "_s);
    return terminal.read_line(true);
}

std::optional<QString> TerminalPrompter::choose_open_file(const FileChoice& choice)
{
    return ask_path(choice);
}

std::optional<QString> TerminalPrompter::choose_save_file(const FileChoice& choice)
{
    return ask_path(choice);
}

// A path typed on the terminal; an empty line or no terminal cancels.
std::optional<QString> TerminalPrompter::ask_path(const FileChoice& choice)
{
    const Terminal terminal;
    if (!terminal.available()) {
        std::fprintf(m_messages, "%s (no terminal to ask on)\n", qUtf8Printable(choice.caption));
        std::fflush(m_messages);
        return std::nullopt;
    }
    terminal.write_text(choice.caption + u" ["_s + choice.start_name + u"]: "_s);
    const QString typed = terminal.read_line(false).value_or(QString()).trimmed();
    const QString path = typed.isEmpty() ? choice.start_name : typed;
    if (path.isEmpty()) {
        return std::nullopt;
    }
    return path;
}

} // namespace cvd::terminal
