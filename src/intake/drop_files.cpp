#include "intake/drop_files.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/error_path.h"
#include "core/file_ops.h"
#include "core/text.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "queue/send_page.h"
#include "store/database.h"
#include "store/unique.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::intake {

namespace {

// The error path names the routine this way; existing installations and their support notes know it so.
const QString kProcedure = u"Procedure: check_for_messages"_s;

// A file must have been left alone this long before it is read.
constexpr qint64 kQuietMilliseconds = 1000;

// Line ends that are read at most: the recipient's, the sender's and those of the body lines.
constexpr int kLineEndsRead = 2 + kMaxBodyLines;

// Thrown when the error path has begun a new round: the folders are listed again from the start.
struct ListingRestart
{
};

// Runs one step through the common error path. When a failure has started a new round of it, the step is
// not run again; the whole listing is.
template <typename Step> auto run_step(AppState& state, Step&& step) -> decltype(step())
{
    const int round = state.error_round;
    return with_retry(state, kProcedure, [&] {
        if (state.error_round != round) {
            throw ListingRestart{};
        }
        return step();
    });
}

// Closes a descriptor on every way out.
class Descriptor
{
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_fd; }

private:
    int m_fd;
};

// Whether a writer still holds the file. Writers announce themselves with flock or with fcntl record locks,
// and on Linux the two kinds do not see each other, so both are asked:
// - flock: a trial LOCK_EX|LOCK_NB conflicts with every flock, shared or exclusive, held through another
//   open file description, one of this process included (a shared trial would pass a shared lock). When it
//   is granted it stays on fd until fd is closed, so a writer that locks cannot start rewriting the file
//   while we read it.
// - fcntl: F_OFD_GETLK asks whether a write lock over the whole file would conflict; it reports read and
//   write record locks of the traditional and the open-file-description kind, this process's included.
//   A kernel without it answers EINVAL, and F_GETLK (other processes' locks) is asked instead.
// A file system that supports neither answers "not held"; the quiet second still protects it.
bool held_by_writer(int fd)
{
    int rc = ::flock(fd, LOCK_EX | LOCK_NB);
    while (rc != 0 && errno == EINTR) {
        rc = ::flock(fd, LOCK_EX | LOCK_NB);
    }
    if (rc != 0 && errno == EWOULDBLOCK) {
        return true;
    }
    for (const int command : {F_OFD_GETLK, F_GETLK}) {
        struct flock probe = {};
        probe.l_type = F_WRLCK;
        probe.l_whence = SEEK_SET;
        probe.l_start = 0;
        probe.l_len = 0; // to the end of the file, however far it grows
        if (::fcntl(fd, command, &probe) == 0) {
            return probe.l_type != F_UNLCK;
        }
    }
    return false;
}

// Whether the file changed less than a quiet second before now: a writer that does not lock may still be
// at work. A time ahead of now counts as recent.
bool recently_changed(const struct stat& info, const QDateTime& now)
{
    const qint64 changed =
        static_cast<qint64>(info.st_mtim.tv_sec) * 1000 + static_cast<qint64>(info.st_mtim.tv_nsec) / 1000000;
    return now.toMSecsSinceEpoch() - changed < kQuietMilliseconds;
}

// The bytes up to the last line end that is read; whatever lies behind it is lost with the file.
QByteArray read_needed_lines(int fd)
{
    QByteArray bytes;
    int line_ends = 0;
    char buffer[65536];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw FileError(errno);
        }
        if (got == 0) {
            return bytes;
        }
        const char* const end = buffer + got;
        for (const char* at = buffer; at < end; ++at) {
            at = static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
            if (at == nullptr) {
                break;
            }
            if (++line_ends == kLineEndsRead) {
                bytes.append(buffer, at + 1 - buffer);
                return bytes;
            }
        }
        bytes.append(buffer, got);
    }
}

// The file's content, or nullopt when it is to be left where it is: still held by its writer, changed
// within the last second, gone meanwhile (taken by another console), or not ours to read (as a file that
// its writer holds open). Other failures go to the error path as FileError.
std::optional<QByteArray> read_drop_file(AppState& state, const QString& path)
{
    const Descriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (file.get() < 0) {
        if (errno == ENOENT || errno == EACCES || errno == EPERM) {
            return std::nullopt;
        }
        throw FileError(errno);
    }
    struct stat info = {};
    if (::fstat(file.get(), &info) != 0) {
        throw FileError(errno);
    }
    if (held_by_writer(file.get()) || recently_changed(info, state.clock.now())) {
        return std::nullopt;
    }
    return read_needed_lines(file.get());
}

// Reads lines of a text: each ends at an LF, and a CR just before the LF belongs to the line end.
class LineReader
{
public:
    explicit LineReader(const QString& text) : m_text(text) {}

    bool at_end() const { return m_position >= m_text.size(); }

