#include "intake/drop_files.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/error_path.h"
#include "core/file_ops.h"
#include "core/text.h"
#include "platform/files.h"
#include "queue/enqueue.h"
#include "store/database.h"
#include "store/schema.h"

#include <QFile>
#include <QRandomGenerator>
#include <QStringList>
#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace cvd::intake {

namespace {

// The error path names the routine this way; existing installations and their support notes know it so.
const QString kProcedure = u"Procedure: check_for_messages"_s;

// A file must have been left alone this long before it is read.
constexpr qint64 kQuietMilliseconds = 1000;

// Files entered in one transaction: few commits for a burst, and no more files held open at once.
constexpr qsizetype kBatchSize = 200;

// Before a file is entered it is renamed to its name plus this mark and 16 random hex digits, so that the
// "*.asc" listing of any console passes over it and a record of an earlier file never names a later one.
constexpr char kWorkingMark[] = ".intake-";
constexpr qsizetype kWorkingTailLength = sizeof kWorkingMark - 1 + 16;

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

// A drop file as the listing found it. Paths are the file system's bytes: a name need not be valid UTF-8.
struct Listed
{
    QByteArray path;
    QByteArray original; // the path it was dropped under; differs from path for a working file
    bool working() const { return path != original; }
};

// A file on its way in: held open (and flocked) until its row is committed and it is removed.
struct Entering
{
    platform::RegularFile file;
    QByteArray working_path;
    queue::NewMessage row;
};

// Whether a name is a drop file's: "*.asc" without regard to case, so "X.ASC" from a writer on another
// system is taken too; hidden files (a writer's temporary ".x.asc") are not.
bool is_drop_name(const QByteArray& name)
{
    return !name.startsWith('.') && name.toLower().endsWith(".asc");
}

// The drop name a working name was made from, or nullopt for any other name.
std::optional<QByteArray> original_of_working(const QByteArray& name)
{
    if (name.size() <= kWorkingTailLength) {
        return std::nullopt;
    }
    const QByteArray tail = name.right(kWorkingTailLength);
    const QByteArray digits = tail.mid(sizeof kWorkingMark - 1);
    const bool hex = std::all_of(digits.cbegin(), digits.cend(),
                                 [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
    const QByteArray original = name.chopped(kWorkingTailLength);
    if (!tail.startsWith(kWorkingMark) || !hex || !is_drop_name(original)) {
        return std::nullopt;
    }
    return original;
}

QByteArray working_path_for(const QByteArray& path)
{
    const QByteArray digits = QByteArray::number(QRandomGenerator::global()->generate64(), 16);
    return path + kWorkingMark + digits.rightJustified(16, '0');
}

// The drop files and working files of a folder, in the order of their names without regard to case.
void add_drop_files(const QString& folder, QList<Listed>& files)
{
    QByteArray prefix = QFile::encodeName(folder);
    if (!prefix.endsWith('/')) {
        prefix += '/';
    }
    QList<std::pair<QByteArray, QByteArray>> found; // (original name, name)
    for (const QByteArray& name : platform::non_folder_entries(prefix)) {
        if (is_drop_name(name)) {
            found.append({name, name});
        } else if (const std::optional<QByteArray> original = original_of_working(name)) {
            found.append({*original, name});
        }
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) {
        const QByteArray a_key = a.first.toLower();
        const QByteArray b_key = b.first.toLower();
        return a_key != b_key ? a_key < b_key : a.second < b.second;
    });
    for (const auto& [original, name] : found) {
        files.append({prefix + name, prefix + original});
    }
}

// The text a path is recorded under: its bytes percent-encoded, so that any name fits into a text column.
QString record_key(const QByteArray& path)
{
    return QString::fromLatin1(path.toPercentEncoding("/"));
}

bool is_recorded(AppState& state, const QByteArray& path)
{
    store::Statement select =
        state.global_db.prepare(u"SELECT 1 FROM cv_intake_files WHERE cv_path = ?1 COLLATE BINARY"_s);
    select.bind(1, record_key(path));
    return select.step();
}

// Creates the record table in a file made before it existed, and forgets records whose file is gone (the
// program stopped between removing a file and its record).
void prepare_records(AppState& state)
{
    store::create_intake_files_table(state.global_db);
    QStringList gone;
    store::Statement select = state.global_db.prepare(u"SELECT cv_path FROM cv_intake_files"_s);
    while (select.step()) {
        const QString key = select.text(0).value_or(QString());
        if (!platform::path_exists(QByteArray::fromPercentEncoding(key.toLatin1()))) {
            gone.append(key);
        }
    }
    for (const QString& key : gone) {
        state.global_db.prepare(u"DELETE FROM cv_intake_files WHERE cv_path = ?1 COLLATE BINARY"_s).bind(1, key).exec();
    }
}

// Removes files whose rows are committed, and then their records. Run again after a failure, it removes
// what is left.
void remove_entered(AppState& state, const QList<QByteArray>& paths)
{
    for (const QByteArray& path : paths) {
        platform::remove_file(path);
    }
    yield_to_event_loop();
    run_step(state, [&] {
        store::Transaction transaction(state.global_db);
        store::Statement& remove =
            state.global_db.cached(u"DELETE FROM cv_intake_files WHERE cv_path = ?1 COLLATE BINARY"_s);
        for (const QByteArray& path : paths) {
            remove.reset();
            remove.bind(1, record_key(path)).exec();
        }
        transaction.commit();
    });
}

// Enters the rows of a batch with a record of each working file, all in one transaction; then removes the
// files. A failed attempt is rolled back whole, so the error path may run it again.
void enter_batch(AppState& state, std::vector<Entering>& batch)
{
    if (batch.empty()) {
        return;
    }
    const qint32 retry_interval = run_step(state, [&] { return queue::retry_interval_seconds(state); });
    run_step(state, [&] {
        store::Transaction transaction(state.global_db);
        store::Statement& record = state.global_db.cached(u"INSERT INTO cv_intake_files (cv_path) VALUES (?1)"_s);
        for (const Entering& entering : batch) {
            queue::insert_waiting_message(state.global_db, state.clock.now(), entering.row, retry_interval);
            record.reset();
            record.bind(1, record_key(entering.working_path)).exec();
        }
        transaction.commit();
    });
    yield_to_event_loop();
    QList<QByteArray> paths;
    for (const Entering& entering : batch) {
        paths.append(entering.working_path);
    }
    remove_entered(state, paths);
    batch.clear();
}

// A file that cannot become a message is renamed out of the way, replacing an older one of that name, so
// that it is not tried again and can be looked at. Why it failed is shown nowhere: this runs unattended.
void set_aside(const QByteArray& path, const QByteArray& original)
{
    if (!platform::rename_file(path, original + ".bad").ok) {
        platform::remove_file(path);
    }
}

// The file opened and read, or nullopt when it is to be left where it is: still held by its writer, changed
// within the last second, gone meanwhile (taken by another console), or not ours to read. A file that is not
// a regular one, or too large, is set aside. Other failures go to the error path as FileError.
std::optional<std::pair<platform::RegularFile, QByteArray>> open_drop_file(AppState& state, const Listed& listed)
{
    platform::RegularFile file(listed.path);
    if (file.outcome() == platform::ReadOutcome::NotRegular) {
        set_aside(listed.path, listed.original);
        return std::nullopt;
    }
    if (file.outcome() != platform::ReadOutcome::Ok) {
        const int error = file.error();
        if (file.outcome() == platform::ReadOutcome::Missing || error == EACCES || error == EPERM) {
            return std::nullopt;
        }
        throw FileError(error);
    }
    if (file.held_by_writer() || state.clock.now().toMSecsSinceEpoch() - file.changed_msecs() < kQuietMilliseconds) {
        return std::nullopt; // a time ahead of now counts as recent too
    }
    platform::CappedRead read = file.read_up_to(kMaxDropFileBytes);
    if (read.outcome == platform::ReadOutcome::TooLarge) {
        set_aside(listed.path, listed.original);
        return std::nullopt;
    }
    if (read.outcome != platform::ReadOutcome::Ok) {
        throw FileError(read.error);
    }
    return std::pair{std::move(file), std::move(read.bytes)};
}

// Takes one listed file into the batch, or sets it aside, or leaves it for a later tick.
void take_file(AppState& state, const Listed& listed, std::vector<Entering>& batch)
{
    if (listed.working() && run_step(state, [&] { return is_recorded(state, listed.path); })) {
        remove_entered(state, {listed.path}); // entered before the program was stopped
        return;
    }
    auto opened = run_step(state, [&] { return open_drop_file(state, listed); });
    if (!opened) {
        return;
    }
    // The working name first: from here on no other listing takes the file as a drop file.
    const QByteArray working = listed.working() ? listed.path : working_path_for(listed.path);
    if (!listed.working() && !platform::rename_file(listed.path, working).ok) {
        return; // taken by another console meanwhile, or a folder we may not change
    }
    const std::optional<DropMessage> message = parse_drop_file(opened->second);
    yield_to_event_loop();
    if (!message) {
        set_aside(working, listed.original); // "Incomplete data file"
        return;
    }
    const std::optional<QString> carrier =
        run_step(state, [&] { return queue::recipient_carrier(state.global_db, message->recipient); });
    yield_to_event_loop();
    if (!carrier) {
        set_aside(working, listed.original); // "User record not found or ascii service not enabled for user."
        return;
    }
    batch.push_back({std::move(opened->first), working,
                     queue::NewMessage{message->recipient, message->message, *carrier, message->sender}});
    if (static_cast<qsizetype>(batch.size()) >= kBatchSize) {
        enter_batch(state, batch);
    }
}

void take_listed_files(AppState& state)
{
    run_step(state, [&] { prepare_records(state); });
    QList<Listed> files;
    for (const QString& folder : {state.program_folder, state.global_db_folder}) {
        if (isdir(folder)) {
            add_drop_files(folder, files);
        }
        yield_to_event_loop();
    }
    std::vector<Entering> batch;
    for (const Listed& listed : files) {
        take_file(state, listed, batch);
    }
    enter_batch(state, batch);
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

} // namespace

std::optional<DropMessage> parse_drop_file(const QByteArray& content)
{
    // Editors on some systems start a UTF-8 file with a byte order mark; it is no part of the recipient.
    const QString text = platform::text_from_bytes(content.startsWith("\xEF\xBB\xBF") ? content.mid(3) : content);
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
