#pragma once

#include "console/group_form.h"

namespace cvd::console {

// A new group row, one after another: the window stays open after each Apply. It will not open while no
// recipient exists.
class add_group : public GroupForm
{
public:
    add_group(ConsoleContext& context, QWidget* parent);

    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;
    QString roster_name() const override;
    void apply() override;

private:
    bool m_close_on_activate = false;
    bool m_activated = false;
    bool m_closed = false;
};

} // namespace cvd::console
