#include "console/enchant_dictionary.h"

#include <QLocale>
#include <enchant.h>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// "de_DE", then "de", then the English the program is written in.
QStringList wanted_languages()
{
    const QString locale = QLocale::system().name();
    QStringList tags{locale, locale.section(u'_', 0, 0), u"en_US"_s};
    tags.removeAll(u"C"_s);
    tags.removeDuplicates();
    return tags;
}

} // namespace

std::unique_ptr<EnchantDictionary> EnchantDictionary::open()
{
    EnchantBroker* broker = enchant_broker_init();
    if (broker == nullptr) {
        return nullptr;
    }
    for (const QString& tag : wanted_languages()) {
        const QByteArray tag_bytes = tag.toUtf8();
        if (enchant_broker_dict_exists(broker, tag_bytes.constData()) == 0) {
            continue;
        }
        if (EnchantDict* dict = enchant_broker_request_dict(broker, tag_bytes.constData())) {
            return std::unique_ptr<EnchantDictionary>(new EnchantDictionary(broker, dict));
        }
    }
    enchant_broker_free(broker);
    return nullptr;
}

EnchantDictionary::~EnchantDictionary()
{
    enchant_broker_free_dict(m_broker, m_dict);
    enchant_broker_free(m_broker);
}

bool EnchantDictionary::check(const QString& word)
{
    const QByteArray bytes = word.toUtf8();
    // Below zero is Enchant's own failure; the word is then left alone rather than flagged.
    return enchant_dict_check(m_dict, bytes.constData(), bytes.size()) <= 0;
}

QStringList EnchantDictionary::suggest(const QString& word)
{
    const QByteArray bytes = word.toUtf8();
    size_t count = 0;
    char** found = enchant_dict_suggest(m_dict, bytes.constData(), bytes.size(), &count);
    QStringList suggestions;
    for (size_t i = 0; i < count; ++i) {
        suggestions.append(QString::fromUtf8(found[i]));
    }
    if (found != nullptr) {
        enchant_dict_free_string_list(m_dict, found);
    }
    return suggestions;
}

void EnchantDictionary::add_to_personal(const QString& word)
{
    const QByteArray bytes = word.toUtf8();
    enchant_dict_add(m_dict, bytes.constData(), bytes.size());
}

void EnchantDictionary::ignore_all(const QString& word)
{
    const QByteArray bytes = word.toUtf8();
    enchant_dict_add_to_session(m_dict, bytes.constData(), bytes.size());
}

} // namespace cvd::console
