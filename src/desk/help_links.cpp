#include "desk/help_links.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace cvd::desk {

QStringList help_index_candidates(const QString& program_folder)
{
    const QDir folder(program_folder);
    return {QDir::cleanPath(folder.filePath(u"help/index.html"_s)),
            QDir::cleanPath(folder.filePath(u"../share/corvane-desk/help/index.html"_s))};
}

QString find_help_index(const QString& program_folder)
{
    for (const QString& candidate : help_index_candidates(program_folder)) {
        if (QFileInfo(candidate).isFile()) {
            return candidate;
        }
    }
    return {};
}

Notice help_not_available()
{
    return {u"Unable to open help file"_s, u"Help Not Available"_s};
}

Notice browser_not_found()
{
    return {u"Your internet browser couldn't be started.  Our website is "_s + QString::fromUtf16(kWebsiteAddress),
            u"Browser Not Found"_s, BoxIcon::Warning};
}

} // namespace cvd::desk
