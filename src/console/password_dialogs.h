#pragma once

#include <QString>
#include <optional>

class QWidget;

namespace cvd::console {

// The level password dialog with its prompt; the entry, or nullopt after Cancel.
std::optional<QString> ask_app_password(QWidget* parent, const QString& prompt);
// The database password dialog; the entry, or nullopt after Cancel.
std::optional<QString> ask_db_password(QWidget* parent);

} // namespace cvd::console
