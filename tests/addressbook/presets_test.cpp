#include "addressbook/presets.h"
#include "core/app_state.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "store/database.h"
#include "support/test_environment.h"

#include <QDir>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {
namespace {

struct StoredRow
{
    QString description;
    QString recipient_column;
    QString message_column;
};

class PresetsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        state = env.make_state();
        state->global_db_folder = env.path(u"g/"_s);
        state->user_db_folder = env.path(u"u/"_s);
        QDir().mkpath(state->global_db_folder);
        QDir().mkpath(state->user_db_folder);
        load_settings(*state); // creates both databases with their default rows
    }

    void set_user_presets(bool on) { state->settings.put_setting(u"level"_s, u"user_presets"_s, on ? -1 : 0); }

    // Opens the file on a connection of its own, so the check does not go through the code under test.
    static StoredRow stored(const QString& path, int index)
    {
        store::Database db = store::Database::open(path);
        store::Statement select =
            db.prepare(u"SELECT cv_description, cv_recipient, cv_message FROM cv_presets WHERE cv_index = ?1"_s);
        select.bind(1, index);
        EXPECT_TRUE(select.step()) << "no row " << index;
        return {select.text(0).value_or(u"<null>"_s), select.text(1).value_or(u"<null>"_s),
                select.text(2).value_or(u"<null>"_s)};
    }

    static void store_row(const QString& path, int index, const StoredRow& row)
    {
        store::Database db = store::Database::open(path);
        store::Statement update = db.prepare(u"UPDATE cv_presets SET cv_description = ?1, cv_recipient = ?2, "
                                             "cv_message = ?3 WHERE cv_index = ?4"_s);
        update.bind(1, row.description).bind(2, row.recipient_column).bind(3, row.message_column).bind(4, index);
        update.exec();
    }

    QString global_path() const { return global_db_path(*state); }
    QString user_path() const { return user_db_path(*state); }

    testing::TestEnvironment env;
    std::unique_ptr<AppState> state;
};

TEST_F(PresetsTest, MessageAndRecipientLiveInEachOthersColumn)
{
    PresetTable table;
    load_presets(*state, table);
    table.at(7) = {u"7"_s, u"Boiler"_s, u"Boiler room alarm, it's \"hot\""_s, u"bob"_s};
    table.at(100) = {u"100"_s, u"Last"_s, u"Final text"_s, QString()};
    save_presets(*state, table);

    const StoredRow seven = stored(global_path(), 7);
    EXPECT_EQ(seven.description, u"Boiler"_s);
    EXPECT_EQ(seven.recipient_column, u"Boiler room alarm, it's \"hot\""_s);
    EXPECT_EQ(seven.message_column, u"bob"_s);
    EXPECT_EQ(stored(global_path(), 100).recipient_column, u"Final text"_s);

    PresetTable reread;
    load_presets(*state, reread);
    EXPECT_EQ(reread, table);

    // A row written by another program in the stored layout, with a null column, reads into the same fields.
    store::Database::open(global_path())
        .exec(u"UPDATE cv_presets SET cv_description = 'Desk', cv_recipient = 'Call the desk', cv_message = NULL "
              "WHERE cv_index = 12"_s);
    load_presets(*state, reread);
    EXPECT_EQ(reread.at(12), (Preset{u"12"_s, u"Desk"_s, u"Call the desk"_s, QString()}));
    EXPECT_EQ(reread.at(1).description, u"Prog 1"_s);
}

TEST_F(PresetsTest, SwitchChoosesTheDatabase)
{
    store_row(global_path(), 1, {u"Global one"_s, u"global text"_s, u""_s});
    store_row(user_path(), 1, {u"Mine"_s, u"my text"_s, u"carol"_s});

    struct Case
    {
        bool user_presets;
        QString written_path;
        QString other_path;
        QString loaded_description;
    };
    const Case cases[] = {
        {false, global_path(), user_path(), u"Global one"_s},
        {true, user_path(), global_path(), u"Mine"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.user_presets ? "user presets" : "global presets");
        set_user_presets(c.user_presets);
        PresetTable table;
        load_presets(*state, table);
        EXPECT_EQ(table.at(1).description, c.loaded_description);
        EXPECT_FALSE(state->user_db.is_open());

        const StoredRow other_before = stored(c.other_path, 3);
        table.at(3) = {u"3"_s, u"Saved"_s, u"saved text"_s, u"ops"_s};
        save_presets(*state, table);
        EXPECT_FALSE(state->user_db.is_open());
        const StoredRow written = stored(c.written_path, 3);
        EXPECT_EQ(written.description, u"Saved"_s);
        EXPECT_EQ(written.recipient_column, u"saved text"_s);
        EXPECT_EQ(written.message_column, u"ops"_s);
        const StoredRow other_after = stored(c.other_path, 3);
        EXPECT_EQ(other_after.description, other_before.description);
        EXPECT_EQ(other_after.recipient_column, other_before.recipient_column);
        store_row(c.written_path, 3, {u""_s, u""_s, u""_s});
    }
}

