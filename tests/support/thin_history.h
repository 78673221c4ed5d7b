#pragma once

#include "store/database.h"

namespace cvd::testing {

// A history of `rows` messages (cv_transaction 1 to rows) of which all but every `keep_every`th are deleted
// again, in one transaction: a file mostly of free pages, for the compaction to shrink. `sent` is the
// stored flag of every row (-1 finished, 0 waiting).
inline void add_thin_history(store::Database& db, int rows, int keep_every, int sent)
{
    using namespace Qt::StringLiterals;
    store::Transaction transaction(db);
    store::Statement insert = db.prepare(u"INSERT INTO cv_messages (cv_recipient, cv_message, cv_sent, cv_error, "
                                         "cv_scheduled, cv_transaction) VALUES ('bob', ?1, ?2, 0, ?2, ?3)"_s);
    for (int row = 1; row <= rows; ++row) {
        insert.reset();
        insert.bind(1, u"an old page with some text, number %1"_s.arg(row)).bind(2, sent).bind(3, row);
        insert.exec();
    }
    store::Statement remove = db.prepare(u"DELETE FROM cv_messages WHERE cv_transaction % ?1 <> 0"_s);
    remove.bind(1, keep_every);
    remove.exec();
    transaction.commit();
}

} // namespace cvd::testing
