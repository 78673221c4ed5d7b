#include "addressbook/groups.h"

#include "core/app_state.h"
#include "core/error_path.h"
#include "core/text.h"
#include "store/database.h"
#include "store/tables.h"

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

namespace {

const QString kAddProcedure = u"Procedure: add_group command1"_s;
const QString kEditLoadProcedure = u"Procedure: edit_group load"_s;
const QString kEditProcedure = u"Procedure: edit_group command11"_s;
const QString kDeleteProcedure = u"Procedure: list_groups load"_s;
const QString kMaintLoadProcedure = u"Procedure: group_maint load"_s;
const QString kMaintProcedure = u"Procedure: group_maint command3"_s;
const QString kAddLoadProcedure = u"Procedure: add_group load"_s;
const QString kListProcedure = u"Procedure: list_groups activate"_s;
const QString kMembersProcedure = u"Procedure: frmGroupMembers load"_s;

namespace recipients = store::tables::recipients;
namespace groups = store::tables::groups;
namespace on_call = store::tables::on_call;

QString where_name(store::tables::Name table, store::tables::Name column)
{
    return table % u" WHERE ("_s % column % u" = ?1)"_s;
}

const QString kMarkAfter = u" (G)"_s;
const QString kMarkBefore = u"(G) "_s;

QString text_column(const store::Statement& statement, int column)
{
    return statement.text(column).value_or(QString());
}

bool has_parenthesis(const QString& text)
{
    return text.contains(u'(') || text.contains(u')');
}

std::optional<Notice> refuse_description(const QString& description)
{
    if (description.isEmpty()) {
        return Notice{u"A Description must be entered"_s, u"No Description"_s};
    }
    if (has_parenthesis(description)) {
        return Notice{u"Illegal Characters in Description"_s, u"BAD GROUP"_s};
    }
    return std::nullopt;
}

void update_group(store::Database& db, const QString& name, bool loaded_on_call, const GroupEntry& entry)
{
    store::Transaction transaction(db);
    if (loaded_on_call && !entry.on_call) {
        store::Statement roster = db.prepare(u"DELETE FROM "_s % where_name(on_call::table, on_call::group));
        roster.bind(1, name);
        roster.exec();
    }
    store::Statement update =
        db.prepare(u"UPDATE "_s % recipients::table % u" SET "_s %
                   store::tables::assignments(
                       {recipients::full_name, recipients::on_call, recipients::extra1, recipients::extra2}, 2) %
                   u" WHERE ("_s % recipients::name % u" = ?1)"_s);
    update.bind(1, name)
        .bind(2, entry.description)
        .bind_bool(3, entry.on_call)
        .bind(4, trim_blanks(entry.extra1))
        .bind(5, trim_blanks(entry.extra2));
    update.exec();
    transaction.commit();
}

std::optional<Notice> delete_group_rows(store::Database& db, const QString& name)
{
    store::Transaction transaction(db);
    if (has_unsent_messages(db, name)) {
        // The table's name stands in the text: operators know the box by it.
        return Notice{u"A group can not be deleted if there are cv_messages pending for it"_s, u"Unable to Delete"_s};
    }
    store::Statement recipient = db.prepare(u"DELETE FROM "_s % where_name(recipients::table, recipients::name));
    recipient.bind(1, name);
    recipient.exec();
    store::Statement members = db.prepare(u"DELETE FROM "_s % where_name(groups::table, groups::group));
    members.bind(1, name);
    members.exec();
    transaction.commit();
    return std::nullopt;
}

MemberLists read_member_lists(store::Database& db, const QString& group, bool label_after)
{
    store::Statement candidates = db.prepare(
        u"SELECT "_s % store::tables::column_list({recipients::name, recipients::full_name, recipients::group}) %
        u" FROM "_s % recipients::table % u" WHERE ("_s % store::tables::is_false(recipients::ad_hoc) % u") AND ("_s %
        recipients::name % u" <> ?1) ORDER BY rowid"_s);
    candidates.bind(1, group);
    store::Statement membership = db.prepare(u"SELECT 1 FROM "_s % groups::table % u" WHERE ("_s % groups::group %
                                             u" = ?1 AND "_s % groups::recipient % u" = ?2) LIMIT 1"_s);
    MemberLists lists;
    while (candidates.step()) {
        const QString text = group_mark_text(text_column(candidates, 1), candidates.flag(2), label_after);
        membership.reset();
        membership.bind(1, group).bind(2, text_column(candidates, 0));
        (membership.step() ? lists.members : lists.non_members).append(text);
    }
    return lists;
}

void replace_members(store::Database& db, const QString& group, const QStringList& entries, bool label_after)
{
    store::Transaction transaction(db);
    store::Statement clear = db.prepare(u"DELETE FROM "_s % where_name(groups::table, groups::group));
    clear.bind(1, group);
    clear.exec();
    store::Statement lookup =
        db.prepare(u"SELECT "_s % recipients::name % u" FROM "_s %
                   where_name(recipients::table, recipients::full_name) % u" ORDER BY rowid LIMIT 1"_s);
    store::Statement insert = db.prepare(u"INSERT INTO "_s % groups::table % u" ("_s %
                                         store::tables::column_list(groups::all) % u") VALUES (?1, ?2)"_s);
    for (const QString& entry : entries) {
        lookup.reset();
        lookup.bind(1, without_group_mark(entry, label_after));
        if (!lookup.step()) {
            continue; // the recipient was deleted while the window was open
        }
        insert.reset();
        insert.bind(1, group).bind(2, text_column(lookup, 0));
        insert.exec();
    }
    transaction.commit();
}

QStringList read_member_names(store::Database& db, const QString& group)
{
    store::Statement members = db.prepare(u"SELECT "_s % groups::recipient % u" FROM "_s %
                                          where_name(groups::table, groups::group) % u" ORDER BY rowid"_s);
    members.bind(1, group);
    store::Statement name = db.prepare(u"SELECT "_s % recipients::full_name % u" FROM "_s %
                                       where_name(recipients::table, recipients::name));
    QStringList names;
    while (members.step()) {
        name.reset();
        name.bind(1, text_column(members, 0));
        if (name.step()) {
            names.append(text_column(name, 0));
        }
    }
    return names;
}

} // namespace

