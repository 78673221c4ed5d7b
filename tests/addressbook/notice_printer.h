#pragma once

#include "addressbook/carrier_rules.h"

#include <ostream>

namespace cvd::addressbook {

// Shows a box's text and title when an expectation on a notice fails.
inline void PrintTo(const CarrierNotice& notice, std::ostream* out)
{
    *out << "'" << notice.text.toStdString() << "' under '" << notice.title.toStdString() << "'";
}

} // namespace cvd::addressbook
