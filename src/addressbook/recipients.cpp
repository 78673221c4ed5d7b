#include "addressbook/recipients.h"

#include "core/text.h"

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

namespace {

FlagSlot box(const QString& object_name)
{
    return FlagSlot{object_name, false};
}

FlagSlot fixed(bool value)
{
    return FlagSlot{QString(), value};
}

const QString kPhone = u"Phone #"_s;
const QString kIdPin = u"ID / PIN"_s;
const QString kNeedPhone = u"You must enter a phone number"_s;
const QString kNeedIdPin = u"You must enter a ID/PIN number"_s;

// In Protocol order. The SMTP identity box carries "ID / PIN" although its message asks for an e-mail address.
const std::array<RecipientFrame, protocol_count> kFrames = {{
    {Protocol::Fax, u"txtFaxPhone"_s, kPhone, kNeedPhone, fixed(false), box(u"chkFaxSendSubject"_s), fixed(false),
     fixed(true)},
    {Protocol::FaxSrv, u"txtFaxSrvPhone"_s, kPhone, kNeedPhone, fixed(false), box(u"chkFaxSrvSendSubject"_s),
     fixed(false), fixed(true)},
    {Protocol::Gsmat, u"txtGsmatPhone"_s, kPhone, kNeedPhone, box(u"chkGsmatStripNonPrint"_s), fixed(false),
     box(u"chkGsmatStripSender"_s), box(u"chkGsmatAlpha"_s)},
    {Protocol::Smtp, u"txtSmtpEmail"_s, kIdPin, u"You must enter an email address"_s, box(u"chkSmtpStripNonPrint"_s),
     box(u"chkSmtpSendSubject"_s), box(u"chkSmtpStripSender"_s), box(u"chkSmtpAlpha"_s)},
    {Protocol::Snpp, u"txtSnppId"_s, kIdPin, kNeedIdPin, box(u"chkSnppStripNonPrint"_s), fixed(false),
     box(u"chkSnppStripSender"_s), box(u"chkSnppAlpha"_s)},
    {Protocol::Tap, u"txtTapId"_s, kIdPin, kNeedIdPin, box(u"chkTapStripNonPrint"_s), fixed(false),
     box(u"chkTapStripSender"_s), box(u"chkTapAlpha"_s)},
    {Protocol::Tone, u"txtTonePhone"_s, kPhone, kNeedPhone, fixed(true), fixed(false), box(u"chkToneStripSender"_s),
     fixed(false)},
    {Protocol::Ucp, u"txtUcpId"_s, kIdPin, kNeedIdPin, box(u"chkUcpStripNonPrint"_s), fixed(false),
     box(u"chkUcpStripSender"_s), box(u"chkUcpAlpha"_s)},
    {Protocol::Wctp, u"txtWctpId"_s, kIdPin, kNeedIdPin, box(u"chkWctpStripNonPrint"_s), fixed(false),
     box(u"chkWctpStripSender"_s), box(u"chkWctpAlpha"_s)},
}};

QString clamp_by_leading_number(const QString& text, qint32 low, qint32 high)
{
    const double value = leading_number(text);
    if (value < low) {
        return QString::number(low);
    }
    if (value > high) {
        return QString::number(high);
    }
    return text;
}

bool is_quote(QChar ch)
{
    return ch == u'"' || ch == u'\'';
}

NameWalk walk_name(const QString& text, bool (*allowed)(QChar))
{
    NameWalk walk{text, true};
    for (QChar& ch : walk.text) {
        if (is_quote(ch)) {
            ch = u'`';
        }
        if (!allowed(ch)) {
            walk.accepted = false;
            break;
        }
    }
    return walk;
}

std::optional<Notice> refuse_names(const QString& short_name, const QString& full_name)
{
    if (short_name.isEmpty()) {
        return Notice{u"A Short Name must be entered"_s, u"No Recipient"_s};
    }
    if (full_name.isEmpty()) {
        return Notice{u"A Full Name must be entered"_s, u"No Full Name"_s};
    }
    return std::nullopt;
}

} // namespace

QString recipient_type_text(RecipientType type)
{
    return type == RecipientType::AdHoc ? u"Ad-Hoc"_s : u"Normal"_s;
}

QString recipient_flag_caption(RecipientFlag flag)
{
    switch (flag) {
    case RecipientFlag::DropControl:
        return u"Strip non-printable characters"_s;
    case RecipientFlag::SendSubject:
        return u"Extract Subject"_s;
    case RecipientFlag::RemoveFrom:
        return u"Strip sender's name"_s;
    case RecipientFlag::Alpha:
        return u"Alpha"_s;
    }
    return {};
}

