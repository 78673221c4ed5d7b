#pragma once

#include "console/group_form.h"

namespace cvd::console {

// The group named by ConsoleState::selected_name. Its short name is shown but cannot change. The first Apply
// closes the window, a refused one too, without storing.
class edit_group : public GroupForm
{
public:
    edit_group(ConsoleContext& context, QWidget* parent);

    void done(int result) override;

protected:
    QString roster_name() const override;
    void apply() override;

private:
    QString m_name;
    bool m_loaded_on_call = false;
    bool m_closed = false;
};

} // namespace cvd::console
