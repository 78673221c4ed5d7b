#include "store/database.h"
#include "store/schema.h"
#include "store_test_support.h"

#include <QDir>
#include <functional>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::store {
namespace {

using testing::query_value;
using testing::read_bytes;
using testing::TempFolder;
using testing::write_bytes;

using Creator = void (*)(const QString&);

TEST(CreateDatabase, ANewFileIsCompleteInWriteAheadModeAndLeavesNothingBeside)
{
    const struct
    {
        Creator create;
        FileKind kind;
        int version;
    } cases[] = {{create_global_database, FileKind::Global, 501}, {create_user_database, FileKind::User, 500}};
    for (const auto& c : cases) {
        TempFolder folder;
        const QString path = folder.path(u"cvd.mdb"_s);
        c.create(path);
        EXPECT_EQ(folder.entries(), QStringList{u"cvd.mdb"_s});
        Database db = Database::open(path);
        EXPECT_EQ(classify(db), c.kind);
        EXPECT_EQ(stored_version(db), c.version);
        EXPECT_EQ(query_value(db, u"PRAGMA journal_mode"_s), u"wal"_s);
        EXPECT_EQ(query_value(db, u"PRAGMA integrity_check"_s), u"ok"_s);
    }
}

TEST(CreateDatabase, AnExistingFileIsNeverOverwritten)
{
    const QByteArray contents[] = {QByteArray(), QByteArrayLiteral("an operator's own notes\n")};
    for (Creator create : {create_global_database, create_user_database}) {
        for (const QByteArray& content : contents) {
            TempFolder folder;
            const QString path = folder.path(u"cvd.mdb"_s);
            write_bytes(path, content);
            EXPECT_NO_THROW(create(path));
            EXPECT_EQ(read_bytes(path), content);
            EXPECT_EQ(folder.entries(), QStringList{u"cvd.mdb"_s});
        }
        // Nor is one of our own: its rows stay.
        TempFolder folder;
        const QString path = folder.path(u"cvd.mdb"_s);
        create(path);
        {
            Database db = Database::open(path);
            db.exec(u"DELETE FROM cv_presets"_s);
        }
        create(path);
        Database db = Database::open(path);
        EXPECT_EQ(query_value(db, u"SELECT count(*) FROM cv_presets"_s), u"0"_s);
    }
}

TEST(CreateDatabase, PublishingGivesWayToAFileThatAppearedMeanwhile)
{
    TempFolder folder;
    const QString temp = folder.path(u"cvd.mdb.creating-1"_s);
    const QString path = folder.path(u"cvd.mdb"_s);

    write_bytes(temp, "ours");
    write_bytes(path, "theirs");
    EXPECT_FALSE(publish_new_file(temp, path));
    EXPECT_EQ(read_bytes(path), "theirs");
    EXPECT_EQ(folder.entries(), QStringList{u"cvd.mdb"_s});

    QFile::remove(path);
    write_bytes(temp, "ours");
    EXPECT_TRUE(publish_new_file(temp, path));
    EXPECT_EQ(read_bytes(path), "ours");
    EXPECT_EQ(folder.entries(), QStringList{u"cvd.mdb"_s});

    write_bytes(temp, "ours");
    try {
        publish_new_file(temp, folder.path(u"no-such-folder/cvd.mdb"_s));
        ADD_FAILURE() << "published into a missing folder";
    } catch (const Error& error) {
        EXPECT_EQ(error.primary_code(), codes::CantOpen);
    }
    EXPECT_EQ(folder.entries(), QStringList{u"cvd.mdb"_s});
}

TEST(CreateDatabase, AFailedCreationLeavesNoFile)
{
    TempFolder folder;
    const QString path = folder.path(u"missing/cvd.mdb"_s);
    for (Creator create : {create_global_database, create_user_database}) {
        try {
            create(path);
            ADD_FAILURE() << "created in a folder that does not exist";
        } catch (const Error& error) {
            EXPECT_EQ(error.primary_code(), codes::CantOpen);
        }
        EXPECT_TRUE(folder.entries().isEmpty()) << folder.entries().join(u' ').toStdString();
    }
}

TEST(CreateDatabase, TwoProcessesCreatingAtOnceGiveOneCompleteFile)
{
    TempFolder folder;
    const QString path = folder.path(u"cvd.mdb"_s);
    int gate[2];
    ASSERT_EQ(::pipe(gate), 0);
    pid_t children[2];
    for (pid_t& child : children) {
        child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::close(gate[1]);
            char go;
            const bool released = ::read(gate[0], &go, 1) == 0; // the parent closed its end: start
            int status = 1;
            try {
                create_global_database(path);
                status = released ? 0 : 2;
            } catch (...) {
                status = 3;
            }
            ::_exit(status);
        }
    }
    ::close(gate[0]);
    ::close(gate[1]);
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    EXPECT_EQ(folder.entries(), QStringList{u"cvd.mdb"_s});
    Database db = Database::open(path);
    EXPECT_EQ(classify(db), FileKind::Global);
    EXPECT_EQ(query_value(db, u"SELECT count(*) FROM cv_presets"_s), u"100"_s);
    EXPECT_EQ(query_value(db, u"SELECT count(*) FROM cv_counters"_s), u"1"_s);
}

