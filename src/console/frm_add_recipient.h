#pragma once

#include "addressbook/recipients.h"
#include "console/recipient_frames.h"

#include <QDialog>
#include <QList>
#include <array>

class QComboBox;
class QStackedWidget;

namespace cvd::console {

struct ConsoleContext;

// The recipient dialog: one pair of frames per protocol, the one shown following the protocol of the chosen
// carrier. Every box has a twin in each of the nine frames, so a change of carrier keeps what was typed. In
// Add mode it stays open for the next recipient; in edit mode (`is_edit`, `recipient_name`) the first Apply
// closes it.
class frmAddRecipient : public QDialog
{
    Q_OBJECT

public:
    frmAddRecipient(ConsoleContext& context, bool is_edit, const QString& recipient_name, QWidget* parent);

    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    using Frames = std::array<RecipientFrameControls, addressbook::protocol_count>;

    void build_controls();
    void connect_frame(const RecipientFrameControls& frame);
    void load_carriers();
    void add_carrier(const addressbook::RecipientCarrier& carrier);
    void set_add_defaults();
    void load_row();

    void show_tab(int tab);
    const RecipientFrameControls& current_frame() const;
    void select_carrier(int index);
    void copy_type(int index);
    void copy_flag(addressbook::RecipientFlag which, bool checked);
    // The rule of the box applied to `text`, and the result copied to all nine twins.
    void leave_box(QLineEdit* RecipientFrameControls::*box, addressbook::RecipientBox rule, const QString& text);
    void leave_full_name(const QString& text);
    void set_twins(QLineEdit* RecipientFrameControls::*box, const QString& text);

    void apply();
    addressbook::RecipientEntry current_entry() const;

    ConsoleContext& m_context;
    bool m_is_edit;
    QString m_loaded_name;
    bool m_close_on_activate = false;
    bool m_activated = false;
    bool m_closed = false;
    bool m_syncing = false;
    QList<addressbook::RecipientCarrier> m_carriers;

    QStackedWidget* tabFrames = nullptr;
    Frames m_frames;
    // Hidden lists that run parallel to the carrier lists: the carrier's type code and its Max Chars.
    QComboBox* cmbCarrierType = nullptr;
    QComboBox* cmbCarrierMaxChars = nullptr;
};

} // namespace cvd::console
