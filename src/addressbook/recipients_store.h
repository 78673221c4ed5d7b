#pragma once

#include "addressbook/recipients.h"

#include <QList>
#include <QString>
#include <optional>

namespace cvd {

struct AppState;

namespace store {
class Database;
}

namespace addressbook {

// The statements of the recipient dialog and list over the global database. Names compare without regard to
// case, as the table's text columns do. Each throws store::Error.

// True when any row of cv_recipients, a group's included, has that cv_name.
bool recipient_name_exists(store::Database& db, const QString& name);

// Inserts the row unless its name is taken: the test and the insert are one transaction, so two consoles adding
// the same name cannot both succeed. False when the name was taken and nothing was written.
bool add_recipient(store::Database& db, const RecipientRow& row);

// Overwrites every column of the row named `loaded_name` (the name the dialog loaded). False when that row is
// gone; nothing is written then.
bool update_recipient(store::Database& db, const QString& loaded_name, const RecipientRow& row);

std::optional<RecipientRow> read_recipient(store::Database& db, const QString& name);

// True when a message for the recipient is not sent yet. Sent messages do not count.
bool has_unsent_messages(store::Database& db, const QString& name);

// Deletes the recipient and its member rows in cv_groups in one transaction, unless unsent messages wait for it:
// then nothing is deleted and the refusal comes back. Groups left empty stay, and so do rows in cv_oncalltable.
std::optional<Notice> delete_recipient(store::Database& db, const QString& name);

// The recipients (not groups) by full name, as the list window shows them.
struct RecipientListEntry
{
    QString name;
    QString full_name;

    bool operator==(const RecipientListEntry&) const = default;
};
QList<RecipientListEntry> list_recipients(store::Database& db);
// The rows of one kind (plain recipients or groups), by full name: what both list windows show.
QList<RecipientListEntry> list_recipient_rows(store::Database& db, bool groups);

// The dialog's Apply against state.global_db, failures through the common error path ("Procedure:
// frmAddRecipient apply"). The names come back as the boxes show them afterwards (quotes replaced).
struct ApplyOutcome
{
    QString short_name;
    QString full_name;
    std::optional<Notice> notice; // the refusal, or the box after a stored row
    bool stored = false;          // false with no notice: the edited row had vanished
};
ApplyOutcome apply_recipient(AppState& state, Protocol protocol, const RecipientEntry& entry, bool is_edit,
                             const QString& loaded_name);

// The carriers of the dialog's lists by name ("Procedure: frmAddRecipient load").
QList<RecipientCarrier> recipient_dialog_carriers(AppState& state);

// What edit mode loads for a recipient ("Procedure: frmAddRecipient load"); nullopt when the row is gone.
std::optional<RecipientEntry> load_recipient(AppState& state, const QString& name);

// The list window's rows against state.global_db ("Procedure: list_recipients activate").
QList<RecipientListEntry> recipient_list(AppState& state);

// The list window's Delete against state.global_db ("Procedure: list_recipients load"). nullopt when deleted.
std::optional<Notice> delete_listed_recipient(AppState& state, const QString& name);

} // namespace addressbook
} // namespace cvd
