#include "core/app_state.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "intake/drop_files.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/database_test.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSet>
#include <QTimer>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::intake {
namespace {

struct Row
{
    QString recipient;
    QString pin;
    QString message;
    QString carrier;
    QString sender;
    QDateTime requested;
    QDateTime repeat_stop;
    QDateTime last_try;
    qint64 transaction = 0;
    bool waiting = false; // scheduled, sent and error all false, no repeat, no retries, no priority
};

QByteArray read_bytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

qint64 count_rows(const QString& db_path, const QString& table)
{
    store::Database db = store::Database::open(db_path);
    store::Statement count = db.prepare(u"SELECT count(*) FROM "_s + table);
    return count.step() ? count.integer(0).value_or(-1) : -1;
}

// Runs `watch` whenever the intake yields to the event loop: the moments between its steps.
class YieldWatcher
{
public:
    explicit YieldWatcher(std::function<void()> watch)
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, std::move(watch));
        m_timer.start(0);
    }

private:
    static inline int s_argc = 1;
    static inline char s_name[] = "test_intake";
    static inline char* s_argv[] = {s_name, nullptr};
    QCoreApplication m_app{s_argc, s_argv};
    QTimer m_timer;
};

class DropFilesTest : public testing::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier, cv_group) VALUES ('Bob', 'tapnet', 0), "
                  "('O,Brien', 'pagenet', 0), ('o''neil', 'quotenet', 0), ('jörg', 'umlautnet', 0), "
                  "('Abcdefghijklmnopqrstuvwxyzabcdefghijklmn', 'longnet', 0), ('Night Shift', 'groupnet', -1)"_s);
    }

    // Writes a drop file whose last change lies `age_ms` before the pinned now (an hour unless told).
    QString write_drop(const QString& folder, const QString& name, const QByteArray& content,
                       qint64 age_ms = 3600 * 1000)
    {
        write_drop_bytes(QFile::encodeName(folder + name), content, age_ms);
        return folder + name;
    }

    void write_drop_bytes(const QByteArray& path, const QByteArray& content, qint64 age_ms = 3600 * 1000)
    {
        const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        ASSERT_GE(fd, 0);
        EXPECT_EQ(::write(fd, content.constData(), static_cast<size_t>(content.size())), content.size());
        ::close(fd);
        const qint64 changed = env.clock.now().toMSecsSinceEpoch() - age_ms;
        const timespec time = {changed / 1000, (changed % 1000) * 1000000};
        const timespec times[2] = {time, time};
        EXPECT_EQ(::utimensat(AT_FDCWD, path.constData(), times, 0), 0);
    }

    QList<Row> rows()
    {
        store::Statement select = db().prepare(
            u"SELECT cv_recipient, cv_pin, cv_message, cv_carrier, cv_from, cv_date_time_requested, cv_repeat_stop, "
            "cv_last_try, cv_transaction, cv_scheduled = 0 AND cv_sent = 0 AND cv_error = 0 AND "
            "cv_repeat_interval = 0 AND cv_retries = 0 AND cv_priority IS NULL FROM cv_messages "
            "ORDER BY cv_message_id"_s);
        QList<Row> result;
        while (select.step()) {
            result.append({select.text(0).value_or(u"<null>"_s), select.text(1).value_or(u"<null>"_s),
                           select.text(2).value_or(u"<null>"_s), select.text(3).value_or(u"<null>"_s),
                           select.text(4).value_or(u"<null>"_s), select.date(5).value_or(QDateTime()),
                           select.date(6).value_or(QDateTime()), select.date(7).value_or(QDateTime()),
                           select.integer(8).value_or(0), select.flag(9)});
        }
        return result;
    }

    QStringList messages()
    {
        QStringList result;
        for (const Row& row : rows()) {
            result.append(row.message);
        }
        return result;
    }
};

