#include "console/program_icon.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

QIcon program_icon()
{
    QIcon built_in;
    built_in.addFile(u":/icons/corvane-desk-48.png"_s, QSize(48, 48));
    built_in.addFile(u":/icons/corvane-desk-128.png"_s, QSize(128, 128));
    return QIcon::fromTheme(u"corvane-desk"_s, built_in);
}

} // namespace cvd::console
