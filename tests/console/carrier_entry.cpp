#include "carrier_entry.h"

#include "console/frm_add_carrier.h"

#include <QApplication>
#include <QComboBox>
#include <QFocusEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QtTest/QTest>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace cvd::testing {

namespace {

template <typename Control> Control& named(QWidget& dialog, const QString& name)
{
    auto* found = dialog.findChild<Control*>(name);
    if (found == nullptr) {
        throw std::runtime_error("no control " + name.toStdString());
    }
    return *found;
}

QWidget& page_in_view(QWidget& dialog)
{
    return *named<QStackedWidget>(dialog, u"tabCarrier"_s).currentWidget();
}

// The button of the frame in view whose name ends so ("Apply", "Adv", "AdvClose").
QPushButton& button_in_view(QWidget& dialog, const QString& ending)
{
    for (QPushButton* button : page_in_view(dialog).findChildren<QPushButton*>()) {
        if (button->objectName().endsWith(ending)) {
            return *button;
        }
    }
    throw std::runtime_error("no button " + ending.toStdString());
}

} // namespace

QLineEdit& carrier_box(QWidget& dialog, const QString& name)
{
    if (auto* list = dialog.findChild<QComboBox*>(name); list != nullptr && list->lineEdit() != nullptr) {
        return *list->lineEdit();
    }
    return named<QLineEdit>(dialog, name);
}

QComboBox& carrier_list(QWidget& dialog, const QString& name)
{
    return named<QComboBox>(dialog, name);
}

void reach(QWidget& dialog, QWidget& control)
{
    if (page_in_view(dialog).isAncestorOf(&control)) {
        return;
    }
    const bool advanced = page_in_view(dialog).objectName().endsWith(u"Adv"_s);
    QTest::mouseClick(&button_in_view(dialog, advanced ? u"AdvClose"_s : u"Adv"_s), Qt::LeftButton);
    if (!page_in_view(dialog).isAncestorOf(&control)) {
        throw std::runtime_error("control out of reach: " + control.objectName().toStdString());
    }
}

void type_and_leave(QWidget& dialog, const QString& box, const QString& text)
{
    QLineEdit& edit = carrier_box(dialog, box);
    reach(dialog, edit);
    edit.selectAll();
    QTest::keyClick(&edit, Qt::Key_Backspace);
    QTest::keyClicks(&edit, text);
    QFocusEvent leave(QEvent::FocusOut, Qt::TabFocusReason);
    QApplication::sendEvent(&edit, &leave);
}

void choose(QWidget& dialog, const QString& list, const QString& entry)
{
    QComboBox& box = carrier_list(dialog, list);
    reach(dialog, box);
    const int index = box.findText(entry);
    if (index < 0) {
        throw std::runtime_error("no entry " + entry.toStdString());
    }
    box.setCurrentIndex(index);
}

void choose_protocol(QWidget& dialog, addressbook::Protocol protocol)
{
    if (page_in_view(dialog).objectName().endsWith(u"Adv"_s)) {
        QTest::mouseClick(&button_in_view(dialog, u"AdvClose"_s), Qt::LeftButton);
    }
    for (QComboBox* list : page_in_view(dialog).findChildren<QComboBox*>()) {
        if (list->objectName().endsWith(u"Protocol"_s)) {
            list->setCurrentIndex(static_cast<int>(protocol));
            return;
        }
    }
    throw std::runtime_error("no protocol list in view");
}

void press_apply(QWidget& dialog)
{
    if (page_in_view(dialog).objectName().endsWith(u"Adv"_s)) {
        QTest::mouseClick(&button_in_view(dialog, u"AdvClose"_s), Qt::LeftButton);
    }
    QTest::mouseClick(&button_in_view(dialog, u"Apply"_s), Qt::LeftButton);
}

bool add_carrier_through_window(console::ConsoleContext& context, QWidget* owner, const CarrierEntry& entry)
{
    console::frmAddCarrier dialog(context, false, {}, owner);
    dialog.show();
    choose_protocol(dialog, entry.protocol);
    for (QLineEdit* box : page_in_view(dialog).findChildren<QLineEdit*>()) {
        if (box->objectName().endsWith(u"Name"_s)) {
            type_and_leave(dialog, box->objectName(), entry.name);
        }
    }
    for (const auto& [list, text] : entry.chosen) {
        choose(dialog, list, text);
    }
    for (const auto& [box, text] : entry.typed) {
        type_and_leave(dialog, box, text);
    }
    press_apply(dialog);
    return dialog.result() == QDialog::Accepted;
}

} // namespace cvd::testing
