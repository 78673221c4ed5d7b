#include "console/recipient_frames.h"

#include "console/controls.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

using addressbook::Protocol;
using addressbook::RecipientFlag;

constexpr int kBoxMinimumWidth = 280;

// The part of every control name that says which protocol's frame it sits in, in Protocol order.
const std::array<const char*, addressbook::protocol_count> kPrefixes = {"Fax", "FaxSrv", "Gsmat", "Smtp", "Snpp",
                                                                        "Tap", "Tone",   "Ucp",   "Wctp"};

// "txt" + "Tap" + "FullName" as the objectName of a control.
QByteArray control_name(const char* kind, Protocol protocol, const char* what)
{
    QByteArray name(kind);
    name.append(kPrefixes.at(static_cast<std::size_t>(protocol))).append(what);
    return name;
}

template <typename Control, typename... Args>
Control* frame_control(QWidget* parent, const char* kind, Protocol protocol, const char* what, Args&&... args)
{
    return make_control<Control>(parent, control_name(kind, protocol, what).constData(), std::forward<Args>(args)...);
}

// A box with its label in the next row of the grid.
void add_row(QGridLayout& grid, QLabel* label, QWidget* box)
{
    const int row = grid.rowCount();
    label->setBuddy(box);
    box->setMinimumWidth(kBoxMinimumWidth);
    grid.addWidget(label, row, 0);
    grid.addWidget(box, row, 1);
}

QLineEdit* labelled_box(QGridLayout& grid, QWidget* frame, Protocol protocol, const char* what, const QString& caption)
{
    auto* box = frame_control<QLineEdit>(frame, "txt", protocol, what);
    add_row(grid, frame_control<QLabel>(frame, "lbl", protocol, what, caption), box);
    return box;
}

void build_main(RecipientFrameControls& controls, QWidget* parent)
{
    const Protocol protocol = controls.protocol;
    const addressbook::RecipientFrame& frame = addressbook::recipient_frame(protocol);
    controls.main = frame_control<QWidget>(parent, "fra", protocol, "");
    QWidget* main = controls.main;
    auto* grid = new QGridLayout;
    controls.full_name = labelled_box(*grid, main, protocol, "FullName", u"Full Name"_s);
    controls.short_name = labelled_box(*grid, main, protocol, "ShortName", u"Short Name"_s);
    controls.carrier = frame_control<QComboBox>(main, "cmb", protocol, "Carrier");
    add_row(*grid, frame_control<QLabel>(main, "lbl", protocol, "Carrier", u"Carrier"_s), controls.carrier);
    controls.identity = make_control<QLineEdit>(main, frame.identity_box.toLatin1().constData());
    add_row(*grid,
            make_control<QLabel>(main, QString(u"lbl"_s + frame.identity_box.mid(3)).toLatin1().constData(),
                                 frame.identity_label),
            controls.identity);

    controls.apply = frame_control<QPushButton>(main, "btn", protocol, "Apply", u"&Apply"_s);
    controls.close = frame_control<QPushButton>(main, "btn", protocol, "Close", u"&Close"_s);
    controls.to_advanced = frame_control<QPushButton>(main, "btn", protocol, "Advanced", u"Ad&vanced"_s);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(controls.apply);
    buttons->addWidget(controls.close);
    buttons->addWidget(controls.to_advanced);
    auto* layout = new QVBoxLayout(main);
    layout->addLayout(grid);
    layout->addStretch();
    layout->addLayout(buttons);
}

void build_advanced(RecipientFrameControls& controls, QWidget* parent)
{
    const Protocol protocol = controls.protocol;
    const addressbook::RecipientFrame& frame = addressbook::recipient_frame(protocol);
    controls.advanced = frame_control<QWidget>(parent, "fra", protocol, "Adv");
    QWidget* advanced = controls.advanced;
    auto* grid = new QGridLayout;
    controls.type = frame_control<QComboBox>(advanced, "cmb", protocol, "Type");
    controls.type->addItems({addressbook::recipient_type_text(addressbook::RecipientType::Normal),
                             addressbook::recipient_type_text(addressbook::RecipientType::AdHoc)});
    add_row(*grid, frame_control<QLabel>(advanced, "lbl", protocol, "Type", u"Type"_s), controls.type);
    controls.comment1 = labelled_box(*grid, advanced, protocol, "Comment1", addressbook::recipient_comment_label(1));
    controls.comment2 = labelled_box(*grid, advanced, protocol, "Comment2", addressbook::recipient_comment_label(2));
    controls.max_chars = labelled_box(*grid, advanced, protocol, "MaxChars", u"Max Chars"_s);
    controls.priority = labelled_box(*grid, advanced, protocol, "Priority", addressbook::recipient_priority_label());

    auto* flags = new QVBoxLayout;
    for (const RecipientFlag which : addressbook::all_recipient_flags) {
        const addressbook::FlagSlot& slot = frame.slot(which);
        if (!slot.offered()) {
            continue;
        }
        auto* box = make_control<QCheckBox>(advanced, slot.box.toLatin1().constData(),
                                            addressbook::recipient_flag_caption(which));
        controls.flags.at(static_cast<std::size_t>(which)) = box;
        flags->addWidget(box);
    }
    controls.back = frame_control<QPushButton>(advanced, "btn", protocol, "Back", u"&Back"_s);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(controls.back);
    auto* layout = new QVBoxLayout(advanced);
    layout->addLayout(grid);
    layout->addLayout(flags);
    layout->addStretch();
    layout->addLayout(buttons);
}

} // namespace

RecipientFrameControls build_recipient_frames(QWidget* parent, Protocol protocol)
{
    RecipientFrameControls controls;
    controls.protocol = protocol;
    build_main(controls, parent);
    build_advanced(controls, parent);
    return controls;
}

} // namespace cvd::console