QString on_leaving(GroupBox box, const QString& text)
{
    switch (box) {
    case GroupBox::ShortName:
        return trim_blanks(cut_to(text, 40)).toLower();
    case GroupBox::Description:
        return cut_to(text, 40);
    case GroupBox::Comment:
        return cut_to(text, 80);
    }
    return text;
}

QString group_short_name_after_description(const QString& short_name, const QString& description)
{
    return short_name.isEmpty() ? make_short_name(description) : short_name;
}

RecipientRow group_row(const GroupEntry& entry)
{
    RecipientRow row;
    row.group = true;
    row.name = entry.short_name;
    row.full_name = entry.description;
    row.maxchars = 1024;
    row.on_call = entry.on_call;
    row.extra1 = trim_blanks(entry.extra1);
    row.extra2 = trim_blanks(entry.extra2);
    row.priority = 100;
    return row;
}

std::optional<Notice> refuse_add_group_window(bool any_recipient)
{
    if (any_recipient) {
        return std::nullopt;
    }
    return Notice{u"At Least One Recipient Must Be Setup First"_s, u"No Recipients"_s};
}

std::optional<Notice> add_group_window_refusal(AppState& state)
{
    state.clear_error_counters();
    const bool any = with_retry(state, kAddLoadProcedure, [&] {
        return state.global_db.prepare(u"SELECT 1 FROM "_s % recipients::table % u" LIMIT 1"_s).step();
    });
    return refuse_add_group_window(any);
}

