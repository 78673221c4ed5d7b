#pragma once

#include "console/console_context.h"
#include "desk/setup_rules.h"

#include <QDialog>
#include <array>

class QPushButton;
class QRadioButton;

namespace cvd::console {

// "User/Global Settings": for each setting that may be kept per user, whether it is. Apply writes the switches
// (the presets at once from the database now in force); they reach the database with the next save.
class frmGlobalSettings : public QDialog
{
    Q_OBJECT

public:
    frmGlobalSettings(ConsoleContext& context, QWidget* parent);

private:
    void fill_options();
    void on_apply();

    ConsoleContext& m_context;
    std::array<QRadioButton*, desk::kLevelSwitchCount> m_user{};
    std::array<QRadioButton*, desk::kLevelSwitchCount> m_global{};
    QPushButton* btnApply;
    QPushButton* btnClose;
};

} // namespace cvd::console
