#pragma once

#include "desk/spelling.h"

#include <memory>

struct str_enchant_broker;
struct str_enchant_dict;

namespace cvd::console {

// The spell check's dictionary through Enchant, over the installed Hunspell dictionaries: the language of
// the locale, else English (US). Added words go to Enchant's personal word list of that language.
class EnchantDictionary : public desk::Dictionary
{
public:
    // nullptr when no dictionary of either language is installed.
    static std::unique_ptr<EnchantDictionary> open();
    ~EnchantDictionary() override;
    EnchantDictionary(const EnchantDictionary&) = delete;
    EnchantDictionary& operator=(const EnchantDictionary&) = delete;

    bool check(const QString& word) override;
    QStringList suggest(const QString& word) override;
    void add_to_personal(const QString& word) override;
    void ignore_all(const QString& word) override;

private:
    EnchantDictionary(str_enchant_broker* broker, str_enchant_dict* dict) : m_broker(broker), m_dict(dict) {}

    str_enchant_broker* m_broker;
    str_enchant_dict* m_dict;
};

} // namespace cvd::console
