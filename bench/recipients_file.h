#pragma once

#include "bench_program.h"
#include "exchange/text_exchange.h"

#include <QString>

// A text file of `count` recipients in `folder`, written by the program's own export.
inline QString make_recipients_file(const QString& folder, int count)
{
    using namespace Qt::StringLiterals;
    BenchProgram<> source;
    source.open_named_databases(u"source"_s);
    {
        cvd::store::Transaction transaction(source.state.global_db);
        cvd::store::Statement insert = source.state.global_db.prepare(
            u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_id, cv_carrier, cv_maxchars, cv_alpha, "
            "cv_on_call, cv_ad_hoc, cv_drop_control, cv_group, cv_SendSubject, cv_extra1, cv_extra2, "
            "cv_remove_from, cv_priority) VALUES (?1, ?2, ?3, 'tapnet', 240, -1, 0, 0, 0, 0, 0, 'Ward 3', '', 0, "
            "100)"_s);
        for (int row = 0; row < count; ++row) {
            insert.reset();
            insert.bind(1, u"user"_s + QString::number(row))
                .bind(2, u"User, Number "_s + QString::number(row))
                .bind(3, QString::number(5550000 + row));
            insert.exec();
        }
        transaction.commit();
    }
    QString path = folder + u"/recip.txt"_s;
    cvd::exchange::export_text(source.state, cvd::exchange::ExchangeKind::Recipients, path);
    return path;
}
