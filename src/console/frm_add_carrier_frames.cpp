// The 18 frames of the carrier dialog, built from one table of which boxes each protocol shows where.
#include "console/controls.h"
#include "console/frm_add_carrier.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <vector>

using namespace Qt::StringLiterals;

namespace cvd::console {

using addressbook::Protocol;

namespace {

enum class Field {
    Address,
    SmtpPort,
    Delivery,
    SendMethod,
    NumericPort,
    FaxClass,
    Baud,
    Parity,
    DataBits,
    StopBits,
    InitString,
    WaitString,
    AuthType,
    Username,
    Password,
    MsgLimit,
    MaxChars,
    Priority,
};

// Where a box stands in its frame: the group boxes keep the Advanced frames readable.
enum class Group { Carrier, Delivery, Connection, Modem, Authentication, Limits };

struct FrameShape
{
    const char* prefix;         // "Tap": txtTapName, fraTap, fraTapAdv ...
    const char* address_suffix; // "PhoneNumber", "Host" or "Domain"; null without an address box
    const char16_t* address_caption;
    std::vector<Field> main;
    std::vector<Field> advanced;
};

const std::vector<Field> kSerialLine{Field::Baud, Field::Parity, Field::DataBits, Field::StopBits, Field::InitString};

std::vector<Field> joined(std::vector<Field> first, const std::vector<Field>& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// In Protocol order, which is the order of the protocol lists and of the stack's pages.
const std::vector<FrameShape>& frame_shapes()
{
    static const std::vector<FrameShape> shapes{
        {"Fax", nullptr, nullptr, {}, {Field::FaxClass, Field::InitString, Field::MaxChars, Field::Priority}},
        {"FaxSrv", nullptr, nullptr, {}, {Field::MaxChars, Field::Priority}},
        {"Gsmat", nullptr, nullptr, {}, joined(kSerialLine, {Field::MsgLimit, Field::MaxChars, Field::Priority})},
        {"Smtp",
         "Domain",
         u"Domain",
         {Field::Address, Field::SmtpPort, Field::Delivery},
         {Field::AuthType, Field::Username, Field::Password, Field::MaxChars, Field::Priority}},
        {"Snpp",
         "Host",
         u"Host",
         {Field::Address},
         {Field::NumericPort, Field::AuthType, Field::Password, Field::MsgLimit, Field::MaxChars, Field::Priority}},
        {"Tap",
         "PhoneNumber",
         u"Phone #",
         {Field::Address},
         joined(kSerialLine, {Field::AuthType, Field::Password, Field::MsgLimit, Field::MaxChars, Field::Priority})},
        {"Tone", nullptr, nullptr, {}, {Field::InitString, Field::WaitString, Field::MaxChars, Field::Priority}},
        {"Ucp",
         "PhoneNumber",
         u"Phone #",
         {Field::Address},
         joined(kSerialLine, {Field::AuthType, Field::Password, Field::MsgLimit, Field::MaxChars, Field::Priority})},
        {"Wctp",
         "Host",
         u"Host",
         {Field::Address},
         {Field::SendMethod, Field::NumericPort, Field::AuthType, Field::Username, Field::Password, Field::MaxChars,
          Field::Priority}},
    };
    return shapes;
}

QString group_title(Group group)
{
    switch (group) {
    case Group::Carrier:
        return u"Carrier"_s;
    case Group::Delivery:
        return u"Delivery"_s;
    case Group::Connection:
        return u"Connection"_s;
    case Group::Modem:
        return u"Modem"_s;
    case Group::Authentication:
        return u"Authentication"_s;
    case Group::Limits:
        break;
    }
    return u"Limits"_s;
}

QComboBox* make_list(QWidget* parent, const QByteArray& name, const QStringList& entries, bool takes_typing)
{
    auto* list = make_control<QComboBox>(parent, name.constData());
    list->addItems(entries);
    list->setEditable(takes_typing);
    if (takes_typing) {
        // Typed text is the box's value, never a new entry of the list.
        list->setInsertPolicy(QComboBox::NoInsert);
        list->setMinimumContentsLength(8); // room for a typed number wider than the entries
    }
    return list;
}

// Builds one frame's group boxes row by row, creating each group the first time a field of it comes.
class FrameBuilder
{
public:
    FrameBuilder(QWidget* frame, QVBoxLayout* layout, QByteArray prefix)
        : m_frame(frame), m_layout(layout), m_prefix(std::move(prefix))
    {
    }

    QByteArray name(const char* kind, const char* suffix) const { return kind + m_prefix + suffix; }

    QFormLayout& form(Group group)
    {
        for (auto& [known, form] : m_forms) {
            if (known == group) {
                return *form;
            }
        }
        auto* box = new QGroupBox(group_title(group), m_frame);
        box->setObjectName(QString::fromLatin1(name("grp", "") + group_title(group).toLatin1()));
        auto* form = new QFormLayout(box);
        form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
        m_layout->addWidget(box);
        m_forms.emplace_back(group, form);
        return *form;
    }

    template <typename Box> Box* row(Group group, const char* suffix, const QString& caption, Box* box)
    {
        add_labelled_row(form(group), m_frame, name("lbl", suffix).constData(), caption, box);
        return box;
    }

    QLineEdit* text_row(Group group, const char* suffix, const QString& caption)
    {
        return row(group, suffix, caption, make_control<QLineEdit>(m_frame, name("txt", suffix).constData()));
    }

    QComboBox* list_row(Group group, const char* suffix, const QString& caption, const QStringList& entries,
                        bool takes_typing)
    {
        return row(group, suffix, caption, make_list(m_frame, name("cmb", suffix), entries, takes_typing));
    }

    QWidget* frame() const { return m_frame; }

private:
    QWidget* m_frame;
    QVBoxLayout* m_layout;
    QByteArray m_prefix;
    std::vector<std::pair<Group, QFormLayout*>> m_forms;
};

QPushButton* make_button(QWidget* frame, const QByteArray& name, const QString& caption)
{
    return make_control<QPushButton>(frame, name.constData(), caption);
}

void add_button_row(QVBoxLayout& layout, const QList<QPushButton*>& buttons)
{
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    for (QPushButton* button : buttons) {
        row->addWidget(button);
    }
    layout.addStretch(1);
    layout.addLayout(row);
}

void add_delivery(FrameBuilder& builder, CarrierFrameControls& controls)
{
    QFormLayout& form = builder.form(Group::Delivery);
    controls.direct = make_control<QRadioButton>(builder.frame(), builder.name("opt", "Direct").constData(),
                                                 u"Deliver directly to destination server"_s);
    controls.relay = make_control<QRadioButton>(builder.frame(), builder.name("opt", "Relay").constData(),
                                                u"Deliver through local/ISP mail server"_s);
    form.addRow(controls.direct);
    form.addRow(controls.relay);
    controls.relay_server = builder.text_row(Group::Delivery, "RelayServer", u"Relay Server"_s);
}

void add_field(FrameBuilder& builder, CarrierFrameControls& controls, const FrameShape& shape, Field field)
{
    const Protocol protocol = controls.protocol;
    switch (field) {
    case Field::Address:
        controls.address =
            builder.text_row(Group::Carrier, shape.address_suffix, QString::fromUtf16(shape.address_caption));
        break;
    case Field::SmtpPort:
        controls.port = builder.list_row(Group::Carrier, "Port", u"Port"_s, addressbook::smtp_port_list(), true);
        break;
    case Field::Delivery:
        add_delivery(builder, controls);
        break;
    case Field::SendMethod:
        controls.send_method =
            builder.list_row(Group::Connection, "SendMethod", u"Send Method"_s, addressbook::send_method_list(), false);
        break;
    case Field::NumericPort:
        controls.port = builder.list_row(
            Group::Connection, "Port", u"Port"_s,
            protocol == Protocol::Snpp ? addressbook::snpp_port_list() : addressbook::wctp_port_list(), true);
        break;
    case Field::FaxClass:
        controls.fax_class =
            builder.list_row(Group::Modem, "Class", u"Fax Class"_s, addressbook::fax_class_list(), true);
        break;
    case Field::Baud:
        controls.baud = builder.list_row(Group::Modem, "Baud", u"Baud"_s, addressbook::baud_list(), true);
        break;
    case Field::Parity:
        controls.parity = builder.list_row(Group::Modem, "Parity", u"Parity"_s, addressbook::parity_list(), false);
        break;
    case Field::DataBits:
        controls.data_bits =
            builder.list_row(Group::Modem, "DataBits", u"Data Bits"_s, addressbook::data_bits_list(), false);
        break;
    case Field::StopBits:
        controls.stop_bits =
            builder.list_row(Group::Modem, "StopBits", u"Stop Bits"_s, addressbook::stop_bits_list(), false);
        break;
    case Field::InitString:
        controls.init_string = builder.list_row(
            Group::Modem, "InitString", u"Init String"_s,
            protocol == Protocol::Fax ? addressbook::fax_init_strings() : addressbook::modem_init_strings(), true);
        break;
    case Field::WaitString:
        controls.wait_string = builder.text_row(Group::Modem, "WaitString", u"Wait String"_s);
        break;
    case Field::AuthType: {
        controls.auth = builder.list_row(Group::Authentication, "AuthType", u"Auth Type"_s, {}, false);
        for (const addressbook::AuthType auth : addressbook::auth_list(protocol)) {
            controls.auth->addItem(addressbook::auth_entry_text(auth), static_cast<int>(auth));
        }
        break;
    }
    case Field::Username:
        controls.username = builder.text_row(Group::Authentication, "Username", u"Username"_s);
        break;
    case Field::Password:
        controls.password = builder.text_row(Group::Authentication, "Password", u"Password"_s);
        controls.password->setEchoMode(QLineEdit::Password);
        break;
    case Field::MsgLimit:
        controls.msg_limit = builder.text_row(Group::Limits, "MsgLimit", u"Msg Limit"_s);
        break;
    case Field::MaxChars:
        controls.max_chars = builder.text_row(Group::Limits, "MaxChars", u"Max Chars"_s);
        break;
    case Field::Priority:
        controls.priority = builder.text_row(Group::Limits, "Priority", u"Priority"_s);
        break;
    }
}

QWidget* make_frame(QStackedWidget* stack, const QByteArray& name)
{
    auto* frame = new QWidget(stack);
    frame->setObjectName(QString::fromLatin1(name));
    return frame;
}

} // namespace

CarrierFrameControls frmAddCarrier::build_frame(int protocol_index)
{
    const FrameShape& shape = frame_shapes().at(static_cast<std::size_t>(protocol_index));
    const QByteArray prefix(shape.prefix);
    CarrierFrameControls controls;
    controls.protocol = static_cast<Protocol>(protocol_index);

    controls.main = make_frame(tabCarrier, "fra" + prefix);
    auto* main_layout = new QVBoxLayout(controls.main);
    FrameBuilder main(controls.main, main_layout, prefix);
    controls.name = main.text_row(Group::Carrier, "Name", u"Name"_s);
    controls.protocol_list =
        main.list_row(Group::Carrier, "Protocol", u"Protocol"_s, addressbook::protocol_list(), false);
    for (const Field field : shape.main) {
        add_field(main, controls, shape, field);
    }
    controls.apply = make_button(controls.main, "btn" + prefix + "Apply", u"&Apply"_s);
    controls.cancel = make_button(controls.main, "btn" + prefix + "Cancel", u"Close"_s);
    controls.advanced_button = make_button(controls.main, "btn" + prefix + "Adv", u"Ad&vanced"_s);
    add_button_row(*main_layout, {controls.advanced_button, controls.apply, controls.cancel});

    controls.advanced = make_frame(tabCarrier, "fra" + prefix + "Adv");
    auto* advanced_layout = new QVBoxLayout(controls.advanced);
    FrameBuilder advanced(controls.advanced, advanced_layout, prefix);
    for (const Field field : shape.advanced) {
        add_field(advanced, controls, shape, field);
    }
    controls.back = make_button(controls.advanced, "btn" + prefix + "AdvClose", u"&Back"_s);
    add_button_row(*advanced_layout, {controls.back});
    return controls;
}

void frmAddCarrier::build_frames()
{
    tabCarrier = make_control<QStackedWidget>(this, "tabCarrier");
    for (int index = 0; index < addressbook::protocol_count; ++index) {
        m_frames.at(static_cast<std::size_t>(index)) = build_frame(index);
    }
    // The stack's pages: the nine main frames, then the nine Advanced frames, in protocol order.
    for (const CarrierFrameControls& frame : m_frames) {
        tabCarrier->addWidget(frame.main);
    }
    for (const CarrierFrameControls& frame : m_frames) {
        tabCarrier->addWidget(frame.advanced);
    }
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabCarrier);
}

} // namespace cvd::console
