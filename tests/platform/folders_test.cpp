#include "platform/files.h"
#include "platform/folders.h"
#include "platform_test_support.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::platform {
namespace {

using testing::ScopedEnvironment;

TEST(FolderText, TrailingSlashHelpersAddOrDropOneSlash)
{
    struct Case
    {
        QString path;
        QString with;
        QString without;
    };
    const Case cases[] = {
        {u""_s, u""_s, u""_s},
        {u"/opt/cvd"_s, u"/opt/cvd/"_s, u"/opt/cvd"_s},
        {u"/opt/cvd/"_s, u"/opt/cvd/"_s, u"/opt/cvd"_s},
        {u"/opt/cvd//"_s, u"/opt/cvd//"_s, u"/opt/cvd/"_s},
        {u"rel"_s, u"rel/"_s, u"rel"_s},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(with_trailing_slash(c.path), c.with) << c.path.toStdString();
        EXPECT_EQ(without_trailing_slash(c.path), c.without) << c.path.toStdString();
    }
}

TEST(ExecutableFolder, IsTheFolderOfThisTestProgram)
{
    const QString folder = executable_folder();
    ASSERT_TRUE(folder.endsWith(u'/')) << folder.toStdString();
    EXPECT_TRUE(path_exists(folder + u"test_platform"_s)) << folder.toStdString();
    EXPECT_TRUE(is_directory(folder));
}

class DataRootsTest : public ::testing::Test
{
protected:
    QString path(const QString& relative) const { return m_dir.path() + u'/' + relative; }

