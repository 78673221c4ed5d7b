#include "console/control_map.h"

#include "console/controls.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QSaveFile>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

QString caption_of(const QWidget& control)
{
    if (const auto* button = qobject_cast<const QAbstractButton*>(&control)) {
        return visible_caption(button->text());
    }
    if (const auto* label = qobject_cast<const QLabel*>(&control)) {
        return label->text();
    }
    return control.accessibleName();
}

QString map_line(const QString& name, const QRect& global, const QString& caption)
{
    return u"%1 %2 %3 %4 %5 %6\n"_s.arg(name)
        .arg(global.x())
        .arg(global.y())
        .arg(global.width())
        .arg(global.height())
        .arg(QString(caption).replace(u'\n', u' ').replace(u'\r', u' '));
}

// The first row of a list: its first cell, or for a table every column in view, so that a script reads the
// row as the operator does and lands its click on a visible cell rather than on a hidden column.
void add_first_row(const QAbstractItemView& list, const QString& name, QString& text)
{
    const QAbstractItemModel& model = *list.model();
    QModelIndex first = model.index(0, 0);
    QString caption = first.data().toString();
    if (const auto* table = qobject_cast<const QTableView*>(&list)) {
        QStringList cells;
        first = {};
        for (int column = 0; column < model.columnCount(); ++column) {
            if (table->isColumnHidden(column)) {
                continue;
            }
            const QModelIndex cell = model.index(0, column);
            first = first.isValid() ? first : cell;
            cells.append(cell.data().toString());
        }
        if (!first.isValid()) {
            return;
        }
        caption = cells.join(u" | "_s);
    }
    const QRect row = list.visualRect(first);
    const QRect row_global(list.viewport()->mapToGlobal(row.topLeft()), row.size());
    text += map_line(name + u"[0]"_s, row_global, caption);
}

} // namespace

QString control_map_text(const QWidget& window, const QString& prefix)
{
    QString text;
    const QList<QWidget*> controls = window.findChildren<QWidget*>();
    for (const QWidget* control : controls) {
        if (control->objectName().isEmpty() || !control->isVisibleTo(&window)) {
            continue;
        }
        const QString name = prefix + control->objectName();
        const QRect global(control->mapToGlobal(QPoint(0, 0)), control->size());
        text += map_line(name, global, caption_of(*control));
        if (const auto* button = qobject_cast<const QAbstractButton*>(control); button && button->isCheckable()) {
            text += map_line(name + u"[checked]"_s, global, button->isChecked() ? u"1"_s : u"0"_s);
        }
        const auto* list = qobject_cast<const QAbstractItemView*>(control);
        if (list != nullptr && list->model() != nullptr && list->model()->rowCount() > 0) {
            add_first_row(*list, name, text);
        }
    }
    return text;
}

QString program_map_text(const QWidget& main_window)
{
    QString text = control_map_text(main_window);
    const QList<QWidget*> windows = QApplication::topLevelWidgets();
    for (const QWidget* window : windows) {
        if (window != &main_window && window->isVisible() && !window->objectName().isEmpty()) {
            text += control_map_text(*window, window->objectName() + u"/"_s);
        }
    }
    return text;
}

void publish_control_map(QWidget& window)
{
    const QString path = qEnvironmentVariable("CVD_CONTROL_MAP");
    if (path.isEmpty()) {
        return;
    }
    auto write = [&window, path] {
        QSaveFile file(path);
        if (file.open(QIODevice::WriteOnly)) {
            file.write(program_map_text(window).toUtf8());
            file.commit();
        }
    };
    write();
    auto* timer = new QTimer(&window);
    QObject::connect(timer, &QTimer::timeout, &window, write);
    timer->start(500);
}

} // namespace cvd::console
