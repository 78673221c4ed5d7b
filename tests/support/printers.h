#pragma once

#include "core/prompter.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <ostream>

// How GoogleTest shows our values and Qt's when an expectation fails; found by argument-dependent lookup.
namespace cvd {

inline void PrintTo(const Notice& notice, std::ostream* out)
{
    *out << "'" << notice.text.toStdString() << "' under '" << notice.title.toStdString() << "'";
}

} // namespace cvd

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& value, std::ostream* out)
{
    *out << '"' << value.toStdString() << '"';
}
inline void PrintTo(const QByteArray& value, std::ostream* out)
{
    *out << value.size() << " bytes: \"" << value.left(64).toPercentEncoding(" \n").toStdString() << '"';
}
inline void PrintTo(const QDateTime& value, std::ostream* out)
{
    *out << value.toString(Qt::ISODate).toStdString();
}
QT_END_NAMESPACE
