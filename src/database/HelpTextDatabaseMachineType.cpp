// The MachineType column as text: older databases stored it as a number.
#include "database/HelpTextDatabase.h"
#include "database/HelpTextDatabaseRepair.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "database/Database.h"

namespace ht
{

namespace
{

const QString kColumn = QStringLiteral("MachineType");
const QString kLeftover = QStringLiteral("MachineType_Old");
const QString kTextDeclaration = QStringLiteral("TEXT COLLATE NOCASE");

bool isTextColumn(Database &db, const QString &table, const QString &column)
{
    for (const ColumnInfo &c : db.columns(table)) {
        if (c.name.compare(column, Qt::CaseInsensitive) == 0)
            return c.isText();
    }
    throw DbError(("no column " + column + " in table " + table).toStdString());
}

} // namespace

bool machineTypeNeedsRepair(Database &db, const QString &table)
{
    return db.hasColumn(table, kLeftover) || !isTextColumn(db, table, kColumn);
}

void repairMachineTypeColumn(Database &db, const QString &table)
{
    Database::Transaction transaction(db);
    if (db.hasColumn(table, kLeftover)) {
        // An earlier conversion stopped half-way: finish it from the values it set aside.
        if (db.hasColumn(table, kColumn)) {
            db.exec(QStringLiteral("UPDATE %1 SET %2 = %3 WHERE %2 IS NULL")
                        .arg(quoteIdentifier(table), quoteIdentifier(kColumn), quoteIdentifier(kLeftover)));
            db.dropColumn(table, kLeftover);
        } else {
            db.renameColumn(table, kLeftover, kColumn);
        }
    }
    // The table is made again with a text column; the values are stored as their text.
    if (!isTextColumn(db, table, kColumn))
        db.changeColumnType(table, kColumn, kTextDeclaration);
    transaction.commit();
}

void CorrectFormatMachineName(Context &ctx, const QString &table)
{
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadWrite);
        if (machineTypeNeedsRepair(*db, table))
            repairMachineTypeColumn(*db, table);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CorrectFormatMachineName"), e);
    }
}

} // namespace ht
