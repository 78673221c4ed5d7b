#pragma once

#include "console/name_list_window.h"

#include <functional>

namespace cvd::console {

// The recipients by full name, chosen for editing or deletion. In edit mode btnEdit opens the recipient
// dialog through `edit`; in delete mode it deletes at once, without asking, unless messages wait for the
// recipient.
class list_recipients : public NameListWindow
{
public:
    enum class Mode { Edit, Delete };
    // Opens the recipient dialog in edit mode for that short name, modal over `caller`.
    using EditRecipient = std::function<void(const QString& name, QWidget* caller)>;

    list_recipients(ConsoleContext& context, Mode mode, EditRecipient edit, QWidget* parent);

    void done(int result) override;

protected:
    QList<addressbook::RecipientListEntry> read_rows() override;
    bool act_on(const QString& name) override;

private:
    Mode m_mode;
    EditRecipient m_edit;
    bool m_closed = false;
};

} // namespace cvd::console
