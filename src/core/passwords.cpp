#include "core/passwords.h"

#include "core/app_state.h"
#include "core/databases.h"
#include "core/prompter.h"
#include "core/setting_keys.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace cvd {

QString reverse_text(const QString& text)
{
    QString reversed = text;
    std::reverse(reversed.begin(), reversed.end());
    return reversed;
}

QString tobinary(double value, int width)
{
    QString digits;
    for (int position = width; position >= 0; --position) {
        const double power = std::pow(2.0, position);
        const double quotient = std::floor(value / power);
        digits += QString::number(static_cast<qint64>(quotient));
        value -= quotient * power;
    }
    return digits.right(width);
}

qint64 todecimal(const QString& digits)
{
    qint64 sum = 0;
    for (const QChar digit : digits) {
        sum = sum * 2 + digit.digitValue();
    }
    return sum;
}

namespace {

// Eight binary digits reversed: the scrambling step, its own inverse.
int mirror_byte(int code)
{
    return static_cast<int>(todecimal(reverse_text(tobinary(code, 8))));
}

} // namespace

QString encode_password(const QString& clear)
{
    QString stored;
    for (const QChar ch : reverse_text(clear)) {
        const int code = ch.unicode() & 0xff;
        stored += QString::number(mirror_byte(code)).rightJustified(3, u'0');
    }
    return stored;
}

QString decode_password(const QString& stored)
{
    QString clear;
    for (qsizetype at = 0; at < stored.size(); at += 3) {
        const int value = stored.mid(at, 3).toInt();
        clear += QChar(mirror_byte(value & 0xff));
    }
    return reverse_text(clear);
}

void decode_level_passwords(AppState& state)
{
    namespace security = setting_keys::security;
    state.admin_password = decode_password(state.settings.get_setting_text(security::admin_password));
    state.super_password = decode_password(state.settings.get_setting_text(security::super_password));
    state.user_password = decode_password(state.settings.get_setting_text(security::user_password));
}

namespace {

// Shows the password dialog: it empties entered_password first, so a wrong entry ends an earlier grace.
// False when the operator cancelled.
bool ask_level_password(AppState& state, const QString& prompt)
{
    state.entered_password.clear();
    const std::optional<QString> entry = state.prompter.ask_password(PasswordKind::Application, prompt);
    if (!entry) {
        return false;
    }
    state.entered_password = entry->left(kPasswordMaxLength);
    return true;
}

bool equals_set(const QString& entry, const QString& password)
{
    return !password.isEmpty() && entry == password;
}

} // namespace

bool check_level(AppState& state, int mode, const QString& prompt)
{
    if (mode == 1) {
        if (state.admin_password.isEmpty() || state.entered_password == state.admin_password) {
            return true;
        }
        return ask_level_password(state, prompt) && state.entered_password == state.admin_password;
    }
    // Kept as it always was: a set super password guards nothing while the admin password is empty, and a
    // user password alone never guards maintenance.
    if (state.user_password.isEmpty() && state.super_password.isEmpty()) {
        return true;
    }
    if (state.super_password.isEmpty() || state.super_password == state.entered_password) {
        return true;
    }
    if (state.admin_password.isEmpty() || state.admin_password == state.entered_password) {
        return true;
    }
    return ask_level_password(state, prompt) && (equals_set(state.entered_password, state.admin_password) ||
                                                 equals_set(state.entered_password, state.super_password));
}

bool pass_start_gate(AppState& state)
{
    if (state.user_password.isEmpty()) {
        return true;
    }
    // Three wrong entries or one cancel keep the program from starting.
    constexpr int kRounds = 3;
    for (int round = 0; round < kRounds; ++round) {
        if (!ask_level_password(state, u"A Password is required to start Corvane Desk"_s)) {
            return false;
        }
        const QString& entry = state.entered_password;
        if (equals_set(entry, state.admin_password) || equals_set(entry, state.super_password) ||
            entry == state.user_password) {
            return true;
        }
    }
    return false;
}

std::optional<Notice> apply_password_setup(AppState& state, const PasswordSetupEntries& entries)
{
    struct Pair
    {
        QString first;
        QString second;
        QString level;
    };
    const Pair pairs[] = {{entries.admin1.trimmed(), entries.admin2.trimmed(), u"Admin"_s},
                          {entries.super1.trimmed(), entries.super2.trimmed(), u"Super User"_s},
                          {entries.user1.trimmed(), entries.user2.trimmed(), u"User"_s}};
    for (const Pair& pair : pairs) {
        if (pair.first != pair.second) {
            return Notice{u"The two "_s + pair.level + u" passwords you entered don't match.  Please re-enter"_s,
                          u"Password Mismatch"_s};
        }
    }
    for (const Pair& pair : pairs) {
        if (pair.first.size() > kPasswordMaxLength) {
            return Notice{u"Passwords can only be a maximum of 20 characters long."_s, u"Invalid Password"_s};
        }
    }
    namespace security = setting_keys::security;
    state.admin_password = pairs[0].first;
    state.super_password = pairs[1].first;
    state.user_password = pairs[2].first;
    state.settings.put_setting(security::admin_password, encode_password(state.admin_password));
    state.settings.put_setting(security::super_password, encode_password(state.super_password));
    state.settings.put_setting(security::user_password, encode_password(state.user_password));
    save_settings(state);
    return std::nullopt;
}

} // namespace cvd