    QString next()
    {
        const qsizetype end = m_text.indexOf(u'\n', m_position);
        QString line = m_text.mid(m_position, end < 0 ? -1 : end - m_position);
        m_position = end < 0 ? m_text.size() : end + 1;
        if (line.endsWith(u'\r')) {
            line.chop(1);
        }
        return line;
    }

private:
    const QString& m_text;
    qsizetype m_position = 0;
};

// The first `length` characters; a cut never leaves half of a surrogate pair behind.
QString cut(const QString& text, qsizetype length)
{
    if (text.size() <= length) {
        return text;
    }
    if (length > 0 && text.at(length - 1).isHighSurrogate()) {
        --length;
    }
    return text.left(length);
}

// The carrier of the recipient row of that name, or nullopt when there is none. Any row with the name will
// do, a group's as well as a person's.
std::optional<QString> recipient_carrier(AppState& state, const QString& recipient)
{
    store::Statement select =
        state.global_db.prepare(u"SELECT cv_name, cv_carrier FROM cv_recipients WHERE (cv_name = ?1)"_s);
    select.bind(1, recipient);
    if (!select.step()) {
        return std::nullopt;
    }
    return select.text(1).value_or(QString());
}

// A file that cannot become a message is renamed out of the way, replacing an older one of that name, so
// that it is not tried again and can be looked at. Why it failed is shown nowhere: this runs unattended.
void set_aside(const QString& path)
{
    if (!canmove(path, path + u".bad"_s)) {
        cankill(path);
    }
}

void take_file(AppState& state, const QString& path)
{
    const std::optional<QByteArray> content = run_step(state, [&] { return read_drop_file(state, path); });
    if (!content) {
        return; // left for a later tick
    }
    const std::optional<DropMessage> message = parse_drop_file(*content);
    yield_to_event_loop();
    if (!message) {
        set_aside(path); // "Incomplete data file"
        return;
    }
    const std::optional<QString> carrier =
        run_step(state, [&] { return recipient_carrier(state, message->recipient); });
    yield_to_event_loop();
    if (!carrier) {
        set_aside(path); // "User record not found or ascii service not enabled for user."
        return;
    }
    const qint32 transaction = run_step(state, [&] { return store::get_unique(state.global_db); });
    const qint32 retry_interval = run_step(state, [&] { return queue::retry_interval_seconds(state); });
    const queue::NewMessage row{message->recipient, message->message, *carrier, message->sender};
    run_step(state, [&] { return queue::insert_waiting_message(state, row, transaction, retry_interval); });
    yield_to_event_loop();
    cankill(path);
}

// Full paths of the drop files in a folder. The pattern matches without regard to case, so "X.ASC" from a
// writer on another system is taken too; hidden files (a writer's temporary ".x.asc") are not.
void add_drop_files(const QString& folder, QStringList& files)
{
    if (!isdir(folder)) {
        return;
    }
    const QString prefix = platform::with_trailing_slash(folder);
    const QStringList names = QDir(folder).entryList({u"*.asc"_s}, QDir::Files);
    for (const QString& name : names) {
        files.append(prefix + name);
    }
}

void take_listed_files(AppState& state)
{
    QStringList files;
    add_drop_files(state.program_folder, files);
    yield_to_event_loop();
    add_drop_files(state.global_db_folder, files);
    yield_to_event_loop();
    while (!files.isEmpty()) {
        take_file(state, files.constFirst());
        files.removeFirst();
    }
}

} // namespace

std::optional<DropMessage> parse_drop_file(const QByteArray& content)
{
    const QString text = platform::text_from_bytes(content);
    LineReader lines(text);
    if (lines.at_end()) {
        return std::nullopt;
    }
    QString recipient = cut(lines.next().toLower(), kMaxRecipientLength);
    if (lines.at_end()) {
        return std::nullopt;
    }
    QString sender = lines.next();
    // A third line must exist, although it may be empty.
    if (lines.at_end()) {
        return std::nullopt;
    }
    sender = cut(sender, kMaxSenderLength);
    QString body;
    for (int read = 0; read < kMaxBodyLines && !lines.at_end(); ++read) {
        body += lines.next();
        body += u"\r\n"_s;
    }
    if (body.isEmpty()) {
        body = u" "_s; // kept from the first reader, though the loop always leaves at least a CR LF
    }
    // Quotes in a name are turned into commas, as they always have been, so "o'neil" is looked up as "o,neil".
    recipient.replace(u'"', u',').replace(u'\'', u',');
    // Only blanks are trimmed: the CR LF of the last line stays in the message.
    body = trim_blanks(body);
    if (body.size() > kMaxMessageLength) {
        body = trim_blanks(cut(body, kMaxMessageLength));
    }
    return DropMessage{recipient, sender, body};
}

void check_for_files(AppState& state)
{
    state.clear_error_counters();
    for (;;) {
        try {
            take_listed_files(state);
            return;
        } catch (const ListingRestart&) {
            // The counters are kept: the error path goes on counting its rounds.
        }
    }
}

} // namespace cvd::intake
