#pragma once

#include <QList>
#include <QString>
#include <optional>

namespace cvd {

// The line format of the exchange files, and of the preset files older installations kept: one record a line ending in
// CR LF, fields separated by commas. A text stands between double quotes; a double quote inside it is written twice, so
// that any text comes back as it went out. Numbers are bare, booleans and null are words between number signs (#TRUE#,
// #FALSE#, #NULL#).

struct Field
{
    enum class Kind {
        Quoted, // "text"
        Bare,   // anything else up to the next comma or line end, blanks around it dropped
        Hashed, // #WORD#, the word in capitals
    };
    Kind kind = Kind::Bare;
    QString text;

    bool operator==(const Field&) const = default;
};

using Record = QList<Field>;

// The records of a file's content in their order. Empty lines are passed over. When a record cannot be read
// (an unterminated quote, text after a closing quote, an unclosed #), `records` holds those before it and
// `malformed` is set.
struct ParsedFile
{
    QList<Record> records;
    bool malformed = false;
};
ParsedFile parse_records(const QString& content);

// Writing, field by field.
QString quoted_field(const QString& text);
QString number_field(qint64 value);
QString flag_field(bool value);
QString null_field();
// The fields joined by commas and closed by CR LF.
QString record_line(const QList<QString>& fields);

// Reading a field as a column value. nullopt when the field cannot stand for that kind of value; the inner
// nullopt is a null column.
std::optional<std::optional<QString>> field_as_text(const Field& field);
std::optional<std::optional<qint64>> field_as_number(const Field& field);
std::optional<std::optional<bool>> field_as_flag(const Field& field);

} // namespace cvd
