#pragma once

#include <QString>
#include <QStringBuilder>
#include <QStringView>
#include <array>
#include <initializer_list>

// The names of the tables and columns of both databases, written once. A query composes them with the
// string builder and binds every value:
//
//     namespace carriers = store::tables::carriers;
//     db.prepare(u"SELECT "_s % carriers::priority % u" FROM "_s % carriers::table % u" WHERE "_s %
//                carriers::name % u" = ?1"_s);
//
// The schema that creates the tables keeps its own column kinds and widths; these are only the names.
namespace cvd::store::tables {

using Name = QStringView;

namespace messages {
inline constexpr Name table = u"cv_messages";
inline constexpr Name recipient = u"cv_recipient";
inline constexpr Name pin = u"cv_pin";
inline constexpr Name message = u"cv_message";
inline constexpr Name carrier = u"cv_carrier";
inline constexpr Name date_time_requested = u"cv_date_time_requested";
inline constexpr Name date_time_sent = u"cv_date_time_sent";
inline constexpr Name from = u"cv_from";
inline constexpr Name sent = u"cv_sent";
inline constexpr Name error = u"cv_error";
inline constexpr Name scheduled = u"cv_scheduled";
inline constexpr Name repeat_interval = u"cv_repeat_interval";
inline constexpr Name repeat_stop = u"cv_repeat_stop";
inline constexpr Name message_id = u"cv_message_id";
inline constexpr Name retries = u"cv_retries";
inline constexpr Name last_try = u"cv_last_try";
inline constexpr Name transaction = u"cv_transaction";
inline constexpr Name priority = u"cv_priority";
inline constexpr std::array all{recipient,       pin,         message,    carrier, date_time_requested,
                                date_time_sent,  from,        sent,       error,   scheduled,
                                repeat_interval, repeat_stop, message_id, retries, last_try,
                                transaction,     priority};
} // namespace messages

namespace recipients {
inline constexpr Name table = u"cv_recipients";
inline constexpr Name name = u"cv_name";
inline constexpr Name full_name = u"cv_full_name";
inline constexpr Name id = u"cv_id";
inline constexpr Name carrier = u"cv_carrier";
inline constexpr Name maxchars = u"cv_maxchars";
inline constexpr Name alpha = u"cv_alpha";
inline constexpr Name on_call = u"cv_on_call";
inline constexpr Name ad_hoc = u"cv_ad_hoc";
inline constexpr Name drop_control = u"cv_drop_control";
inline constexpr Name group = u"cv_group";
inline constexpr Name send_subject = u"cv_SendSubject";
inline constexpr Name extra1 = u"cv_extra1";
inline constexpr Name extra2 = u"cv_extra2";
inline constexpr Name remove_from = u"cv_remove_from";
inline constexpr Name priority = u"cv_priority";
inline constexpr std::array all{name,         full_name, id,           carrier, maxchars, alpha,       on_call, ad_hoc,
                                drop_control, group,     send_subject, extra1,  extra2,   remove_from, priority};
} // namespace recipients

namespace carriers {
inline constexpr Name table = u"cv_carriers";
inline constexpr Name name = u"cv_name";
inline constexpr Name phone_number = u"cv_phone_number";
inline constexpr Name modem_settings = u"cv_modem_settings";
inline constexpr Name maxchars = u"cv_maxchars";
inline constexpr Name init_string = u"cv_init_string";
inline constexpr Name retries = u"cv_retries";
inline constexpr Name message_limit = u"cv_message_limit";
inline constexpr Name dial_type = u"cv_dial_type";
inline constexpr Name auth_type = u"cv_auth_type";
inline constexpr Name auth_user = u"cv_auth_user";
inline constexpr Name auth_pass = u"cv_auth_pass";
inline constexpr Name relay_mail = u"cv_relay_mail";
inline constexpr Name relay_server = u"cv_relay_server";
inline constexpr Name priority = u"cv_priority";
inline constexpr std::array all{name,      phone_number,  modem_settings, maxchars,  init_string,
                                retries,   message_limit, dial_type,      auth_type, auth_user,
                                auth_pass, relay_mail,    relay_server,   priority};
} // namespace carriers

// In the global and the user database alike.
namespace settings {
inline constexpr Name table = u"cv_settings";
inline constexpr Name id = u"cv_id";
inline constexpr Name category = u"cv_category";
inline constexpr Name name = u"cv_name";
inline constexpr Name value = u"cv_value";
inline constexpr std::array all{id, category, name, value};
} // namespace settings

namespace counters {
inline constexpr Name table = u"cv_counters";
inline constexpr Name id = u"cv_id";
inline constexpr Name unique = u"cv_unique";
inline constexpr std::array all{id, unique};
} // namespace counters

// The member rows of the groups: cv_group names the group's row in cv_recipients.
namespace groups {
inline constexpr Name table = u"cv_groups";
inline constexpr Name group = u"cv_group";
inline constexpr Name recipient = u"cv_recipient";
inline constexpr std::array all{group, recipient};
} // namespace groups

namespace on_call {
inline constexpr Name table = u"cv_oncalltable";
inline constexpr Name group = u"cv_group";
inline constexpr Name recipient = u"cv_recipient";
inline constexpr Name start_day = u"cv_start_day";
inline constexpr Name start_time = u"cv_start_time";
inline constexpr Name stop_day = u"cv_stop_day";
inline constexpr Name stop_time = u"cv_stop_time";
inline constexpr std::array all{group, recipient, start_day, start_time, stop_day, stop_time};
} // namespace on_call

// In the global and the user database alike.
namespace presets {
inline constexpr Name table = u"cv_presets";
inline constexpr Name id = u"cv_id";
inline constexpr Name index = u"cv_index";
inline constexpr Name description = u"cv_description";
inline constexpr Name recipient = u"cv_recipient";
inline constexpr Name message = u"cv_message";
inline constexpr std::array all{id, index, description, recipient, message};
} // namespace presets

// "a, b, c": the names joined for a column list.
template <typename Names> QString column_list(const Names& names)
{
    QString list;
    for (const Name name : names) {
        if (!list.isEmpty()) {
            list += QStringView(u", ");
        }
        list += name;
    }
    return list;
}
inline QString column_list(std::initializer_list<Name> names)
{
    return column_list<std::initializer_list<Name>>(names);
}

// "?1, ?2, ... ?count", numbered from `first`: the values of an insert.
inline QString placeholders(qsizetype count, int first = 1)
{
    QString list;
    for (qsizetype i = 0; i < count; ++i) {
        if (i > 0) {
            list += QStringView(u", ");
        }
        list += u'?' % QString::number(first + i);
    }
    return list;
}

// "a = ?1, b = ?2": the SET list of an update, numbered from `first` in the order given.
template <typename Names> QString assignments(const Names& names, int first = 1)
{
    QString list;
    int number = first;
    for (const Name name : names) {
        if (!list.isEmpty()) {
            list += QStringView(u", ");
        }
        list += name % u" = ?" % QString::number(number++);
    }
    return list;
}
inline QString assignments(std::initializer_list<Name> names, int first = 1)
{
    return assignments<std::initializer_list<Name>>(names, first);
}

// A stored boolean is true when it holds anything but 0 or null; these conditions read it so, also in a row
// written by another program that left the column empty.
inline QString is_true(Name column)
{
    return u"COALESCE(" % column % u", 0) <> 0";
}
inline QString is_false(Name column)
{
    return u"COALESCE(" % column % u", 0) = 0";
}

} // namespace cvd::store::tables