TEST_F(DropFilesTest, AGoodFileBecomesOneWaitingRowAndIsDeleted)
{
    const struct
    {
        QByteArray content;
        QString recipient;
        QString sender;
        QString message;
        QString carrier;
    } cases[] = {
        {"BOB\nOps Desk\nDisk full\n  second line\n", u"bob"_s, u"Ops Desk"_s, u"Disk full\r\n  second line\r\n"_s,
         u"tapnet"_s},
        {"bob\nops\n\n", u"bob"_s, u"ops"_s, u"\r\n"_s, u"tapnet"_s}, // empty third line
        {"bob\nops\nno final line end", u"bob"_s, u"ops"_s, u"no final line end\r\n"_s, u"tapnet"_s},
        {"bob\r\nops\r\nhi\r\nthere\r\n", u"bob"_s, u"ops"_s, u"hi\r\nthere\r\n"_s, u"tapnet"_s}, // CR LF file
        {"bob\n\n   hello   \n", u"bob"_s, QString(), u"hello   \r\n"_s, u"tapnet"_s},            // only blanks trimmed
        {"bob\nops\n\t tab \n", u"bob"_s, u"ops"_s, u"\t tab \r\n"_s, u"tapnet"_s},
        {"O'Brien\nops\nquoted\n", u"o,brien"_s, u"ops"_s, u"quoted\r\n"_s, u"pagenet"_s},
        {"o\"brien\nops\nquoted\n", u"o,brien"_s, u"ops"_s, u"quoted\r\n"_s, u"pagenet"_s},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZABCDEFGHIJKLMNOP\nops\ncut name\n", // 42 characters
         u"abcdefghijklmnopqrstuvwxyzabcdefghijklmn"_s, u"ops"_s, u"cut name\r\n"_s, u"longnet"_s},
        {"night shift\nops\nto a group\n", u"night shift"_s, u"ops"_s, u"to a group\r\n"_s, u"groupnet"_s},
        {"bob\n" + QByteArray(100, 's') + "\nlong sender\n", u"bob"_s, QString(80, u's'), u"long sender\r\n"_s,
         u"tapnet"_s},
        {"bob\nGr\xc3\xbc\xc3\x9f"
         "e\nK\xc3\xa4se \xe2\x82\xac\n",
         u"bob"_s, u"Grüße"_s, u"Käse €\r\n"_s, u"tapnet"_s}, // UTF-8
        // Over 6000 characters: cut, and the blanks the cut leaves at the end trimmed.
        {"bob\nops\n" + QByteArray(5998, 'x') + "     tail\n", u"bob"_s, u"ops"_s, QString(5998, u'x'), u"tapnet"_s},
        // The largest file that is read: only the first 6000 characters of the body count.
        {"bob\nops\n" + QByteArray(kMaxDropFileBytes - 8, 'y'), u"bob"_s, u"ops"_s, QString(6000, u'y'), u"tapnet"_s},
        {"\xEF\xBB\xBF"
         "bob\nops\nmarked\n",
         u"bob"_s, u"ops"_s, u"marked\r\n"_s, u"tapnet"_s}, // a UTF-8 byte order mark is dropped
        {"J\xd6RG\nJos\xe9\nCaf\xe9 \xfc\xdf\n", u"jörg"_s, u"José"_s, u"Café üß\r\n"_s, u"umlautnet"_s}, // Latin-1
    };
    QSet<qint64> transactions;
    int index = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content.left(60).toStdString());
        const QString path = write_drop(state->program_folder, u"good%1.asc"_s.arg(index++), c.content);
        check_for_files(*state);
        EXPECT_FALSE(QFile::exists(path));
        EXPECT_FALSE(QFile::exists(path + u".bad"_s));
        const QList<Row> all = rows();
        ASSERT_EQ(all.size(), index);
        const Row& row = all.last();
        EXPECT_EQ(row.recipient, c.recipient);
        EXPECT_EQ(row.sender, c.sender);
        EXPECT_EQ(row.message, c.message);
        EXPECT_EQ(row.carrier, c.carrier);
        EXPECT_EQ(row.pin, QString());
        EXPECT_TRUE(row.waiting);
        EXPECT_EQ(row.requested, env.clock.now());
        EXPECT_EQ(row.repeat_stop, env.clock.now());
        EXPECT_EQ(row.last_try, env.clock.now().addSecs(-15)); // the default retry_interval
        EXPECT_GT(row.transaction, 0);
        transactions.insert(row.transaction);
    }
    EXPECT_EQ(transactions.size(), index); // a fresh transaction for every file
}