bool RecipientFlags::value(RecipientFlag flag) const
{
    switch (flag) {
    case RecipientFlag::DropControl:
        return drop_control;
    case RecipientFlag::SendSubject:
        return send_subject;
    case RecipientFlag::RemoveFrom:
        return remove_from;
    case RecipientFlag::Alpha:
        return alpha;
    }
    return false;
}

void RecipientFlags::set(RecipientFlag flag, bool on)
{
    switch (flag) {
    case RecipientFlag::DropControl:
        drop_control = on;
        break;
    case RecipientFlag::SendSubject:
        send_subject = on;
        break;
    case RecipientFlag::RemoveFrom:
        remove_from = on;
        break;
    case RecipientFlag::Alpha:
        alpha = on;
        break;
    }
}

const FlagSlot& RecipientFrame::slot(RecipientFlag flag) const
{
    switch (flag) {
    case RecipientFlag::DropControl:
        return drop_control;
    case RecipientFlag::SendSubject:
        return send_subject;
    case RecipientFlag::RemoveFrom:
        return remove_from;
    case RecipientFlag::Alpha:
        break;
    }
    return alpha;
}

const RecipientFrame& recipient_frame(Protocol protocol)
{
    return kFrames.at(static_cast<std::size_t>(protocol));
}

RecipientFlags stored_flags(Protocol protocol, const RecipientFlags& shown)
{
    const RecipientFrame& frame = recipient_frame(protocol);
    RecipientFlags stored;
    for (const RecipientFlag flag : all_recipient_flags) {
        const FlagSlot& slot = frame.slot(flag);
        stored.set(flag, slot.offered() ? shown.value(flag) : slot.constant);
    }
    return stored;
}

RecipientDefaults recipient_add_defaults(Protocol protocol)
{
    // drop_control, send_subject, remove_from, alpha; stored_flags puts the constants where a frame has no box.
    switch (protocol) {
    case Protocol::Fax:
    case Protocol::FaxSrv:
        return {u"5000"_s, stored_flags(protocol, {false, true, false, false})};
    case Protocol::Gsmat:
    case Protocol::Ucp:
        return {u"160"_s, stored_flags(protocol, {true, false, false, true})};
    case Protocol::Smtp:
        return {u"500"_s, stored_flags(protocol, {false, true, false, true})};
    case Protocol::Snpp:
    case Protocol::Tap:
    case Protocol::Wctp:
        return {u"240"_s, stored_flags(protocol, {true, false, false, true})};
    case Protocol::Tone:
        return {u"10"_s, stored_flags(protocol, {false, false, true, false})};
    }
    return {};
}

QString recipient_default_priority()
{
    return u"100"_s;
}

QString recipient_priority_label()
{
    return u"Priorty"_s;
}

QString recipient_comment_label(int which)
{
    return which == 2 ? u"Comment2"_s : u"Comment1"_s;
}

QString on_leaving(RecipientBox box, const QString& text)
{
    switch (box) {
    case RecipientBox::ShortName:
    case RecipientBox::FullName:
    case RecipientBox::Identity:
        return trim_blanks(cut_to(text, 40));
    case RecipientBox::Comment:
        return trim_blanks(cut_to(text, 80));
    case RecipientBox::MaxChars:
        return clamp_by_leading_number(text, 10, 6000);
    case RecipientBox::Priority:
        return clamp_by_leading_number(text, 1, 30000);
    }
    return text;
}

QString short_name_after_full_name(const QString& short_name, const QString& full_name)
{
    return short_name.isEmpty() ? make_short_name(full_name) : short_name;
}

QString make_short_name(const QString& full_name)
{
    // The same key the intake paths make of a name; group names are derived this way too.
    return normalize_id(full_name);
}

std::optional<QString> max_chars_on_carrier_selected(bool is_edit, qint32 carrier_maxchars)
{
    if (is_edit) {
        return std::nullopt;
    }
    return QString::number(carrier_maxchars);
}

bool is_short_name_character(QChar ch)
{
    const char16_t code = ch.unicode();
    return (code >= 44 && code <= 63) || (code >= 65 && code <= 90) || (code >= 95 && code <= 122);
}

bool is_full_name_character(QChar ch)
{
    const char16_t code = ch.unicode();
    return code >= 32 && code <= 126 && code != u'(' && code != u')';
}

