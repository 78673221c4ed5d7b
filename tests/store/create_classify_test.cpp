#include "store/database.h"
#include "store/maintenance.h"
#include "store/schema.h"
#include "store_test_support.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::store {
namespace {

using testing::query_rows;
using testing::query_value;
using testing::read_bytes;
using testing::TempFolder;
using testing::write_bytes;

using Creator = void (*)(const QString&);

TEST(CreateDatabase, ANewFileIsCompleteWithItsDefaultRowsAndLeavesNothingBeside)
{
    const struct
    {
        Creator create;
        FileKind kind;
        int version;
        QList<std::pair<QString, qint64>> counts;
        int named_presets;
    } cases[] = {
        {create_global_database,
         FileKind::Global,
         501,
         {{u"cv_messages"_s, 0},
          {u"cv_recipients"_s, 0},
          {u"cv_carriers"_s, 0},
          {u"cv_settings"_s, 79},
          {u"cv_counters"_s, 1},
          {u"cv_groups"_s, 0},
          {u"cv_oncalltable"_s, 0},
          {u"cv_presets"_s, 100}},
         5},
        {create_user_database, FileKind::User, 500, {{u"cv_settings"_s, 10}, {u"cv_presets"_s, 100}}, 0},
    };
    for (const auto& c : cases) {
        TempFolder folder;
        const QString path = folder.path(u"cvd.mdb"_s);
        c.create(path);
        EXPECT_EQ(folder.entries(), QStringList{u"cvd.mdb"_s});
        Database db = Database::open(path);
        EXPECT_EQ(classify(db), c.kind);
        EXPECT_EQ(stored_version(db), c.version);
        EXPECT_EQ(query_value(db, u"PRAGMA journal_mode"_s), u"wal"_s);
        EXPECT_EQ(integrity_check(db), QStringList{u"ok"_s});
        EXPECT_EQ(table_row_counts(db), c.counts);
        // Presets 1 to 100 in order with empty texts, not nulls ("<null>" would show).
        const QList<QStringList> presets = query_rows(
            db, u"SELECT cv_index, cv_description, cv_recipient, cv_message FROM cv_presets ORDER BY cv_id"_s);
        for (int i = 0; i < presets.size(); ++i) {
            const QString description = i < c.named_presets ? u"Prog %1"_s.arg(i + 1) : QString();
            EXPECT_EQ(presets[i], (QStringList{QString::number(i + 1), description, QString(), QString()})) << i;
        }
        // Settings are numbered from 1 in the order written, the version row first.
        EXPECT_EQ(query_value(db, u"SELECT count(*) = max(cv_id) FROM cv_settings"_s), u"1"_s);
        EXPECT_EQ(query_rows(db, u"SELECT cv_category, cv_name, cv_value FROM cv_settings WHERE cv_id = 1"_s),
                  (QList<QStringList>{{u"database"_s, u"version"_s, QString::number(c.version)}}));
    }
}

TEST(CreateDatabase, GlobalSettingsComeByCategoryAndAreFoundWhateverTheCaseOfTheKey)
{
    TempFolder folder;
    create_global_database(folder.path(u"cvd.mdb"_s));
    Database db = Database::open(folder.path(u"cvd.mdb"_s));
    EXPECT_EQ(query_rows(db, u"SELECT cv_category FROM cv_settings GROUP BY cv_category ORDER BY min(cv_id)"_s),
              (QList<QStringList>{
                  {u"database"_s}, {u"connector"_s}, {u"logging"_s}, {u"security"_s}, {u"display"_s}, {u"level"_s}}));
    QList<QStringList> switches;
    for (const auto& [name, value] : level_switch_defaults()) {
        switches.append({name, value});
    }
    EXPECT_EQ(query_rows(db, u"SELECT cv_name, cv_value FROM cv_settings WHERE cv_category = 'level' ORDER BY cv_id"_s),
              switches);
    EXPECT_EQ(switches.size(), 47);

    Statement find = db.prepare(u"SELECT cv_value FROM cv_settings WHERE cv_category = ?1 AND cv_name = ?2"_s);
    find.bind(1, u"Connector"_s).bind(2, u"SENDER_EMAIL"_s);
    ASSERT_TRUE(find.step());
    EXPECT_EQ(find.text(0), u"%LoginName%@example.com"_s);
    EXPECT_FALSE(find.step());
}

TEST(CreateDatabase, AnExistingFileIsNeverOverwrittenAndAFailedCreationLeavesNoFile)
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
        Database::open(path).exec(u"DELETE FROM cv_presets"_s);
        create(path);
        Database db = Database::open(path);
        EXPECT_EQ(query_value(db, u"SELECT count(*) FROM cv_presets"_s), u"0"_s);

