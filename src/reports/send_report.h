#pragma once

#include "core/prompter.h"

#include <QList>
#include <QString>

namespace cvd {
struct AppState;
}
namespace cvd::store {
class Database;
}

namespace cvd::reports {

// A recipient that can take a report as a message: one reached by mail or fax, which carry long texts.
struct ReportAddressee
{
    QString name;
    QString full_name;
    QString carrier;
    qint64 maxchars = 0;
};

// Persons (not groups) whose carrier's kind is SMTP, FAX or FAXSRV, by full name. Throws store::Error.
QList<ReportAddressee> report_addressees(store::Database& db);

struct SentReport
{
    Notice notice;
    qint64 message_id = 0; // 0 when nothing was queued
    qsizetype characters = 0;
    bool cut = false;
};

// Queues the report's text as one Waiting row for the addressee, as SEND writes it, cut at the recipient's
// cv_maxchars when that is above 0. The notice says how many characters went and whether the text was cut.
SentReport queue_report(AppState& state, const ReportAddressee& addressee, const QString& text);

} // namespace cvd::reports