TEST_F(PresetsTest, UnusedUserTableIsSeededFromTheGlobalOne)
{
    store_row(global_path(), 42, {u"Fire"_s, u"Fire drill at noon"_s, u"ops"_s});
    // Only the first row decides: a user table with a later row described still counts as unused.
    store_row(user_path(), 2, {u"Stray"_s, u"stray text"_s, u""_s});

    set_user_presets(false);
    PresetTable table;
    load_presets(*state, table);
    EXPECT_EQ(stored(user_path(), 1).description, u""_s) << "no seeding while the presets are global";

    set_user_presets(true);
    load_presets(*state, table);
    EXPECT_EQ(table.at(1).description, u"Prog 1"_s);
    EXPECT_EQ(table.at(2).description, u"Prog 2"_s);
    EXPECT_EQ(table.at(42), (Preset{u"42"_s, u"Fire"_s, u"Fire drill at noon"_s, u"ops"_s}));
    EXPECT_FALSE(state->user_db.is_open());

    const StoredRow seeded = stored(user_path(), 42);
    EXPECT_EQ(seeded.description, u"Fire"_s);
    EXPECT_EQ(seeded.recipient_column, u"Fire drill at noon"_s);
    EXPECT_EQ(seeded.message_column, u"ops"_s);
    EXPECT_EQ(stored(user_path(), 2).description, u"Prog 2"_s);
    EXPECT_EQ(stored(user_path(), 5).description, u"Prog 5"_s);

    // From now on the user's table is in use: later global changes no longer reach this user.
    store_row(global_path(), 42, {u"Changed"_s, u"changed"_s, u""_s});
    PresetTable again;
    load_presets(*state, again);
    EXPECT_EQ(again.at(42).description, u"Fire"_s);
}

