#include "console/control_map.h"

#include "console/controls.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QFile>
#include <QLabel>
#include <QSaveFile>
#include <QStatusBar>
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

} // namespace

QString control_map_text(const QWidget& window)
{
    QString text;
    const QList<QWidget*> controls = window.findChildren<QWidget*>();
    for (const QWidget* control : controls) {
        if (control->objectName().isEmpty() || !control->isVisibleTo(&window)) {
            continue;
        }
        const QRect global(control->mapToGlobal(QPoint(0, 0)), control->size());
        text += map_line(control->objectName(), global, caption_of(*control));
        const auto* list = qobject_cast<const QAbstractItemView*>(control);
        if (list != nullptr && list->model() != nullptr && list->model()->rowCount() > 0) {
            const QModelIndex first = list->model()->index(0, 0);
            const QRect row = list->visualRect(first);
            const QRect row_global(list->viewport()->mapToGlobal(row.topLeft()), row.size());
            text += map_line(control->objectName() + u"[0]"_s, row_global, first.data().toString());
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
            file.write(control_map_text(window).toUtf8());
            file.commit();
        }
    };
    write();
    auto* timer = new QTimer(&window);
    QObject::connect(timer, &QTimer::timeout, &window, write);
    timer->start(500);
}

} // namespace cvd::console