    QTemporaryDir m_dir;
    ScopedEnvironment m_environment;
};

TEST_F(DataRootsTest, CommonRootPrefersTheVariableThenTheMachineFolderThenTheStateFolderAndAllFollowXdg)
{
    QDir(m_dir.path()).mkpath(u"machine-ready/Halvern"_s);
    QDir(m_dir.path()).mkpath(u"machine-bare"_s);
    QFile blocker(path(u"not-a-folder"_s));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    QDir(m_dir.path()).mkpath(u"machine-blocked"_s);
    QFile vendor_file(path(u"machine-blocked/Halvern"_s)); // "Halvern" taken by a file: no folder there
    ASSERT_TRUE(vendor_file.open(QIODevice::WriteOnly));
    m_environment.set("XDG_STATE_HOME", path(u"state"_s));
    m_environment.set("HOME", path(u"home"_s));

    struct Case
    {
        const char* name;
        std::optional<QString> variable;
        QString candidate;
        QString expected;
    };
    const Case cases[] = {
        {"variable wins", path(u"common"_s), path(u"machine-bare"_s), path(u"common"_s)},
        {"empty variable is unset", u""_s, path(u"machine-bare"_s), path(u"machine-bare"_s)},
        {"Halvern can be created", std::nullopt, path(u"machine-bare"_s), path(u"machine-bare"_s)},
        {"Halvern already there", std::nullopt, path(u"machine-ready"_s), path(u"machine-ready"_s)},
        {"machine folder missing", std::nullopt, path(u"no-such-folder"_s), path(u"state"_s)},
        {"machine folder is a file", std::nullopt, path(u"not-a-folder"_s), path(u"state"_s)},
        {"Halvern is a file", std::nullopt, path(u"machine-blocked"_s), path(u"state"_s)},
    };
    for (const Case& c : cases) {
        if (c.variable) {
            m_environment.set("CVD_COMMON_APPDATA", *c.variable);
        } else {
            m_environment.unset("CVD_COMMON_APPDATA");
        }
        EXPECT_EQ(common_data_root(c.candidate), c.expected) << c.name;
    }
    EXPECT_FALSE(path_exists(path(u"machine-bare/Halvern"_s))) << "choosing a root creates nothing";

    EXPECT_EQ(state_home(), path(u"state"_s));
    m_environment.set("XDG_DATA_HOME", path(u"data"_s));
    EXPECT_EQ(user_data_root(), path(u"data"_s));

    // Without the XDG variables (or with them empty) the folders lie under HOME.
    m_environment.unset("CVD_COMMON_APPDATA");
    m_environment.unset("XDG_STATE_HOME");
    m_environment.set("XDG_DATA_HOME", u""_s);
    m_environment.set("HOME", path(u"home/"_s));
    EXPECT_EQ(common_data_root(path(u"no-such-folder"_s)), path(u"home/.local/state"_s));
    EXPECT_EQ(state_home(), path(u"home/.local/state"_s));
    EXPECT_EQ(user_data_root(), path(u"home/.local/share"_s));
}

TEST(ResolveDataFolders, BuildsUserThenGlobalLevelByLevelOrBothCrossedUnderTheProgram)
{
    const QString ann = u"/home/ann/.local/share/Halvern/"_s;
    const QString srv = u"/srv/common/Halvern/"_s;
    const struct
    {
        bool local_db;
        QString common;
        QString user;
        QString global_db;
        QString user_db;
        QStringList levels; // empty: not looked at
    } cases[] = {
        {false,
         u"/srv/common"_s,
         u"/home/ann/.local/share"_s,
         srv + u"Corvane Desk/5.0/"_s,
         ann + u"Corvane Desk/5.0/"_s,
         {ann, ann + u"Corvane Desk/"_s, ann + u"Corvane Desk/5.0/"_s, srv, srv + u"Corvane Desk/"_s,
          srv + u"Corvane Desk/5.0/"_s}},
        {false, u"/srv/common/"_s, u"/u/"_s, srv + u"Corvane Desk/5.0/"_s, u"/u/Halvern/Corvane Desk/5.0/"_s, {}},
        // A root that could not be found leaves the path starting at the vendor folder.
        {false, QString(), QString(), u"/Halvern/Corvane Desk/5.0/"_s, u"/Halvern/Corvane Desk/5.0/"_s, {}},
        {true,
         u"/srv/common"_s,
         u"/home/ann"_s,
         u"/opt/cvd/UserDB/"_s,
         u"/opt/cvd/GlobalDB/"_s,
         {u"/opt/cvd/GlobalDB/"_s, u"/opt/cvd/UserDB/"_s}},
    };
    for (const auto& c : cases) {
        QStringList levels;
        const DataFolders folders = resolve_data_folders(c.local_db, u"/opt/cvd/"_s, c.common, c.user, u"5.0"_s,
                                                         [&](const QString& level) { levels.append(level); });
        EXPECT_EQ(folders.global_db_folder, c.global_db);
        EXPECT_EQ(folders.user_db_folder, c.user_db);
        EXPECT_TRUE(c.levels.isEmpty() || levels == c.levels) << levels.join(u", "_s).toStdString();
        EXPECT_EQ(levels.first(), c.local_db ? c.user_db : c.user_db.left(c.user_db.indexOf(u"Halvern/"_s) + 8));
    }
}

TEST(ResolveDataFolders, LevelsCanBeCreatedOneAtATimeInTheOrderGiven)
{
    QTemporaryDir dir;
    const QString base = dir.path() + u'/';
    QDir(dir.path()).mkpath(u"common"_s);
    QDir(dir.path()).mkpath(u"user"_s);
    QStringList failures;
    const DataFolders folders = resolve_data_folders(false, base + u"program/"_s, base + u"common"_s, base + u"user"_s,
                                                     u"5.0"_s, [&](const QString& level) {
                                                         if (!make_directory(level).ok) {
                                                             failures.append(level);
                                                         }
                                                     });
    EXPECT_TRUE(failures.isEmpty()) << failures.join(u", "_s).toStdString();
    EXPECT_TRUE(is_directory(folders.global_db_folder));
    EXPECT_TRUE(is_directory(folders.user_db_folder));
}

} // namespace
} // namespace cvd::platform
