#pragma once

#include "core/settings.h"

// The settings the program reads or writes by name, each as one key of category and name.
namespace cvd::setting_keys {

namespace database {
inline constexpr SettingKey version{u"database", u"version"};
inline constexpr SettingKey purge_after{u"database", u"purge_after"};
inline constexpr SettingKey rebuild_index{u"database", u"rebuild_index"};
} // namespace database

namespace connector {
inline constexpr SettingKey retry_interval{u"connector", u"retry_interval"};
// The endpoints the port scan tries ("host" or "host:port"); empty leaves that test out.
inline constexpr SettingKey scan_smtp_host{u"connector", u"scan_smtp_host"};
inline constexpr SettingKey scan_wctp_host{u"connector", u"scan_wctp_host"};
inline constexpr SettingKey scan_snpp_host{u"connector", u"scan_snpp_host"};
} // namespace connector

namespace security {
inline constexpr SettingKey admin_password{u"security", u"admin_password"};
inline constexpr SettingKey super_password{u"security", u"super_password"};
inline constexpr SettingKey user_password{u"security", u"user_password"};
} // namespace security

namespace display {
inline constexpr SettingKey warning_popup{u"display", u"warning_popup"};
inline constexpr SettingKey group_label_after{u"display", u"group_label_after"};
inline constexpr SettingKey preset_sort_order{u"display", u"preset_sort_order"};
} // namespace display

namespace level {
inline constexpr SettingKey user_presets{u"level", u"user_presets"};
} // namespace level

} // namespace cvd::setting_keys
