#include "desk/speech/store/Sql.h"

#include <QSqlError>
#include <QUuid>

namespace desk::speech
{

namespace
{

/// By SQLite's primary result codes.
Sql::Failure failureOf(int code)
{
    switch (code) {
    case 5: // SQLITE_BUSY
    case 6: // SQLITE_LOCKED
        return Sql::Failure::Locked;
    case 13: // SQLITE_FULL
        return Sql::Failure::Full;
    case 10: // SQLITE_IOERR
        return Sql::Failure::Disk;
    case 11: // SQLITE_CORRUPT
    case 26: // SQLITE_NOTADB
        return Sql::Failure::Damaged;
    default:
        return Sql::Failure::Other;
    }
}

} // namespace

Sql::Sql(const QString& path, Access access) : m_name(QUuid::createUuid().toString())
{
    m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
    m_database.setDatabaseName(path);
    QString options = QStringLiteral("QSQLITE_BUSY_TIMEOUT=200");
    if (access == Access::Read)
        options += QStringLiteral(";QSQLITE_OPEN_READONLY");
    m_database.setConnectOptions(options);
    if (!m_database.open())
        note(m_database.lastError());
}

Sql::~Sql()
{
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

QSqlQuery Sql::run(const QString& statement, const QVariantList& values)
{
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    if (!ok())
        return query;
    if (!query.prepare(statement)) {
        note(query.lastError());
        return query;
    }
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!query.exec())
        note(query.lastError());
    return query;
}

bool Sql::begin(Access access)
{
    m_problem.clear();
    m_failure = Failure::None;
    // A transaction that finds the write lock taken half-way could not wait for it.
    run(access == Access::Write ? QStringLiteral("BEGIN IMMEDIATE") : QStringLiteral("BEGIN"));
    return ok();
}

bool Sql::commit()
{
    run(QStringLiteral("COMMIT"));
    if (ok())
        return true;
    QSqlQuery(m_database).exec(QStringLiteral("ROLLBACK"));
    return false;
}

void Sql::note(const QSqlError& error)
{
    m_failure = failureOf(error.nativeErrorCode().toInt() & 0xff);
    m_problem = error.databaseText().isEmpty() ? error.driverText() : error.databaseText();
}

} // namespace desk::speech
