#include "addressbook/presets.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "store/database.h"
#include "support/database_test.h"
#include "support/printers.h"

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {
namespace {

// Preset rows as stored: description, cv_recipient, cv_message of each; a null reads "<null>".
using StoredRow = QStringList;

class PresetsTest : public testing::DatabaseTest
{
protected:
    PresetsTest() : DatabaseTest(Start::LoadSettings) {} // creates both databases with their default rows

    void set_user_presets(bool on) { state->settings.put_setting({u"level", u"user_presets"}, on ? -1 : 0); }

    // The rows first to last, opened on a connection of their own, so the check does not go through the code
    // under test.
    static StoredRow stored(const QString& path, int first, int last = 0)
    {
        store::Database db = store::Database::open(path);
        store::Statement select = db.prepare(u"SELECT cv_description, cv_recipient, cv_message FROM cv_presets "
                                             "WHERE cv_index BETWEEN ?1 AND ?2 ORDER BY cv_index"_s);
        select.bind(1, first).bind(2, qMax(first, last));
        StoredRow texts;
        while (select.step()) {
            texts << select.text(0).value_or(u"<null>"_s) << select.text(1).value_or(u"<null>"_s)
                  << select.text(2).value_or(u"<null>"_s);
        }
        EXPECT_FALSE(texts.isEmpty()) << "no row " << first;
        return texts;
    }

    static void store_row(const QString& path, int index, const StoredRow& row)
    {
        store::Database db = store::Database::open(path);
        store::Statement update = db.prepare(u"UPDATE cv_presets SET cv_description = ?1, cv_recipient = ?2, "
                                             "cv_message = ?3 WHERE cv_index = ?4"_s);
        update.bind(1, row.at(0)).bind(2, row.at(1)).bind(3, row.at(2)).bind(4, index);
        update.exec();
    }

    QString global_path() const { return global_db_path(*state); }
    QString user_path() const { return user_db_path(*state); }
};

TEST_F(PresetsTest, MessageAndRecipientLiveInEachOthersColumn)
{
    PresetTable table;
    load_presets(*state, table);
    table.at(7) = {u"7"_s, u"Boiler"_s, u"Boiler room alarm, it's \"hot\""_s, u"bob"_s};
    table.at(100) = {u"100"_s, u"Last"_s, u"Final text"_s, QString()};
    save_presets(*state, table);

    EXPECT_EQ(stored(global_path(), 7), (StoredRow{u"Boiler"_s, u"Boiler room alarm, it's \"hot\""_s, u"bob"_s}));
    EXPECT_EQ(stored(global_path(), 100), (StoredRow{u"Last"_s, u"Final text"_s, u""_s}));

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

    for (const bool user_presets : {false, true}) {
        SCOPED_TRACE(user_presets ? "user presets" : "global presets");
        const QString written_path = user_presets ? user_path() : global_path();
        const QString other_path = user_presets ? global_path() : user_path();
        set_user_presets(user_presets);
        PresetTable table;
        load_presets(*state, table);
        EXPECT_EQ(table.at(1).description, user_presets ? u"Mine"_s : u"Global one"_s);
        EXPECT_FALSE(state->user_db.is_open());

        const StoredRow other_before = stored(other_path, 3);
        table.at(3) = {u"3"_s, u"Saved"_s, u"saved text"_s, u"ops"_s};
        save_presets(*state, table);
        EXPECT_FALSE(state->user_db.is_open());
        EXPECT_EQ(stored(written_path, 3), (StoredRow{u"Saved"_s, u"saved text"_s, u"ops"_s}));
        EXPECT_EQ(stored(other_path, 3), other_before);
        store_row(written_path, 3, {u""_s, u""_s, u""_s});
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
    EXPECT_EQ(stored(user_path(), 1).value(0), u""_s) << "no seeding while the presets are global";

    set_user_presets(true);
    load_presets(*state, table);
    EXPECT_EQ(table.at(1).description, u"Prog 1"_s);
    EXPECT_EQ(table.at(2).description, u"Prog 2"_s);
    EXPECT_EQ(table.at(42), (Preset{u"42"_s, u"Fire"_s, u"Fire drill at noon"_s, u"ops"_s}));
    EXPECT_FALSE(state->user_db.is_open());

    EXPECT_EQ(stored(user_path(), 42), (StoredRow{u"Fire"_s, u"Fire drill at noon"_s, u"ops"_s}));
    EXPECT_EQ(stored(user_path(), 2).value(0), u"Prog 2"_s);
    EXPECT_EQ(stored(user_path(), 5).value(0), u"Prog 5"_s);

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
    const StoredRow before = stored(global_path(), 1, kPresetCount);

    store::Database::open(global_path())
        .exec(u"CREATE TRIGGER refuse_fifty BEFORE UPDATE ON cv_presets WHEN NEW.cv_index = 50 "
              "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s);
    for (int index = 1; index <= kPresetCount; ++index) {
        table.at(index) = {QString::number(index), u"New %1"_s.arg(index), u"text %1"_s.arg(index), u"bob"_s};
    }
    EXPECT_THROW(save_presets(*state, table, u"Procedure: preset_form apply"_s), ProgramHalted);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_TRUE(env.prompter.boxes.front().text.contains(u"Procedure: preset_form apply"_s));

    EXPECT_EQ(stored(global_path(), 1, kPresetCount), before);
    EXPECT_FALSE(state->global_db.in_transaction());
}

TEST_F(PresetsTest, RecipientChoicesAndLabelsCarryTheirMarks)
{
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_ad_hoc) VALUES "
              "('zed', 'Zed Ward', 0, 0), ('ops', 'Operations', -1, 0), ('fx', 'Fax', 0, -1), ('nul', ' ', 0, NULL)"_s);
    // Ad hoc recipients are not offered; a null flag is no ad hoc mark.
    EXPECT_EQ(
        preset_recipient_choices(*state, u"test"_s),
        (QList<PresetRecipientChoice>{
            {u"(none)"_s, u""_s}, {u"(G) Operations"_s, u"ops"_s}, {u"nul"_s, u"nul"_s}, {u"Zed Ward"_s, u"zed"_s}}));

    state->settings.put_setting({u"display", u"group_label_after"}, -1);
    PresetTable table;
    table.at(2).recipient = u"OPS"_s;
    table.at(3).recipient = u"gone"_s;
    const QList<PresetListRow> rows = preset_list_rows(*state, table, u"test"_s);
    ASSERT_EQ(rows.size(), kPresetCount);
    EXPECT_EQ(rows.at(1).number, 2);
    EXPECT_EQ(rows.at(1).recipient_label, u"Operations (G)"_s);
    EXPECT_EQ(rows.at(2).recipient_label, u""_s);
    EXPECT_EQ(preset_recipient_label(*state, u"fx"_s, u"test"_s), u"Fax (A)"_s);
}

TEST(PresetText, ControlCharactersBecomeBlanksAndRunsAreThinned)
{
    // Each list holds pairs of the text typed and the text stored.
    const QStringList cases[] = {
        {u""_s, u""_s, u"Plain text."_s, u"Plain text."_s, u"a b"_s, u"a b"_s, u"~}|"_s, u"~}|"_s}, // code 126 stays
        // CR LF gives two blanks, thinned to one.
        {u"line one\r\nline two"_s, u"line one line two"_s, u"a\tb\nc"_s, u"a b c"_s, u"\r\n\r\n"_s, u"   "_s,
         u"a\x7f"_s + u"b"_s, u"a b"_s, u"a\x1f"_s + u"b"_s, u"a b"_s},
        // A run only halves: four give two, five three.
        {u"a  b"_s, u"a b"_s, u"a   b"_s, u"a  b"_s, u"a    b"_s, u"a  b"_s, u"a     b"_s, u"a   b"_s},
        // The pair at position 1 is never thinned; the last pair lies beyond the shortened text.
        {u"  x"_s, u"  x"_s, u"   x"_s, u"  x"_s, u" \tx"_s, u"  x"_s, u"x  "_s, u"x "_s, u"x   "_s, u"x  "_s},
        // From code 127 up every character is a blank.
        {u"Zo\u00eb  Ann"_s, u"Zo  Ann"_s, u"caf\u00e9"_s, u"caf "_s},
    };
    for (const QStringList& pairs : cases) {
        for (qsizetype i = 0; i + 1 < pairs.size(); i += 2) {
            EXPECT_EQ(clean_preset_text(pairs[i]), pairs[i + 1]) << "typed '" << pairs[i].toStdString() << "'";
        }
    }
}

TEST(PresetSort, EachOrderSortsOnItsColumnsAndNamesItself)
{
    const QList<PresetListRow> rows = {
        {3, u"alpha"_s, u"bob"_s, u"Mike"_s},
        {10, u""_s, u"Carol"_s, u"mike"_s},
        {1, u"beta"_s, u""_s, u"Zulu"_s},
        {2, u"Alpha"_s, u"Carol"_s, u"alpha"_s},
    };
    const struct
    {
        PresetSortOrder order;
        QString name;
        QList<int> numbers;
    } cases[] = {
        {PresetSortOrder::IndexAscending, u"SortByIndexAscending"_s, {1, 2, 3, 10}}, // as numbers, not as text
        {PresetSortOrder::IndexDescending, u"SortByIndexDescending"_s, {10, 3, 2, 1}},
        {PresetSortOrder::DescriptionAscending, u"SortByDescriptionAscending"_s, {10, 2, 3, 1}},
        {PresetSortOrder::DescriptionDescending, u"SortByDescriptionDescending"_s, {1, 2, 3, 10}},
        {PresetSortOrder::RecipientAscending, u"SortByRecipientAscending"_s, {1, 3, 2, 10}},
        {PresetSortOrder::RecipientDescending, u"SortByRecipientDescending"_s, {2, 10, 3, 1}},
        {PresetSortOrder::MessageAscending, u"SortByMessageAscending"_s, {2, 3, 10, 1}},
        {PresetSortOrder::MessageDescending, u"SortByMessageDescending"_s, {1, 3, 10, 2}},
    };
    for (const auto& c : cases) {
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
    const struct
    {
        PresetSortOrder current;
        PresetColumn column;
        PresetSortOrder next;
    } clicks[] = {
        {PresetSortOrder::DescriptionAscending, PresetColumn::Description, PresetSortOrder::DescriptionDescending},
        {PresetSortOrder::DescriptionDescending, PresetColumn::Description, PresetSortOrder::DescriptionAscending},
        {PresetSortOrder::IndexAscending, PresetColumn::Number, PresetSortOrder::IndexDescending},
        {PresetSortOrder::IndexDescending, PresetColumn::Number, PresetSortOrder::IndexAscending},
        {PresetSortOrder::IndexAscending, PresetColumn::Message, PresetSortOrder::MessageAscending},
        {PresetSortOrder::MessageDescending, PresetColumn::Recipient, PresetSortOrder::RecipientAscending},
        {PresetSortOrder::RecipientAscending, PresetColumn::Recipient, PresetSortOrder::RecipientDescending},
    };
    for (const auto& click : clicks) {
        EXPECT_EQ(order_after_column_click(click.current, click.column), click.next)
            << sort_order_name(click.current).toStdString() << " clicked on column " << static_cast<int>(click.column);
    }
}

} // namespace
} // namespace cvd::addressbook
