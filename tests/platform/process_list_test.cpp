#include "platform/files.h"
#include "platform/process_list.h"
#include "platform_test_support.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::platform {
namespace {

class FakeProcTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        add(u"1"_s, "init\n", u"/usr/lib/systemd/systemd"_s);
        add(u"2"_s, "kthreadd\n", QString()); // kernel threads have no program file
        add(u"10"_s, "cvddial\n", u"/opt/halvern/cvddial (deleted)"_s);
        add(u"9"_s, "name with space", u"/usr/bin/relative/../tool"_s);
        add(u"100"_s, "cvd\n", u"cvd"_s);
        add(u"12a"_s, "not a process\n", u"/bin/x"_s);
        add(u"self"_s, "self\n", u"/bin/self"_s);
        QDir(m_dir.path()).mkdir(u"55"_s); // a process that ended while the list was read
        QFile stray(m_dir.path() + u"/77"_s);
        ASSERT_TRUE(stray.open(QIODevice::WriteOnly));
    }

    void add(const QString& entry, const QByteArray& comm, const QString& exe_target)
    {
        const QString folder = m_dir.path() + u'/' + entry;
        ASSERT_TRUE(QDir().mkpath(folder));
        ASSERT_TRUE(write_file_atomically(folder + u"/comm"_s, comm).ok);
        if (!exe_target.isEmpty()) {
            ASSERT_TRUE(QFile::link(exe_target, folder + u"/exe"_s));
        }
    }

    QTemporaryDir m_dir;
};

TEST_F(FakeProcTest, NumericEntriesInPidOrderWithNameAndProgramUpToTheLimit)
{
    const QList<ProcessEntry> processes = list_processes(500, m_dir.path());
    struct Expected
    {
        qint64 pid;
        QString name;
        QString exe_name;
    };
    const Expected expected[] = {
        {1, u"init"_s, u"systemd"_s},     {2, u"kthreadd"_s, QString()}, {9, u"name with space"_s, u"tool"_s},
        {10, u"cvddial"_s, u"cvddial"_s}, {100, u"cvd"_s, u"cvd"_s},
    };
    ASSERT_EQ(processes.size(), std::size(expected));
    for (size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(processes.at(i).pid, expected[i].pid) << i;
        EXPECT_EQ(processes.at(i).name, expected[i].name) << i;
        EXPECT_EQ(processes.at(i).exe_name, expected[i].exe_name) << i;
    }
    // The limit stops the scan in pid order.
    EXPECT_EQ(list_processes(2, m_dir.path() + u'/').size(), 2);
    EXPECT_EQ(list_processes(4, m_dir.path()).last().pid, 10);
    EXPECT_TRUE(list_processes(0, m_dir.path()).isEmpty());
    EXPECT_TRUE(list_processes(500, m_dir.path() + u"/missing"_s).isEmpty());
}

TEST(ProcessList, FindsThisTestProgramInTheRealProc)
{
    const qint64 own_pid = ::getpid();
    const QList<ProcessEntry> processes = list_processes(1 << 20);
    const auto self = std::find_if(processes.cbegin(), processes.cend(),
                                   [&](const ProcessEntry& entry) { return entry.pid == own_pid; });
    ASSERT_NE(self, processes.cend());
    EXPECT_EQ(self->name, u"test_platform"_s);
    EXPECT_EQ(self->exe_name, u"test_platform"_s);
    EXPECT_TRUE(std::is_sorted(processes.cbegin(), processes.cend(),
                               [](const ProcessEntry& a, const ProcessEntry& b) { return a.pid < b.pid; }));
    EXPECT_LE(list_processes().size(), 500);
}

} // namespace
} // namespace cvd::platform
