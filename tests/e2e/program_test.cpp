// Runs the built programs as separate processes in a private environment, as an operator or another
// program on the machine would.
#include "platform/folders.h"
#include "platform/runtime.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/legacy_databases.h"
#include "support/test_environment.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <csignal>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd {
namespace {

// Bounds on how long a process may take before the test gives up on it; never a measure of speed.
constexpr int kStartBoundMs = 30000;

// The programs lie beside the test executable unless CVD_BIN_DIR says otherwise.
QString bin_dir()
{
    const QString dir = qEnvironmentVariable("CVD_BIN_DIR");
    return dir.isEmpty() ? platform::executable_folder() : dir + u'/';
}

struct Finished
{
    int status = -1;
    QString out;
    QString err;
};

Finished run_to_end(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.closeWriteChannel();
    process.waitForFinished(kStartBoundMs);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

// A running cvd --headless, stopped with SIGTERM at the end of the test.
class RunningProgram
{
public:
    explicit RunningProgram(const QString& program, const QStringList& extra = {})
    {
        m_process.start(program, QStringList{u"--headless"_s} + extra);
        m_process.closeWriteChannel();
        while (!m_output.contains(u"cvd: running"_s) && m_process.waitForReadyRead(kStartBoundMs)) {
            m_output += QString::fromUtf8(m_process.readAllStandardOutput());
        }
    }
    ~RunningProgram()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished(kStartBoundMs);
        }
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    bool started() const { return m_output.contains(u"cvd: running"_s); }
    QString errors() { return QString::fromUtf8(m_process.readAllStandardError()); }

    Finished terminate()
    {
        ::kill(static_cast<pid_t>(m_process.processId()), SIGTERM);
        m_process.waitForFinished(kStartBoundMs);
        m_output += QString::fromUtf8(m_process.readAllStandardOutput());
        return {m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1, m_output,
                QString::fromUtf8(m_process.readAllStandardError())};
    }

private:
    QProcess m_process;
    QString m_output;
};

qint64 scalar(const QString& path, const QString& sql)
{
    store::Database db = store::Database::open(path, store::Database::OpenMode::ReadOnly);
    store::Statement select = db.prepare(sql);
    return select.step() ? select.integer(0).value_or(-1) : -1;
}

TEST(Program, HelpAndVersionOnBothPrograms)
{
    testing::TestEnvironment env;
    for (const QString& program : {u"cvd"_s, u"cvdctl"_s}) {
        const Finished help = run_to_end(bin_dir() + program, {u"--help"_s});
        EXPECT_EQ(help.status, 0) << program.toStdString();
        EXPECT_TRUE(help.out.startsWith(u"Usage: "_s + program)) << help.out.toStdString();
        const Finished version = run_to_end(bin_dir() + program, {u"--version"_s});
        EXPECT_EQ(version.status, 0);
        EXPECT_TRUE(version.out.startsWith(program + u" 5."_s)) << version.out.toStdString();
    }
}

TEST(Program, StartsHeadlessTakesLinesFromSecondStartsAndEndsInOrder)
{
    testing::TestEnvironment env;
    RunningProgram cvd(bin_dir() + u"cvd"_s);
    ASSERT_TRUE(cvd.started()) << cvd.errors().toStdString();
    EXPECT_TRUE(platform::program_is_running(env.runtime_dir()));

    const QString global = env.global_db_folder() + u"cvd.mdb"_s;
    const QString user = env.user_db_folder() + u"cvd.mdb"_s;
    ASSERT_TRUE(QFile::exists(global));
    ASSERT_TRUE(QFile::exists(user));
    EXPECT_EQ(scalar(global, u"SELECT count(*) FROM cv_presets"_s), 100);
    EXPECT_EQ(scalar(user, u"SELECT count(*) FROM cv_presets"_s), 100);
    {
        store::Database db = store::Database::open(global);
        db.exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier, cv_group) VALUES ('bob', 'tapnet', 0)"_s);
    }

    // A second start with a line enqueues it for the running copy and leaves silently.
    const Finished sent = run_to_end(bin_dir() + u"cvd"_s, {u"bob"_s, u"ops"_s, u"Disk"_s, u"full"_s});
    EXPECT_EQ(sent.status, 0) << sent.err.toStdString();
    EXPECT_TRUE(sent.err.isEmpty()) << sent.err.toStdString();
    EXPECT_EQ(scalar(global, u"SELECT count(*) FROM cv_messages WHERE cv_recipient = 'bob' AND cv_message = 'Disk "
                             "full' AND cv_from = 'ops' AND cv_carrier = 'tapnet' AND cv_scheduled = 0 AND "
                             "cv_sent = 0 AND cv_error = 0"_s),
              1);

    // A refused line adds nothing and says why in one line.
    const Finished refused = run_to_end(bin_dir() + u"cvd"_s, {u"nobody ops x"_s});
    EXPECT_NE(refused.status, 0);
    EXPECT_EQ(refused.err.count(u'\n'), 1) << refused.err.toStdString();
    EXPECT_TRUE(refused.err.contains(u"nobody"_s));
    EXPECT_EQ(scalar(global, u"SELECT count(*) FROM cv_messages"_s), 1);

    // A second start with nothing to hand in shows the duplicate box and ends.
    const Finished duplicate = run_to_end(bin_dir() + u"cvd"_s, {u"--headless"_s});
    EXPECT_NE(duplicate.status, 0);
    EXPECT_TRUE(duplicate.err.contains(u"Duplicate Application"_s)) << duplicate.err.toStdString();