TEST_F(DropFilesTest, BothFoldersAreTakenProgramFolderFirst)
{
    db().exec(u"DROP TABLE cv_intake_files"_s); // a file made before the table existed
    const QString in_program = write_drop(state->program_folder, u"msg.asc"_s, "bob\nops\nfrom program\n");
    const QString in_global = write_drop(state->global_db_folder, u"msg.asc"_s, "bob\nops\nfrom global\n");
    const QString upper = write_drop(state->global_db_folder, u"OTHER.ASC"_s, "bob\nops\nupper case\n");
    const QString text = write_drop(state->global_db_folder, u"notes.txt"_s, "bob\nops\nnot a drop file\n");
    const QString hidden = write_drop(state->global_db_folder, u".partial.asc"_s, "bob\nops\nhidden\n");
    const QString old_bad = write_drop(state->global_db_folder, u"old.asc.bad"_s, "bob\nops\nset aside\n");
    QDir().mkpath(state->global_db_folder + u"folder.asc"_s);

    check_for_files(*state);
    EXPECT_EQ(messages(), (QStringList{u"from program\r\n"_s, u"from global\r\n"_s, u"upper case\r\n"_s}));
    EXPECT_FALSE(QFile::exists(in_program));
    EXPECT_FALSE(QFile::exists(in_global));
    EXPECT_FALSE(QFile::exists(upper));
    for (const QString& untouched : {text, hidden, old_bad}) {
        EXPECT_TRUE(QFile::exists(untouched)) << untouched.toStdString();
    }
    EXPECT_TRUE(QDir(state->global_db_folder + u"folder.asc"_s).exists());

    // A folder that does not exist is passed over.
    state->program_folder = env.path(u"nowhere/"_s);
    write_drop(state->global_db_folder, u"again.asc"_s, "bob\nops\nagain\n");
    check_for_files(*state);
    EXPECT_EQ(messages().size(), 4);
}

TEST_F(DropFilesTest, ARefusedFileIsRenamedBadReplacingAnOlderOne)
{
    QByteArray binary;
    for (int i = 0; i < 4096; ++i) {
        binary += static_cast<char>((i * 7) % 256);
    }
    const struct
    {
        const char* why;
        QByteArray content;
    } cases[] = {
        {"empty", ""},
        {"one line", "bob\n"},
        {"one line without its end", "bob"},
        {"two lines", "bob\nops\n"},
        {"two lines without the last end", "bob\nops"},
        {"two CR LF lines", "bob\r\nops\r\n"},
        {"unknown recipient", "alice\nops\nhello\n"},
        {"an apostrophe is looked up as a comma", "o'neil\nops\nhello\n"},
        {"lines are not trimmed", "bob \nops\nhello\n"},
        {"binary", binary},
        {"larger than the cap", "bob\nops\n" + QByteArray(kMaxDropFileBytes - 7, 'y')},
    };
    int index = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const QString path = write_drop(state->global_db_folder, u"refused%1.asc"_s.arg(index++), c.content);
        write_drop(state->global_db_folder, u"refused%1.asc.bad"_s.arg(index - 1), "an older refused file");
        check_for_files(*state);
        EXPECT_FALSE(QFile::exists(path));
        EXPECT_EQ(read_bytes(path + u".bad"_s), c.content);
    }
    check_for_files(*state); // the .bad files are not tried again
    EXPECT_EQ(rows().size(), 0);
    EXPECT_EQ(QDir(state->global_db_folder).entryList({u"*.bad"_s}, QDir::Files).size(), index);
}

TEST_F(DropFilesTest, NamesAreTheFileSystemsBytesAndOnlyRegularFilesAreRead)
{
    const QByteArray folder = QFile::encodeName(state->global_db_folder);
    const auto at = [&](const char* name) -> QByteArray { return folder + name; };
    write_drop_bytes(at("caf\xe9.asc"), "bob\nops\nlatin-1 name\n");
    write_drop_bytes(at("\xff\xfe.asc"), "nobody\nops\nunknown\n");
    ASSERT_EQ(::mkfifo(at("fifo.asc").constData(), 0600), 0);
    ASSERT_EQ(::symlink("/dev/zero", at("zero.asc").constData()), 0);

    check_for_files(*state);
    EXPECT_EQ(messages(), QStringList{u"latin-1 name\r\n"_s});
    const auto type_of = [&](const char* name) {
        struct stat info = {};
        return ::lstat(at(name).constData(), &info) == 0 ? info.st_mode & S_IFMT : 0;
    };
    EXPECT_EQ(type_of("caf\xe9.asc"), 0u);
    EXPECT_EQ(type_of("\xff\xfe.asc.bad"), static_cast<mode_t>(S_IFREG));
    EXPECT_EQ(type_of("fifo.asc.bad"), static_cast<mode_t>(S_IFIFO)); // set aside unread, as it was
    EXPECT_EQ(type_of("zero.asc.bad"), static_cast<mode_t>(S_IFLNK));
}

