#pragma once

#include "addressbook/carrier_format.h"
#include "addressbook/carrier_types.h"
#include "core/prompter.h"

#include <QList>
#include <QString>
#include <optional>

namespace cvd {

struct AppState;

namespace store {
class Database;
}

namespace addressbook {

// The statements of the carrier dialog and list over the global database, in the encoding of
// carrier_format.h. Names compare without regard to case, as the table's text columns do. Each throws
// store::Error.

std::optional<CarrierRow> read_carrier(store::Database& db, const QString& name);
bool carrier_exists(store::Database& db, const QString& name);

// Inserts the row unless its name is taken: the test and the insert are one transaction, so two consoles
// adding the same name cannot both succeed. False when the name was taken and nothing was written.
bool add_carrier(store::Database& db, const CarrierRow& row);

// Overwrites every column of the row named `loaded_name` in one statement. False when that row is gone.
bool update_carrier(store::Database& db, const QString& loaded_name, const CarrierRow& row);

// True when a recipient names the carrier.
bool carrier_in_use(store::Database& db, const QString& name);
// True when a message not sent yet names the carrier; a null cv_sent reads as not sent.
bool carrier_has_unsent_messages(store::Database& db, const QString& name);

// Deletes the carrier unless a recipient uses it or an unsent message names it: then nothing is deleted and
// the refusal comes back. The checks run in the delete's transaction, so a row added meanwhile is seen.
std::optional<Notice> delete_carrier(store::Database& db, const QString& name);

// Every carrier, every column, by name: the order of the carrier list and of the recipient dialog's list.
QList<CarrierRow> list_carriers(store::Database& db);

// What the windows call, against state.global_db and through the common error path.

// The dialog's Apply ("Procedure: frmAddCarrier apply"): the name's checks, then the row of the frame.
struct CarrierApplyOutcome
{
    std::optional<Notice> notice; // the refusal, or the box after a stored row
    bool stored = false;          // false with no notice: the edited row had vanished

    bool operator==(const CarrierApplyOutcome&) const = default;
};
CarrierApplyOutcome apply_carrier(AppState& state, const CarrierFrame& frame, bool is_edit, const QString& loaded_name);

// What edit mode shows for a stored carrier ("Procedure: frmAddCarrier load"); nullopt when the row is gone.
std::optional<DecodedCarrier> load_carrier(AppState& state, const QString& name);

// The list window: its rows ("Procedure: list_carriers activate") and its Delete ("Procedure: list_carriers
// load"), nullopt when deleted.
QList<CarrierRow> carrier_list(AppState& state);
std::optional<Notice> delete_listed_carrier(AppState& state, const QString& name);

} // namespace addressbook
} // namespace cvd