    const Finished ended = cvd.terminate();
    EXPECT_EQ(ended.status, 0) << ended.err.toStdString();
    EXPECT_TRUE(ended.out.contains(u"cvd: stopped"_s));
    EXPECT_FALSE(platform::program_is_running(env.runtime_dir()));
}

TEST(Program, TheLocalFormPutsTheDatabasesBesideTheProgram)
{
    testing::TestEnvironment env;
    const QString copy = env.program_folder() + u"cvd"_s;
    ASSERT_TRUE(QFile::copy(bin_dir() + u"cvd"_s, copy));
    RunningProgram cvd(copy, {u"/localdb"_s});
    ASSERT_TRUE(cvd.started()) << cvd.errors().toStdString();
    const QString global = env.program_folder() + u"UserDB/cvd.mdb"_s;
    const QString user = env.program_folder() + u"GlobalDB/cvd.mdb"_s;
    EXPECT_EQ(scalar(global, u"SELECT count(*) FROM cv_counters"_s), 1);
    EXPECT_EQ(scalar(user, u"SELECT count(*) FROM sqlite_master WHERE name = 'cv_messages'"_s), 0);
    EXPECT_FALSE(QFile::exists(env.global_db_folder() + u"cvd.mdb"_s));
    EXPECT_EQ(cvd.terminate().status, 0);
}

TEST(Program, AFileThatIsNoDatabaseEndsTheProgramWithTheFatalText)
{
    testing::TestEnvironment env;
    QDir().mkpath(env.global_db_folder());
    const QString path = env.global_db_folder() + u"cvd.mdb"_s;
    const QByteArray junk = QByteArray("not a database\n").repeated(200);
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(junk);
    }
    const Finished run = run_to_end(bin_dir() + u"cvd"_s, {u"--headless"_s});
    EXPECT_NE(run.status, 0);
    EXPECT_TRUE(run.err.contains(u"CorvaneDesk Fatal Error: Fatal database error:  26"_s)) << run.err.toStdString();
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), junk);
}

TEST(Program, ADamagedDatabaseEndsTheProgramNamingTheLastBackupAndIsLeftAsItWas)
{
    testing::TestEnvironment env;
    QDir().mkpath(env.global_db_folder());
    const QString path = env.global_db_folder() + u"cvd.mdb"_s;
    store::create_global_database(path);
    {
        // Unsent rows enough that the middle of the file holds rows every start reads.
        store::Database db = store::Database::open(path);
        db.exec(u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2000) INSERT INTO "
                "cv_messages (cv_recipient, cv_message, cv_sent) SELECT 'bob', hex(randomblob(150)), 0 FROM n"_s);
    }
    // A conversion's copy of two days ago beside it, and a newer one made with cvdctl.
    QFile conversion_copy(path + u".v300.bak"_s);
    ASSERT_TRUE(conversion_copy.open(QIODevice::WriteOnly));
    conversion_copy.setFileTime(QDateTime::currentDateTime().addDays(-2), QFileDevice::FileModificationTime);
    const QString copy = env.path(u"nightly.mdb"_s);
    ASSERT_EQ(run_to_end(bin_dir() + u"cvdctl"_s, {u"db"_s, u"backup"_s, copy}).status, 0);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(file.size() / 2 / 4096 * 4096));
    file.write(QByteArray(8 * 4096, '\x5a'));
    ASSERT_TRUE(file.seek(0));
    const QByteArray damaged = file.readAll();

    const Finished run = run_to_end(bin_dir() + u"cvd"_s, {u"--headless"_s});
    EXPECT_NE(run.status, 0);
    EXPECT_TRUE(run.err.contains(u"The database "_s + path + u" is damaged"_s)) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(u"The most recent backup is "_s + copy + u'.')) << run.err.toStdString();
    ASSERT_TRUE(file.seek(0));
    EXPECT_TRUE(file.readAll() == damaged);
}

TEST(Program, AnOldDatabaseIsConvertedAtStartAndOneTooOldIsRefused)
{
    testing::TestEnvironment env;
    QDir().mkpath(env.global_db_folder());
    const QString path = env.global_db_folder() + u"cvd.mdb"_s;
    testing::make_version300_database(path);
    {
        store::Database db = store::Database::open(path);
        db.exec(u"INSERT INTO cv_carriers (cv_name, cv_dial_type, cv_password) VALUES ('Pager', 'tap', 'u|p')"_s);
    }
    {
        RunningProgram program(bin_dir() + u"cvd"_s);
        ASSERT_TRUE(program.started()) << program.errors().toStdString();
        EXPECT_EQ(program.terminate().status, 0);
    }
    EXPECT_EQ(scalar(path, u"SELECT cv_value FROM cv_settings WHERE cv_name = 'version'"_s), 501);
    EXPECT_EQ(scalar(path, u"SELECT cv_auth_type FROM cv_carriers WHERE cv_auth_user = 'u' AND cv_auth_pass = 'p'"_s),
              1);
    EXPECT_EQ(scalar(path + u".v300.bak"_s, u"SELECT cv_dbversion FROM cv_settings"_s), 300);

    QFile::remove(path);
    testing::make_version300_database(path, 250);
    const Finished refused = run_to_end(bin_dir() + u"cvd"_s, {u"--headless"_s});
    EXPECT_NE(refused.status, 0);
    EXPECT_TRUE(refused.err.contains(u"Can't Upgrade Database"_s)) << refused.err.toStdString();
    EXPECT_TRUE(refused.err.contains(u"Version Mismatch"_s)) << refused.err.toStdString();
    EXPECT_EQ(scalar(path, u"SELECT cv_dbversion FROM cv_settings"_s), 250);
}

} // namespace
} // namespace cvd