TEST_F(DropFilesTest, ATickCommitsItsFilesTogether)
{
    for (const QString& name : {u"a.asc"_s, u"b.asc"_s, u"c.asc"_s}) {
        write_drop(state->program_folder, name, "bob\nops\n" + name.toUtf8() + '\n');
    }
    QSet<qint64> seen; // the committed rows another process sees between the intake's steps
    {
        YieldWatcher watcher([&] { seen.insert(count_rows(global_db_path(*state), u"cv_messages"_s)); });
        check_for_files(*state);
    }
    EXPECT_EQ(seen, (QSet<qint64>{0, 3}));
    EXPECT_EQ(messages().size(), 3);
}

TEST_F(DropFilesTest, AFileIsTakenExactlyOnceWhereverTheProgramIsKilled)
{
    const struct
    {
        const char* moment;
        bool committed;
    } moments[] = {{"after its row was committed", true}, {"after it was renamed, before the commit", false}};
    const QString db_path = global_db_path(*state);
    for (const auto& m : moments) {
        SCOPED_TRACE(m.moment);
        const QString path = write_drop(state->program_folder, u"once.asc"_s, "bob\nops\nonce\n");
        const qint64 before = rows().size();
        state->global_db.close();
        const pid_t child = ::fork();
        if (child == 0) {
            state->global_db = store::Database::open(db_path);
            YieldWatcher watcher([&] {
                const bool committed = count_rows(db_path, u"cv_messages"_s) > before;
                if (m.committed ? committed : !committed && !QFile::exists(path)) {
                    ::_exit(9);
                }
            });
            check_for_files(*state);
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(WEXITSTATUS(status), 9) << "the moment never came";
        state->global_db = store::Database::open(db_path);
        check_for_files(*state); // the next start
        EXPECT_EQ(rows().size(), before + 1);
        EXPECT_EQ(QDir(state->program_folder).entryList(QDir::Files), QStringList());
        EXPECT_EQ(count_rows(db_path, u"cv_intake_files"_s), 0);
    }
}

// How another program may hold a drop file while it writes it.
enum class Hold { FlockSharedInChild, FlockOtherDescription, FcntlReadRangeInChild, FcntlOfdOtherDescription };

bool take_lock(int fd, Hold hold)
{
    struct flock range = {};
    range.l_whence = SEEK_SET;
    switch (hold) {
    case Hold::FlockSharedInChild:
        return ::flock(fd, LOCK_SH | LOCK_NB) == 0;
    case Hold::FlockOtherDescription:
        return ::flock(fd, LOCK_EX | LOCK_NB) == 0;
    case Hold::FcntlReadRangeInChild:
        range.l_type = F_RDLCK; // a shared lock on a part of the file is enough
        range.l_start = 2;
        range.l_len = 3;
        return ::fcntl(fd, F_SETLK, &range) == 0;
    case Hold::FcntlOfdOtherDescription:
        range.l_type = F_WRLCK;
        return ::fcntl(fd, F_OFD_SETLK, &range) == 0;
    }
    return false;
}

// Holds a lock on a file, in a child process or through a second open file description of this one, for its
// life. The child reports through one pipe and waits on another, so nothing sleeps. Closing m_fd lets go either
// way: it is the second description, or the end of the pipe the child waits on.
class LockHolder
{
public:
    LockHolder(const QString& path, Hold hold)
    {
        const QByteArray name = QFile::encodeName(path);
        if (hold == Hold::FlockOtherDescription || hold == Hold::FcntlOfdOtherDescription) {
            m_fd = ::open(name.constData(), O_RDWR | O_CLOEXEC);
            m_locked = m_fd >= 0 && take_lock(m_fd, hold);
            return;
        }
        int ready[2];
        int release[2];
        if (::pipe(ready) != 0 || ::pipe(release) != 0) {
            return;
        }
        m_child = ::fork();
        if (m_child == 0) {
            ::close(ready[0]);
            ::close(release[1]);
            const int fd = ::open(name.constData(), O_RDWR);
            char answer = fd >= 0 && take_lock(fd, hold) ? '1' : '0';
            (void)!::write(ready[1], &answer, 1);
            (void)!::read(release[0], &answer, 1); // returns when the parent closes its end
            ::_exit(0);
        }
        ::close(ready[1]);
        ::close(release[0]);
        m_fd = release[1];
        char answer = '0';
        m_locked = m_child > 0 && ::read(ready[0], &answer, 1) == 1 && answer == '1';
        ::close(ready[0]);
    }
    ~LockHolder()
    {
        ::close(m_fd);
        if (m_child > 0) {
            ::waitpid(m_child, nullptr, 0);
        }
    }
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

    bool locked() const { return m_locked; }

private:
    int m_fd = -1;
    pid_t m_child = -1;
    bool m_locked = false;
};

TEST_F(DropFilesTest, AFileHeldByItsWriterWaitsForALaterCall)
{
    const struct
    {
        const char* how;
        Hold hold;
    } cases[] = {
        {"shared flock in another process", Hold::FlockSharedInChild},
        {"flock through another open file description", Hold::FlockOtherDescription},
        {"fcntl read lock on a range in another process", Hold::FcntlReadRangeInChild},
        {"open file description lock in this process", Hold::FcntlOfdOtherDescription},
    };
    int index = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.how);
        const QByteArray content = "bob\nops\nheld " + QByteArray::number(index) + '\n';
        const QString path = write_drop(state->program_folder, u"held%1.asc"_s.arg(index++), content);
        std::optional<LockHolder> holder(std::in_place, path, c.hold);
        ASSERT_TRUE(holder->locked());
        check_for_files(*state);
        EXPECT_EQ(read_bytes(path), content); // neither read nor renamed
        EXPECT_FALSE(QFile::exists(path + u".bad"_s));
        EXPECT_EQ(rows().size(), index - 1);

        holder.reset();
        check_for_files(*state);
        EXPECT_FALSE(QFile::exists(path));
        ASSERT_EQ(rows().size(), index);
        EXPECT_EQ(rows().last().message, u"held %1\r\n"_s.arg(index - 1));
    }
}

