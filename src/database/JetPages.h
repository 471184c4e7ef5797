#pragma once
// Internal to the database layer: a Jet 4 file read through the program's own
// page code. Its tables are copied into the memory database, each row with
// where it lies in the file. Opened for writing, the rows added, deleted and
// updated are written into the file when the change is committed; changing
// the design of tables is refused.

#include "database/jet/JetEditor.h"

#include <QHash>
#include <QSet>
#include <memory>

namespace ht
{

struct JetPages {
    std::unique_ptr<jet::Editor> file;                // the file as last read or written here
    QHash<QString, QHash<qint64, quint32>> rowPlaces; // table -> rowid -> packed row pointer
    QSet<QPair<QString, qint64>> changed;             // rows updated since the last write
    QSet<QPair<QString, qint64>> inserted;            // rows added since the last write
    QHash<QString, QHash<qint64, quint32>> deleted;   // table -> rowid -> slot of rows deleted since
    bool pending() const { return !changed.isEmpty() || !inserted.isEmpty() || !deleted.isEmpty(); }
    void forget()
    {
        changed.clear();
        inserted.clear();
        deleted.clear();
    }
    QString refusal;      // what was refused last, for the message
    bool copying = false; // a table is being copied in
    bool writable = false;
};

} // namespace ht