TEST_F(PresetsTest, FailedSaveLeavesTheStoredRows)
{
    PresetTable table;
    load_presets(*state, table);
    QList<StoredRow> before;
    for (int index = 1; index <= kPresetCount; ++index) {
        before.append(stored(global_path(), index));
    }

    store::Database::open(global_path())
        .exec(u"CREATE TRIGGER refuse_fifty BEFORE UPDATE ON cv_presets WHEN NEW.cv_index = 50 "
              "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s);
    for (int index = 1; index <= kPresetCount; ++index) {
        table.at(index) = {QString::number(index), u"New %1"_s.arg(index), u"text %1"_s.arg(index), u"bob"_s};
    }
    EXPECT_THROW(save_presets(*state, table, u"Procedure: preset_form apply"_s), ProgramHalted);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_TRUE(env.prompter.boxes.front().text.contains(u"Procedure: preset_form apply"_s));

    for (int index = 1; index <= kPresetCount; ++index) {
        const StoredRow row = stored(global_path(), index);
        const StoredRow& old = before.at(index - 1);
        EXPECT_EQ(row.description, old.description) << index;
        EXPECT_EQ(row.recipient_column, old.recipient_column) << index;
        EXPECT_EQ(row.message_column, old.message_column) << index;
    }
    EXPECT_FALSE(state->global_db.in_transaction());
}

struct CleanCase
{
    QString typed;
    QString stored;
};

TEST(PresetText, ControlCharactersBecomeBlanksAndRunsAreThinned)
{
    const CleanCase cases[] = {
        {u""_s, u""_s},
        {u"Plain text."_s, u"Plain text."_s},
        {u"a b"_s, u"a b"_s},
        {u"line one\r\nline two"_s, u"line one line two"_s}, // CR LF: two blanks thinned to one
        {u"a\tb\nc"_s, u"a b c"_s},
        {u"a  b"_s, u"a b"_s},
        {u"a   b"_s, u"a  b"_s},    // a run only halves
        {u"a    b"_s, u"a  b"_s},   // four give two
        {u"a     b"_s, u"a   b"_s}, // five give three
        {u"  x"_s, u"  x"_s},       // the pair at position 1 is never thinned
        {u"   x"_s, u"  x"_s},
        {u" \tx"_s, u"  x"_s},
        {u"x  "_s, u"x "_s},
        {u"x   "_s, u"x  "_s}, // the last pair lies beyond the shortened text
        {u"\r\n\r\n"_s, u"   "_s},
        {u"a\x7f"_s + u"b"_s, u"a b"_s},
        {u"a\x1f"_s + u"b"_s, u"a b"_s},
        {u"Zo\u00eb  Ann"_s, u"Zo  Ann"_s}, // from code 127 up every character is a blank
        {u"caf\u00e9"_s, u"caf "_s},
        {u"~}|"_s, u"~}|"_s}, // code 126 stays
    };
    for (const CleanCase& c : cases) {
        EXPECT_EQ(clean_preset_text(c.typed), c.stored) << "typed '" << c.typed.toStdString() << "'";
    }
}

struct SortCase
{
    PresetSortOrder order;
    QString name;
    QList<int> numbers;
};

TEST(PresetSort, EachOrderSortsOnItsColumnsAndNamesItself)
{
    const QList<PresetListRow> rows = {
        {3, u"alpha"_s, u"bob"_s, u"Mike"_s},
        {10, u""_s, u"Carol"_s, u"mike"_s},
        {1, u"beta"_s, u""_s, u"Zulu"_s},
        {2, u"Alpha"_s, u"Carol"_s, u"alpha"_s},
    };
    const SortCase cases[] = {
        {PresetSortOrder::IndexAscending, u"SortByIndexAscending"_s, {1, 2, 3, 10}}, // as numbers, not as text
        {PresetSortOrder::IndexDescending, u"SortByIndexDescending"_s, {10, 3, 2, 1}},
        {PresetSortOrder::DescriptionAscending, u"SortByDescriptionAscending"_s, {10, 2, 3, 1}},
        {PresetSortOrder::DescriptionDescending, u"SortByDescriptionDescending"_s, {1, 2, 3, 10}},
        {PresetSortOrder::RecipientAscending, u"SortByRecipientAscending"_s, {1, 3, 2, 10}},
        {PresetSortOrder::RecipientDescending, u"SortByRecipientDescending"_s, {2, 10, 3, 1}},
        {PresetSortOrder::MessageAscending, u"SortByMessageAscending"_s, {2, 3, 10, 1}},
        {PresetSortOrder::MessageDescending, u"SortByMessageDescending"_s, {1, 3, 10, 2}},
    };
    for (const SortCase& c : cases) {
        SCOPED_TRACE(c.name.toStdString());
        QList<PresetListRow> sorted = rows;
        sort_preset_rows(c.order, sorted);
        QList<int> numbers;
        for (const PresetListRow& row : sorted) {
            numbers.append(row.number);
        }
        EXPECT_EQ(numbers, c.numbers);
        EXPECT_EQ(sort_order_name(c.order), c.name);
        EXPECT_EQ(sort_order_from_name(c.name), c.order);
    }
    EXPECT_EQ(sort_order_from_name(u"SortByColour"_s), std::nullopt);
    EXPECT_EQ(sort_order_from_name(QString()), std::nullopt);
}

TEST(PresetSort, ColumnHeadTogglesBetweenDescendingAndAscending)
{
    struct Click
    {
        PresetSortOrder current;
        PresetColumn column;
        PresetSortOrder next;
    };
    const Click clicks[] = {
        {PresetSortOrder::DescriptionAscending, PresetColumn::Description, PresetSortOrder::DescriptionDescending},
        {PresetSortOrder::DescriptionDescending, PresetColumn::Description, PresetSortOrder::DescriptionAscending},
        {PresetSortOrder::IndexAscending, PresetColumn::Number, PresetSortOrder::IndexDescending},
        {PresetSortOrder::IndexDescending, PresetColumn::Number, PresetSortOrder::IndexAscending},
        {PresetSortOrder::IndexAscending, PresetColumn::Message, PresetSortOrder::MessageAscending},
        {PresetSortOrder::MessageDescending, PresetColumn::Recipient, PresetSortOrder::RecipientAscending},
        {PresetSortOrder::RecipientAscending, PresetColumn::Recipient, PresetSortOrder::RecipientDescending},
    };
    for (const Click& click : clicks) {
        EXPECT_EQ(order_after_column_click(click.current, click.column), click.next)
            << sort_order_name(click.current).toStdString() << " clicked on column " << static_cast<int>(click.column);
    }
}

} // namespace
} // namespace cvd::addressbook