struct KindCase
{
    const char* name;
    Creator start; // nullptr: an empty SQLite file
    QStringList statements;
    FileKind kind;
    std::optional<int> version;
};

TEST(Classify, TheTablesPresentDecideWhatAFileIs)
{
    const KindCase cases[] = {
        {"global", create_global_database, {}, FileKind::Global, 501},
        {"user", create_user_database, {}, FileKind::User, 500},
        {"empty", nullptr, {}, FileKind::Foreign, std::nullopt},
        {"unrelated", nullptr, {u"CREATE TABLE accounts (id INTEGER, owner TEXT)"_s}, FileKind::Foreign, std::nullopt},
        {"oldest layout",
         nullptr,
         {u"CREATE TABLE cv_settings (cv_dbversion INTEGER, cv_other TEXT)"_s,
          u"INSERT INTO cv_settings VALUES (400, 'x')"_s},
         FileKind::OldLayout,
         400},
        {"oldest layout, all tables, text version",
         create_global_database,
         {u"ALTER TABLE cv_settings ADD COLUMN cv_dbversion TEXT"_s, u"DELETE FROM cv_settings"_s,
          u"INSERT INTO cv_settings (cv_dbversion) VALUES (' 300 ')"_s},
         FileKind::OldLayout,
         300},
        {"oldest layout without a row",
         nullptr,
         {u"CREATE TABLE cv_settings (cv_dbversion INTEGER)"_s},
         FileKind::OldLayout,
         std::nullopt},
        {"a column only like the old one",
         create_global_database,
         {u"ALTER TABLE cv_settings ADD COLUMN cv_dbversion_old INTEGER"_s},
         FileKind::Global,
         501},
        {"global missing a table", create_global_database, {u"DROP TABLE cv_oncalltable"_s}, FileKind::Foreign, 501},
        {"table names in capitals",
         nullptr,
         {u"CREATE TABLE CV_SETTINGS (cv_id INTEGER PRIMARY KEY, cv_category TEXT, cv_name TEXT, cv_value TEXT)"_s,
          u"CREATE TABLE Cv_Presets (x)"_s,
          u"INSERT INTO CV_SETTINGS (cv_category, cv_name, cv_value) VALUES ('database', 'version', '500')"_s},
         FileKind::User,
         500},
        {"user with a queue", create_user_database, {u"CREATE TABLE cv_messages (x)"_s}, FileKind::Foreign, 500},
        {"user without presets", create_user_database, {u"DROP TABLE cv_presets"_s}, FileKind::Foreign, 500},
        {"later version row wins",
         create_global_database,
         {u"INSERT INTO cv_settings (cv_category, cv_name, cv_value) VALUES ('database', 'version', '502')"_s},
         FileKind::Global,
         502},
        {"version not a number",
         create_global_database,
         {u"UPDATE cv_settings SET cv_value = '5.01a' WHERE cv_name = 'version'"_s},
         FileKind::Global,
         std::nullopt},
        {"version null",
         create_global_database,
         {u"UPDATE cv_settings SET cv_value = NULL WHERE cv_name = 'version'"_s},
         FileKind::Global,
         std::nullopt},
        {"no version row",
         create_global_database,
         {u"DELETE FROM cv_settings WHERE cv_category = 'database'"_s},
         FileKind::Global,
         std::nullopt},
        {"settings without the usual columns",
         nullptr,
         {u"CREATE TABLE cv_settings (k TEXT, v TEXT)"_s, u"CREATE TABLE cv_presets (x)"_s},
         FileKind::User,
         std::nullopt},
    };
    for (const KindCase& c : cases) {
        SCOPED_TRACE(c.name);
        TempFolder folder;
        const QString path = folder.path(u"cvd.mdb"_s);
        if (c.start) {
            c.start(path);
        }
        {
            Database db = Database::open(path, Database::OpenMode::CreateIfMissing);
            for (const QString& sql : c.statements) {
                db.exec(sql);
            }
        }
        const QByteArray before = read_bytes(path);
        {
            Database db = Database::open(path);
            EXPECT_EQ(classify(db), c.kind);
            EXPECT_EQ(stored_version(db), c.version);
        }
        EXPECT_EQ(read_bytes(path), before) << "reading wrote to the file";
    }
}

} // namespace
} // namespace cvd::store
