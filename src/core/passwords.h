#pragma once

#include "core/prompter.h"

#include <QString>
#include <optional>

namespace cvd {

struct AppState;

// The stored form of the level passwords: the clear text reversed, each character's 8-bit code written
// as eight binary digits, those digits reversed and read back, three decimal digits a character.
QString encode_password(const QString& clear);
// The reverse of encode_password. A stored text is not checked for form; an empty text gives empty text.
QString decode_password(const QString& stored);

// `width` + 1 binary digits of the value, most significant first, cut to the rightmost `width`.
QString tobinary(double value, int width);
// The number that a text of binary digits stands for.
qint64 todecimal(const QString& digits);
QString reverse_text(const QString& text);

inline constexpr int kPasswordMaxLength = 20;

// Reads the three level passwords from the settings and keeps their clear texts in the state.
void decode_level_passwords(AppState& state);

// Whether a guarded action may go on: mode 0 is the maintenance level, mode 1 the setup level. Asks with
// `prompt` through the prompter when it must; a correct entry is kept in entered_password and opens later
// actions of that level without a new prompt.
bool check_level(AppState& state, int mode, const QString& prompt);

// The start gate: when a user password is set, up to three prompts; a cancel ends the rounds at once.
// True when the program may start.
bool pass_start_gate(AppState& state);

// The six boxes of the password setup screen: each level's password and its repetition.
struct PasswordSetupEntries
{
    QString admin1, admin2;
    QString super1, super2;
    QString user1, user2;
};

// The password setup's Apply: the entries trimmed, each pair compared, the lengths checked, in that order;
// the first refusal is returned as its box and nothing is stored. Otherwise the three passwords become the
// working clear texts, are stored encoded under `security` and the settings are saved; the result is then
// nullopt.
std::optional<Notice> apply_password_setup(AppState& state, const PasswordSetupEntries& entries);

} // namespace cvd
