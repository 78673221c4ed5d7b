#include "core/record_format.h"

using namespace Qt::Literals::StringLiterals;

namespace cvd {

namespace {

bool is_blank(QChar ch)
{
    return ch == u' ' || ch == u'\t';
}

bool is_line_end(QChar ch)
{
    return ch == u'\r' || ch == u'\n';
}

// Walks the content one field at a time.
class Reader
{
public:
    explicit Reader(const QString& content) : m_text(content) {}

    ParsedFile run()
    {
        ParsedFile result;
        while (true) {
            skip_empty_lines();
            if (at_end()) {
                return result;
            }
            std::optional<Record> record = read_record();
            if (!record) {
                result.malformed = true;
                return result;
            }
            result.records.append(*record);
        }
    }

private:
    bool at_end() const { return m_pos >= m_text.size(); }
    QChar current() const { return m_text.at(m_pos); }

    void skip_blanks()
    {
        while (!at_end() && is_blank(current())) {
            ++m_pos;
        }
    }

    void skip_empty_lines()
    {
        while (true) {
            qsizetype start = m_pos;
            skip_blanks();
            if (at_end()) {
                return;
            }
            if (!is_line_end(current())) {
                m_pos = start;
                return;
            }
            skip_line_end();
        }
    }

    void skip_line_end()
    {
        if (!at_end() && current() == u'\r') {
            ++m_pos;
        }
        if (!at_end() && current() == u'\n') {
            ++m_pos;
        }
    }

    std::optional<Record> read_record()
    {
        Record record;
        while (true) {
            std::optional<Field> field = read_field();
            if (!field) {
                return std::nullopt;
            }
            record.append(*field);
            skip_blanks();
            if (at_end()) {
                return record;
            }
            if (current() == u',') {
                ++m_pos;
                continue;
            }
            if (is_line_end(current())) {
                skip_line_end();
                return record;
            }
            return std::nullopt; // text after a closing quote or number sign
        }
    }

    std::optional<Field> read_field()
    {
        skip_blanks();
        if (at_end()) {
            return Field{Field::Kind::Bare, QString()};
        }
        if (current() == u'"') {
            return read_quoted();
        }
        if (current() == u'#') {
            return read_hashed();
        }
        return read_bare();
    }

    std::optional<Field> read_quoted()
    {
        QString text;
        ++m_pos;
        while (!at_end()) {
            QChar ch = current();
            ++m_pos;
            if (ch != u'"') {
                text.append(ch);
            } else if (!at_end() && current() == u'"') {
                text.append(ch);
                ++m_pos;
            } else {
                return Field{Field::Kind::Quoted, text};
            }
        }
        return std::nullopt;
    }

    std::optional<Field> read_hashed()
    {
        qsizetype start = ++m_pos;
        while (!at_end() && current() != u'#' && !is_line_end(current())) {
            ++m_pos;
        }
        if (at_end() || current() != u'#') {
            return std::nullopt;
        }
        QString word = m_text.mid(start, m_pos - start).trimmed().toUpper();
        ++m_pos;
        return Field{Field::Kind::Hashed, word};
    }

    Field read_bare()
    {
        qsizetype start = m_pos;
        while (!at_end() && current() != u',' && !is_line_end(current())) {
            ++m_pos;
        }
        return Field{Field::Kind::Bare, m_text.mid(start, m_pos - start).trimmed()};
    }

    const QString& m_text;
    qsizetype m_pos = 0;
};

} // namespace

ParsedFile parse_records(const QString& content)
{
    return Reader(content).run();
}

QString quoted_field(const QString& text)
{
    QString doubled = text;
    doubled.replace(u"\""_s, u"\"\""_s);
    return u"\""_s + doubled + u"\""_s;
}

QString number_field(qint64 value)
{
    return QString::number(value);
}

QString flag_field(bool value)
{
    return value ? u"#TRUE#"_s : u"#FALSE#"_s;
}

QString null_field()
{
    return u"#NULL#"_s;
}

QString record_line(const QList<QString>& fields)
{
    return fields.join(u',') + u"\r\n"_s;
}

std::optional<std::optional<QString>> field_as_text(const Field& field)
{
    if (field.kind != Field::Kind::Hashed) {
        return std::optional<QString>(field.text);
    }
    if (field.text == u"NULL"_s) {
        return std::optional<QString>();
    }
    if (field.text == u"TRUE"_s) {
        return std::optional<QString>(u"True"_s);
    }
    if (field.text == u"FALSE"_s) {
        return std::optional<QString>(u"False"_s);
    }
    return std::nullopt;
}

std::optional<std::optional<qint64>> field_as_number(const Field& field)
{
    if (field.kind == Field::Kind::Hashed) {
        if (field.text == u"NULL"_s) {
            return std::optional<qint64>();
        }
        return std::nullopt;
    }
    bool ok = false;
    qint64 value = field.text.trimmed().toLongLong(&ok);
    if (!ok) {
        return std::nullopt;
    }
    return std::optional<qint64>(value);
}

std::optional<std::optional<bool>> field_as_flag(const Field& field)
{
    if (field.kind == Field::Kind::Hashed) {
        if (field.text == u"NULL"_s) {
            // A present answer that holds no value: the column is null.
            std::optional<std::optional<bool>> null_flag;
            null_flag.emplace(std::nullopt);
            return null_flag;
        }
        if (field.text == u"TRUE"_s || field.text == u"FALSE"_s) {
            return std::optional<bool>(field.text == u"TRUE"_s);
        }
        return std::nullopt;
    }
    QString text = field.text.trimmed();
    if (text.compare(u"true"_s, Qt::CaseInsensitive) == 0 || text.compare(u"false"_s, Qt::CaseInsensitive) == 0) {
        return std::optional<bool>(text.compare(u"true"_s, Qt::CaseInsensitive) == 0);
    }
    bool ok = false;
    qint64 value = text.toLongLong(&ok);
    if (!ok) {
        return std::nullopt;
    }
    return std::optional<bool>(value != 0);
}

} // namespace cvd