        TempFolder empty;
        try {
            create(empty.path(u"missing/cvd.mdb"_s));
            ADD_FAILURE() << "created in a folder that does not exist";
        } catch (const Error& error) {
            EXPECT_EQ(error.primary_code(), codes::CantOpen);
        }
        EXPECT_TRUE(empty.entries().isEmpty()) << empty.entries().join(u' ').toStdString();
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

TEST(CreateDatabase, TwoProcessesCreatingAtOnceGiveOneCompleteFile)
{
    TempFolder folder;
    const QString path = folder.path(u"cvd.mdb"_s);
    EXPECT_TRUE(testing::run_racing_children(2, [&](int) {
        try {
            create_global_database(path);
            return 0;
        } catch (...) {
            return 3;
        }
    }));
    EXPECT_EQ(folder.entries(), QStringList{u"cvd.mdb"_s});
    Database db = Database::open(path);
    EXPECT_EQ(classify(db), FileKind::Global);
    EXPECT_EQ(query_value(db, u"SELECT count(*) FROM cv_presets"_s), u"100"_s);
    EXPECT_EQ(query_value(db, u"SELECT count(*) FROM cv_counters"_s), u"1"_s);
}

struct KindCase
{
    const char* name;
    Creator start;      // nullptr: an empty SQLite file
    QString statements; // separated by "; "
    FileKind kind;
    std::optional<int> version;
};

TEST(Classify, TheTablesPresentDecideWhatAFileIs)
{
    const KindCase cases[] = {
        {"global", create_global_database, QString(), FileKind::Global, 501},
        {"user", create_user_database, QString(), FileKind::User, 500},
        {"empty", nullptr, QString(), FileKind::Foreign, std::nullopt},
        {"unrelated", nullptr, u"CREATE TABLE accounts (id INTEGER, owner TEXT)"_s, FileKind::Foreign, std::nullopt},
        {"oldest layout", nullptr,
         u"CREATE TABLE cv_settings (cv_dbversion INTEGER, cv_other TEXT); INSERT INTO cv_settings VALUES (400, 'x')"_s,
         FileKind::OldLayout, 400},
        {"oldest layout, all tables, text version", create_global_database,
         u"ALTER TABLE cv_settings ADD COLUMN cv_dbversion TEXT; DELETE FROM cv_settings; "
         "INSERT INTO cv_settings (cv_dbversion) VALUES (' 300 ')"_s,
         FileKind::OldLayout, 300},
        {"oldest layout without a row", nullptr, u"CREATE TABLE cv_settings (cv_dbversion INTEGER)"_s,
         FileKind::OldLayout, std::nullopt},
        {"a column only like the old one", create_global_database,
         u"ALTER TABLE cv_settings ADD COLUMN cv_dbversion_old INTEGER"_s, FileKind::Global, 501},
        {"global missing a table", create_global_database, u"DROP TABLE cv_oncalltable"_s, FileKind::Foreign, 501},
        {"table names in capitals", nullptr,
         u"CREATE TABLE CV_SETTINGS (cv_id INTEGER PRIMARY KEY, cv_category TEXT, cv_name TEXT, cv_value TEXT); "
         "CREATE TABLE Cv_Presets (x); "
         "INSERT INTO CV_SETTINGS (cv_category, cv_name, cv_value) VALUES ('database', 'version', '500')"_s,
         FileKind::User, 500},
        {"user with a queue", create_user_database, u"CREATE TABLE cv_messages (x)"_s, FileKind::Foreign, 500},
        {"user without presets", create_user_database, u"DROP TABLE cv_presets"_s, FileKind::Foreign, 500},
        {"later version row wins", create_global_database,
         u"INSERT INTO cv_settings (cv_category, cv_name, cv_value) VALUES ('database', 'version', '502')"_s,
         FileKind::Global, 502},
        {"version not a number", create_global_database,
         u"UPDATE cv_settings SET cv_value = '5.01a' WHERE cv_name = 'version'"_s, FileKind::Global, std::nullopt},
        {"version null", create_global_database, u"UPDATE cv_settings SET cv_value = NULL WHERE cv_name = 'version'"_s,
         FileKind::Global, std::nullopt},
        {"no version row", create_global_database, u"DELETE FROM cv_settings WHERE cv_category = 'database'"_s,
         FileKind::Global, std::nullopt},
        {"settings without the usual columns", nullptr,
         u"CREATE TABLE cv_settings (k TEXT, v TEXT); CREATE TABLE cv_presets (x)"_s, FileKind::User, std::nullopt},
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
            for (const QString& sql : c.statements.split(u"; "_s, Qt::SkipEmptyParts)) {
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
