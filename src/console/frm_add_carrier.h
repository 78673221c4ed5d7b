#pragma once

#include "addressbook/carrier_types.h"

#include <QDialog>
#include <QString>
#include <array>

class QComboBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QStackedWidget;

namespace cvd::console {

struct ConsoleContext;

// The controls of one protocol's two frames, each with its design name as objectName (txtTapName,
// cmbTapBaud, ...). A box the protocol does not have stays null.
struct CarrierFrameControls
{
    addressbook::Protocol protocol = addressbook::Protocol::Smtp;
    QWidget* main = nullptr;     // fraTap
    QWidget* advanced = nullptr; // fraTapAdv
    QComboBox* protocol_list = nullptr;
    QLineEdit* name = nullptr;
    QLineEdit* address = nullptr; // phone number, host or mail domain
    QComboBox* port = nullptr;
    QRadioButton* direct = nullptr; // SMTP only, with relay and relay_server
    QRadioButton* relay = nullptr;
    QLineEdit* relay_server = nullptr;
    QComboBox* send_method = nullptr;
    QComboBox* fax_class = nullptr;
    QComboBox* baud = nullptr;
    QComboBox* parity = nullptr;
    QComboBox* data_bits = nullptr;
    QComboBox* stop_bits = nullptr;
    QComboBox* init_string = nullptr;
    QLineEdit* wait_string = nullptr;
    QComboBox* auth = nullptr;
    QLineEdit* username = nullptr;
    QLineEdit* password = nullptr;
    QLineEdit* msg_limit = nullptr;
    QLineEdit* max_chars = nullptr;
    QLineEdit* priority = nullptr;
    QPushButton* apply = nullptr;
    QPushButton* cancel = nullptr;
    QPushButton* advanced_button = nullptr;
    QPushButton* back = nullptr;
};

// Adds or edits one carrier. One stack of 18 frames, a main and an Advanced frame per protocol, of which
// only the current one is enabled; Apply stores the frame it stands on and closes the dialog.
class frmAddCarrier : public QDialog
{
public:
    // In edit mode `carrier_name` is the row shown and stored back.
    frmAddCarrier(ConsoleContext& context, bool is_edit, QString carrier_name, QWidget* parent);

    // The values a frame's boxes hold, and back.
    static addressbook::CarrierFrame frame_values(const CarrierFrameControls& frame);
    static void show_values(const CarrierFrameControls& frame, const addressbook::CarrierFrame& values);

protected:
    void showEvent(QShowEvent* event) override;

private:
    // frm_add_carrier_frames.cpp
    void build_frames();
    CarrierFrameControls build_frame(int protocol_index);

    // frm_add_carrier_rules.cpp: what each box does to its text when it is left.
    void connect_rules(const CarrierFrameControls& frame);
    void rule_on_leaving(QLineEdit* box, int rule);
    void copy_name(const QString& text);
    void copy_priority(const QString& text);
    void relay_chosen(const CarrierFrameControls& frame);

    void show_defaults();
    void load_row();
    void disable_frames(int tab);
    void show_advanced(bool advanced);
    void update_caption();
    void on_apply();

    ConsoleContext& m_context;
    bool m_is_edit;
    QString m_carrier_name;
    QStackedWidget* tabCarrier = nullptr;
    std::array<CarrierFrameControls, addressbook::protocol_count> m_frames;
};

} // namespace cvd::console
