#include "platform/files.h"
#include "platform/runtime.h"
#include "platform_test_support.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace cvd::platform {
namespace {

using testing::ScopedEnvironment;

mode_t permission_bits(const QString& path)
{
    struct stat info
    {
    };
    ::stat(QFile::encodeName(path).constData(), &info);
    return info.st_mode & 07777;
}

// Exit status of `flock -n [-s] path true`: 0 when the lock could be had, 1 when another holder refused it.
int flock_command(const QString& path, bool shared)
{
    QStringList arguments{u"-n"_s};
    if (shared) {
        arguments.append(u"-s"_s);
    }
    arguments << path << u"true"_s;
    QProcess process;
    process.start(u"flock"_s, arguments);
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit) {
        return -1;
    }
    return process.exitCode();
}

// A shell that says `ready` and then waits for its input to end, optionally run under `flock path`.
struct WaitingChild
{
    explicit WaitingChild(const QStringList& prefix)
    {
        const QStringList command = prefix + QStringList{u"sh"_s, u"-c"_s, u"echo ready; read line"_s};
        process.start(command.first(), command.mid(1));
    }
    ~WaitingChild() { finish(); }

    bool wait_until_ready()
    {
        while (!process.canReadLine()) {
            if (!process.waitForReadyRead(30000)) {
                return false;
            }
        }
        return process.readLine().trimmed() == "ready";
    }

    bool finish()
    {
        process.closeWriteChannel();
        return process.state() == QProcess::NotRunning || process.waitForFinished(30000);
    }

    QProcess process;
};

TEST(RuntimeFolder, ComesFromTheVariablesAndIsMadePrivate)
{
    QTemporaryDir dir;
    ScopedEnvironment environment;
    environment.set("CVD_RUNTIME_DIR", dir.path() + u"/run/nested/"_s);
    environment.set("XDG_RUNTIME_DIR", dir.path() + u"/session"_s);
    QDir(dir.path()).mkdir(u"session"_s);
    for (const QString& expected : QStringList{dir.path() + u"/run/nested"_s, dir.path() + u"/session/halvern"_s}) {
        const QString folder = runtime_folder();
        EXPECT_EQ(folder, expected);
        EXPECT_TRUE(is_directory(folder));
        EXPECT_EQ(permission_bits(folder), 0700u);
        environment.unset("CVD_RUNTIME_DIR");
    }
}

class FileLockTest : public ::testing::Test
{
protected:
    QString lock_path() const { return m_dir.path() + u"/CorvaneDesk.lock"_s; }
    QTemporaryDir m_dir;
};

TEST_F(FileLockTest, ExclusiveLockIsSeenByOtherProcessesUntilReleased)
{
    EXPECT_FALSE(file_is_locked(lock_path()));
    EXPECT_FALSE(path_exists(lock_path())) << "testing does not create the file";

    std::unique_ptr<FileLock> lock = FileLock::try_lock(lock_path(), FileLock::Mode::Exclusive);
    ASSERT_NE(lock, nullptr);
    EXPECT_EQ(lock->path(), lock_path());
    EXPECT_TRUE(path_exists(lock_path()));
    EXPECT_TRUE(file_is_locked(lock_path()));
    EXPECT_EQ(flock_command(lock_path(), false), 1);
    EXPECT_EQ(flock_command(lock_path(), true), 1);

    lock->release();
    EXPECT_FALSE(file_is_locked(lock_path()));
    EXPECT_EQ(flock_command(lock_path(), false), 0);
    lock->release(); // a second release is harmless
}

TEST_F(FileLockTest, SharedLockAdmitsSharersAndShutsOutExclusiveOnes)
{
    std::unique_ptr<FileLock> lock = FileLock::try_lock(lock_path(), FileLock::Mode::Shared);
    ASSERT_NE(lock, nullptr);
    EXPECT_TRUE(file_is_locked(lock_path()));
    EXPECT_EQ(flock_command(lock_path(), true), 0);
    EXPECT_EQ(flock_command(lock_path(), false), 1);

    std::unique_ptr<FileLock> second_sharer = FileLock::try_lock(lock_path(), FileLock::Mode::Shared);
    EXPECT_NE(second_sharer, nullptr);
    EXPECT_EQ(FileLock::try_lock(lock_path(), FileLock::Mode::Exclusive), nullptr);

    lock.reset();
    second_sharer.reset();
    EXPECT_FALSE(file_is_locked(lock_path())) << "destruction releases";
    EXPECT_NE(FileLock::try_lock(lock_path(), FileLock::Mode::Exclusive), nullptr);
}

TEST_F(FileLockTest, LockHeldElsewhereRefusesBothModesAndIsFreedWhenItsHolderEnds)
{
    std::unique_ptr<FileLock> own = FileLock::try_lock(lock_path(), FileLock::Mode::Exclusive);
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(FileLock::try_lock(lock_path(), FileLock::Mode::Exclusive), nullptr);
    EXPECT_EQ(FileLock::try_lock(lock_path(), FileLock::Mode::Shared), nullptr);
    own.reset();

    WaitingChild holder({u"flock"_s, lock_path()});
    ASSERT_TRUE(holder.wait_until_ready());
    EXPECT_TRUE(file_is_locked(lock_path()));
    EXPECT_EQ(FileLock::try_lock(lock_path(), FileLock::Mode::Exclusive), nullptr);
    EXPECT_EQ(FileLock::try_lock(lock_path(), FileLock::Mode::Shared), nullptr);

    ASSERT_TRUE(holder.finish());
    EXPECT_FALSE(file_is_locked(lock_path()));
    EXPECT_NE(FileLock::try_lock(lock_path(), FileLock::Mode::Exclusive), nullptr);

    EXPECT_EQ(FileLock::try_lock(m_dir.path() + u"/missing/x.lock"_s, FileLock::Mode::Exclusive), nullptr);
}

TEST_F(FileLockTest, ProgramsStartedWhileLockedDoNotKeepTheLock)
{
    std::unique_ptr<FileLock> lock = FileLock::try_lock(lock_path(), FileLock::Mode::Exclusive);
    ASSERT_NE(lock, nullptr);
    WaitingChild started_meanwhile({});
    ASSERT_TRUE(started_meanwhile.wait_until_ready());

    lock->release();
    EXPECT_FALSE(file_is_locked(lock_path())) << "the lock's descriptor leaked into the child";
    EXPECT_TRUE(started_meanwhile.finish());
}

TEST_F(FileLockTest, InstanceAndRunningMarkerTestsLookAtTheirOwnFiles)
{
    const QString dir = m_dir.path();
    EXPECT_FALSE(program_is_running(dir));
    EXPECT_FALSE(running_marker_is_held(dir));

    std::unique_ptr<FileLock> instance = FileLock::try_lock(dir + u"/CorvaneDesk.lock"_s, FileLock::Mode::Exclusive);
    ASSERT_NE(instance, nullptr);
    EXPECT_TRUE(program_is_running(dir));
    EXPECT_TRUE(program_is_running(dir + u'/'));
    EXPECT_FALSE(running_marker_is_held(dir));

    std::unique_ptr<FileLock> marker = FileLock::try_lock(dir + u"/HalvernIsRunning"_s, FileLock::Mode::Shared);
    ASSERT_NE(marker, nullptr);
    EXPECT_TRUE(running_marker_is_held(dir));

    instance.reset();
    EXPECT_FALSE(program_is_running(dir));
    EXPECT_TRUE(running_marker_is_held(dir));
    marker.reset();
    EXPECT_FALSE(running_marker_is_held(dir));
}

} // namespace
} // namespace cvd::platform
