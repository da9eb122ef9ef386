#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

namespace desk::speech
{

/// Statements on one SQLite connection. After a failure the following ones do nothing, so that a row of them is checked
/// once at its end. Used by the thread that made it.
class Sql
{
public:
    enum class Access { Read, Write };

    /// Opens an existing file, or with Access::Write makes it. A lock of another process is waited for a fifth of a
    /// second.
    Sql(const QString& path, Access access);
    ~Sql();
    Sql(const Sql&) = delete;
    Sql& operator=(const Sql&) = delete;

    QSqlQuery run(const QString& statement, const QVariantList& values = {});
    /// Starts a transaction, with a clean record of failures. One that will write asks for the lock at once.
    bool begin(Access access);
    /// Ends the transaction; takes it back where a statement in it failed.
    bool commit();

    bool ok() const { return m_failure == Failure::None; }

    enum class Failure { None, Locked, Full, Disk, Damaged, Other };

    Failure failure() const { return m_failure; }

    QString problem() const { return m_problem; }

private:
    void note(const QSqlError& error);

    QString m_name;
    QSqlDatabase m_database;
    QString m_problem;
    Failure m_failure = Failure::None;
};

} // namespace desk::speech
