#include "console/controls.h"

#include <QAbstractButton>
#include <QAction>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>

using namespace Qt::StringLiterals;

namespace cvd::console {

QString visible_caption(const QString& text)
{
    QString caption;
    caption.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) == u'&' && i + 1 < text.size()) {
            ++i;
        }
        caption.append(text.at(i));
    }
    return caption;
}

namespace {

QString own_caption(const QWidget& control)
{
    if (const auto* button = qobject_cast<const QAbstractButton*>(&control)) {
        if (!button->text().isEmpty()) {
            return visible_caption(button->text());
        }
    } else if (const auto* label = qobject_cast<const QLabel*>(&control)) {
        return visible_caption(label->text());
    } else if (const auto* group = qobject_cast<const QGroupBox*>(&control)) {
        return visible_caption(group->title());
    } else if (const auto* menu = qobject_cast<const QMenu*>(&control)) {
        return visible_caption(menu->title());
    } else if (control.isWindow()) {
        return control.windowTitle();
    }
    return control.toolTip();
}

} // namespace

void add_labelled_row(QFormLayout& form, QWidget* window, const char* label_name, const QString& caption, QWidget* box)
{
    auto* label = make_control<QLabel>(window, label_name, caption);
    label->setBuddy(box);
    form.addRow(label, box);
}

void publish_accessibility(QWidget& window)
{
    QList<QWidget*> controls = window.findChildren<QWidget*>();
    controls.prepend(&window);
    // Labels name the boxes they stand beside; that name wins over the box's own tooltip.
    for (QWidget* control : std::as_const(controls)) {
        const auto* label = qobject_cast<QLabel*>(control);
        if (label != nullptr && label->buddy() != nullptr) {
            label->buddy()->setAccessibleName(visible_caption(label->text()));
        }
    }
    for (QWidget* control : std::as_const(controls)) {
        if (control->objectName().isEmpty() || control->objectName().startsWith(u"qt_"_s)) {
            continue;
        }
        control->setAccessibleDescription(control->objectName());
        const QString caption = own_caption(*control);
        if (!caption.isEmpty() && (control->accessibleName().isEmpty() || qobject_cast<QLabel*>(control) ||
                                   qobject_cast<QAbstractButton*>(control))) {
            control->setAccessibleName(caption);
        }
    }
}

} // namespace cvd::console