TEST_F(DropFilesTest, AFileChangedWithinTheLastSecondWaits)
{
    const struct
    {
        QString name;
        qint64 age_ms;
        bool taken_now;
    } cases[] = {
        {u"fresh.asc"_s, 0, false},   {u"half.asc"_s, 500, false},    {u"almost.asc"_s, 999, false},
        {u"quiet.asc"_s, 1000, true}, {u"ahead.asc"_s, -5000, false}, // changed after now: counts as recent
    };
    for (const auto& c : cases) {
        write_drop(state->global_db_folder, c.name, "bob\nops\n" + c.name.toUtf8() + '\n', c.age_ms);
    }
    check_for_files(*state);
    for (const auto& c : cases) {
        EXPECT_EQ(QFile::exists(state->global_db_folder + c.name), !c.taken_now) << c.name.toStdString();
    }
    EXPECT_EQ(messages(), QStringList{u"quiet.asc\r\n"_s});

    env.clock.advance_seconds(1);
    check_for_files(*state);
    EXPECT_EQ(messages().size(), 4);
    EXPECT_TRUE(QFile::exists(state->global_db_folder + u"ahead.asc"_s));

    env.clock.advance_seconds(5);
    check_for_files(*state);
    EXPECT_EQ(messages().size(), 5);
    EXPECT_EQ(QDir(state->global_db_folder).entryList({u"*.asc*"_s}, QDir::Files).size(), 0);
}

TEST_F(DropFilesTest, ADatabaseFailureGoesToTheErrorPathAndLeavesTheFile)
{
    const QString path = write_drop(state->program_folder, u"msg.asc"_s, "bob\nops\nhello\n");
    state->global_db.close();
    EXPECT_THROW(check_for_files(*state), ProgramHalted);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_TRUE(env.prompter.boxes[0].text.contains(u"Procedure: check_for_messages"_s))
        << env.prompter.boxes[0].text.toStdString();
    EXPECT_TRUE(QFile::exists(path));
    EXPECT_FALSE(QFile::exists(path + u".bad"_s));
}

TEST(ParseDropFile, NeedsAThirdLineAndCutsTheMessageAfterTrimming)
{
    const struct
    {
        QByteArray content;
        bool parses;
        QString message;
    } cases[] = {
        {"\n\n", false, {}},
        {"\n\n\n", true, u"\r\n"_s},
        {"a\nb\n   ", true, u"\r\n"_s},                             // blanks only: the line end stays
        {"a\nb\n" + QByteArray(6001, ' ') + 'z', true, u"z\r\n"_s}, // trimmed before the cut
    };
    for (const auto& c : cases) {
        const std::optional<DropMessage> message = parse_drop_file(c.content);
        ASSERT_EQ(message.has_value(), c.parses) << c.content.left(20).toStdString();
        if (message) {
            EXPECT_EQ(message->message, c.message);
        }
    }
}

} // namespace
} // namespace cvd::intake