GroupApplyOutcome add_group(AppState& state, const GroupEntry& entry)
{
    state.clear_error_counters();
    GroupEntry checked = entry;
    checked.short_name = trim_blanks(entry.short_name);
    checked.description = trim_blanks(entry.description);
    GroupApplyOutcome outcome{checked.short_name, {}, false};
    if (checked.short_name.isEmpty()) {
        outcome.notice = {u"A Short Name must be entered"_s, u"No Group Name"_s};
        return outcome;
    }
    if (checked.description.isEmpty()) {
        outcome.notice = {u"A Description must be entered"_s, u"No Description"_s};
        return outcome;
    }
    const NameWalk walk = walk_short_name(checked.short_name);
    outcome.short_name = walk.text;
    if (!walk.accepted) {
        outcome.notice = {u"Illegal Characters in the Short Name"_s, u"BAD GROUP"_s};
        return outcome;
    }
    if (has_parenthesis(checked.description)) {
        outcome.notice = {u"Illegal Characters in Description"_s, u"BAD GROUP"_s};
        return outcome;
    }
    checked.short_name = walk.text;
    // The test and the insert are one transaction, so a name taken meanwhile by another console is seen.
    const RecipientRow row = group_row(checked);
    outcome.stored = with_retry(state, kAddProcedure, [&] { return add_recipient(state.global_db, row); });
    outcome.notice = outcome.stored ? Notice{u"Group record added"_s, u"Group Added"_s}
                                    : Notice{u"That Short Name is already in use"_s, u"Bad Name"_s};
    return outcome;
}

std::optional<GroupEntry> load_group(AppState& state, const QString& name)
{
    state.clear_error_counters();
    const std::optional<RecipientRow> row =
        with_retry(state, kEditLoadProcedure, [&] { return read_recipient(state.global_db, name); });
    if (!row) {
        return std::nullopt;
    }
    return GroupEntry{row->name, row->full_name, row->extra1, row->extra2, row->on_call};
}

std::optional<Notice> edit_group(AppState& state, const QString& name, bool loaded_on_call, const GroupEntry& entry)
{
    state.clear_error_counters();
    GroupEntry checked = entry;
    checked.description = trim_blanks(entry.description);
    if (std::optional<Notice> refusal = refuse_description(checked.description)) {
        return refusal;
    }
    with_retry(state, kEditProcedure, [&] { update_group(state.global_db, name, loaded_on_call, checked); });
    return std::nullopt;
}

QList<RecipientListEntry> list_groups(AppState& state)
{
    state.clear_error_counters();
    return with_retry(state, kListProcedure, [&] { return list_recipient_rows(state.global_db, true); });
}

GroupListCaptions group_list_captions(GroupListMode mode)
{
    switch (mode) {
    case GroupListMode::Edit:
        return {u"Edit Group"_s, u"Edit"_s};
    case GroupListMode::Members:
        return {u"Group List"_s, u"Edit"_s};
    case GroupListMode::Delete:
        return {u"Delete Group"_s, u"Delete"_s};
    }
    return {};
}

std::optional<Notice> delete_group(AppState& state, const QString& name)
{
    state.clear_error_counters();
    return with_retry(state, kDeleteProcedure, [&] { return delete_group_rows(state.global_db, name); });
}

QString group_mark_text(const QString& full_name, bool is_group, bool label_after)
{
    if (!is_group) {
        return full_name;
    }
    return label_after ? full_name + kMarkAfter : kMarkBefore + full_name;
}

QString without_group_mark(const QString& text, bool label_after)
{
    if (label_after && text.endsWith(kMarkAfter)) {
        return text.chopped(kMarkAfter.size());
    }
    if (!label_after && text.startsWith(kMarkBefore)) {
        return text.mid(kMarkBefore.size());
    }
    return text;
}

MemberLists group_maint_lists(AppState& state, const QString& group, bool label_after)
{
    state.clear_error_counters();
    return with_retry(state, kMaintLoadProcedure,
                      [&] { return read_member_lists(state.global_db, group, label_after); });
}

void apply_group_members(AppState& state, const QString& group, const QStringList& member_entries, bool label_after)
{
    state.clear_error_counters();
    with_retry(state, kMaintProcedure, [&] { replace_members(state.global_db, group, member_entries, label_after); });
}

QStringList group_member_names(AppState& state, const QString& group)
{
    state.clear_error_counters();
    return with_retry(state, kMembersProcedure, [&] { return read_member_names(state.global_db, group); });
}

QString group_members_caption(const QString& group_text)
{
    return group_text + u" Members"_s;
}

} // namespace cvd::addressbook