NameWalk walk_short_name(const QString& text)
{
    return walk_name(text, is_short_name_character);
}

NameWalk walk_full_name(const QString& text)
{
    return walk_name(text, is_full_name_character);
}

EntryCheck check_recipient_entry(Protocol protocol, const RecipientEntry& entry, bool is_edit,
                                 const std::function<bool(const QString&)>& name_exists)
{
    EntryCheck check{entry.short_name, entry.full_name, refuse_names(entry.short_name, entry.full_name)};
    if (check.refusal) {
        return check;
    }
    // The full name is walked only once the short name has passed, so its quotes stay as typed until then.
    const NameWalk short_walk = walk_short_name(entry.short_name);
    check.short_name = short_walk.text;
    if (!short_walk.accepted) {
        check.refusal = Notice{u"Illegal Characters in Short Name"_s, u"Bad Recipient"_s};
        return check;
    }
    const NameWalk full_walk = walk_full_name(entry.full_name);
    check.full_name = full_walk.text;
    if (!full_walk.accepted) {
        check.refusal = Notice{u"Illegal Characters in Full Name"_s, u"Bad Full Name"_s};
        return check;
    }
    if (entry.type == RecipientType::Normal && entry.identity.isEmpty()) {
        check.refusal = Notice{recipient_frame(protocol).missing_identity_text, u"Missing Data"_s};
        return check;
    }
    // In edit mode the row found is the one being edited: its short name cannot be changed.
    if (!is_edit && name_exists(check.short_name)) {
        check.refusal = Notice{u"That Short Name already exists"_s, u"Duplicate Recipient"_s};
    }
    return check;
}

RecipientRow recipient_row(Protocol protocol, const RecipientEntry& entry)
{
    const bool ad_hoc = entry.type == RecipientType::AdHoc;
    const RecipientFlags flags = stored_flags(protocol, entry.flags);
    RecipientRow row;
    row.name = entry.short_name;
    row.full_name = entry.full_name;
    row.id = ad_hoc ? QString() : entry.identity;
    row.ad_hoc = ad_hoc;
    row.group = false;
    row.carrier = entry.carrier;
    row.maxchars = to_int32(leading_number(on_leaving(RecipientBox::MaxChars, entry.max_chars)));
    row.priority = to_int32(leading_number(on_leaving(RecipientBox::Priority, entry.priority)));
    row.drop_control = flags.drop_control;
    row.send_subject = flags.send_subject;
    row.remove_from = flags.remove_from;
    row.alpha = flags.alpha;
    row.extra1 = entry.comment1;
    row.extra2 = entry.comment2;
    row.on_call = false; // only groups are on-call groups
    return row;
}

RecipientEntry entry_of_row(const RecipientRow& row)
{
    RecipientEntry entry;
    entry.short_name = row.name;
    entry.full_name = row.full_name;
    entry.identity = row.id;
    entry.type = row.ad_hoc ? RecipientType::AdHoc : RecipientType::Normal;
    entry.carrier = row.carrier;
    entry.max_chars = QString::number(row.maxchars);
    entry.priority = QString::number(row.priority);
    entry.comment1 = row.extra1;
    entry.comment2 = row.extra2;
    entry.flags = {row.drop_control, row.send_subject, row.remove_from, row.alpha};
    return entry;
}

Notice recipient_stored_notice(bool is_edit)
{
    if (is_edit) {
        return {u"Recipient record updated"_s, u"Recipient Updated"_s};
    }
    return {u"Recipient record added"_s, u"Recipient Added"_s};
}

std::optional<Notice> refuse_recipient_delete(bool has_unsent_messages)
{
    // The table's name stands in the text; operators know the box by it.
    if (has_unsent_messages) {
        return Notice{u"A recipient can not be deleted if there are cv_messages pending for it"_s,
                      u"Unable to Delete"_s};
    }
    return std::nullopt;
}

QString recipient_list_line(const QString& name, const QString& full_name)
{
    return name + u'\t' + full_name;
}

RecipientCarrier recipient_carrier(const QString& name, const QString& dial_type, qint32 maxchars)
{
    return RecipientCarrier{name, dial_type.left(3), maxchars};
}

std::optional<Notice> refuse_recipient_window(bool any_carrier)
{
    if (any_carrier) {
        return std::nullopt;
    }
    return Notice{u"At Least One Carrier Must Be Setup First"_s, u"No Carriers"_s};
}

} // namespace cvd::addressbook
