#include "desk/speech/store/StoreFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <sys/stat.h>

namespace desk::speech
{

namespace
{

// "STRC", in the header's field for the program that a file belongs to (SQLite database file format, 1.3).
constexpr quint32 applicationId = 0x53545243;
constexpr quint32 schemaVersion = 2;

const char* const schema[] = {
    "CREATE TABLE clip(id INTEGER PRIMARY KEY, media TEXT NOT NULL UNIQUE, stage INTEGER NOT NULL DEFAULT 0, "
    "percent INTEGER NOT NULL DEFAULT 0, failure TEXT NOT NULL DEFAULT '')",
    "CREATE TABLE speaker(id INTEGER PRIMARY KEY, name TEXT NOT NULL)",
    "CREATE TABLE segment(clip INTEGER NOT NULL REFERENCES clip(id) ON DELETE CASCADE, number INTEGER NOT NULL, "
    "speaker INTEGER NOT NULL, heard INTEGER NOT NULL, words TEXT NOT NULL, track INTEGER NOT NULL DEFAULT -1, PRIMARY "
    "KEY(clip, number)) WITHOUT ROWID",
    "CREATE TABLE correction(clip INTEGER NOT NULL REFERENCES clip(id) ON DELETE CASCADE, start INTEGER NOT NULL, "
    "end INTEGER NOT NULL, heard INTEGER NOT NULL, speaker INTEGER NOT NULL)",
    "CREATE TABLE utterance(number INTEGER PRIMARY KEY, clip INTEGER NOT NULL REFERENCES clip(id) ON DELETE CASCADE, "
    "track INTEGER NOT NULL, words TEXT NOT NULL)",
    "CREATE INDEX utterance_clip ON utterance(clip)",
    "CREATE TABLE position(clip INTEGER NOT NULL REFERENCES clip(id) ON DELETE CASCADE, track INTEGER NOT NULL, "
    "recogniser TEXT NOT NULL, sample INTEGER NOT NULL, PRIMARY KEY(clip, track))",
};

/// What the first version lacks.
const char* const addition = "ALTER TABLE segment ADD COLUMN track INTEGER NOT NULL DEFAULT -1";

struct Header {
    quint32 version = 0;
    quint32 application = 0;
};

Error failure(const QString& path, const QString& what, const QString& next)
{
    return {path, QString(), QString(), what, next};
}

Error damaged(const QString& path, const QString& what)
{
    return failure(path, what, QStringLiteral("put a copy of it in its place, or move it away to start anew"));
}

/// Reads the header as bytes, which changes nothing whatever the file is.
Result<Header> readHeader(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        return failure(path, QStringLiteral("the transcript database cannot be read"),
                       QStringLiteral("check the file's permissions and try again"));
    }
    const QByteArray bytes = file.read(100);
    if (bytes.size() < 100 || !bytes.startsWith(QByteArray("SQLite format 3\0", 16)))
        return damaged(path, QStringLiteral("the transcript database is damaged or no database"));
    const auto number = [&](int at) { return qFromBigEndian<quint32>(bytes.constData() + at); };
    return Header{number(60), number(68)};
}

Status checkOrigin(const QString& path)
{
    const auto header = readHeader(path);
    if (!header)
        return header.error();
    if (header->application != applicationId) {
        return failure(path, QStringLiteral("the database belongs to another program"),
                       QStringLiteral("move it away, or choose another name for the project"));
    }
    if (header->version < 1 || header->version > schemaVersion) {
        return failure(path, QStringLiteral("the transcript database was made by another version of the desk"),
                       QStringLiteral("open it with that version"));
    }
    if (!QFileInfo(path).isWritable()) {
        return failure(path, QStringLiteral("the transcript database cannot be written"),
                       QStringLiteral("check the permissions of the file and its folder and try again"));
    }
    return {};
}

/// Complete under another name before it appears: a crash leaves no half-made database.
Status create(const QString& path)
{
    const QString unfinished = path + QStringLiteral(".new");
    QFile::remove(unfinished);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QString problem;
    bool isMade = false;
    {
        Sql sql(unfinished, Sql::Access::Write);
        sql.run(QStringLiteral("PRAGMA application_id = %1").arg(applicationId));
        sql.run(QStringLiteral("PRAGMA user_version = %1").arg(schemaVersion));
        for (const char* statement : schema)
            sql.run(QString::fromLatin1(statement));
        sql.run(QStringLiteral("PRAGMA journal_mode = WAL"));
        problem = sql.problem();
        isMade = sql.ok();
    }
    if (isMade && QFile::rename(unfinished, path))
        return {};
    QFile::remove(unfinished);
    return failure(path, QStringLiteral("the transcript database cannot be made (%1)").arg(problem),
                   QStringLiteral("check the folder's permissions and the free space, then try again"));
}

/// Reads every page.
Status checkPages(const QString& path, bool& passes)
{
    Sql sql(path, Sql::Access::Read);
    QSqlQuery row = sql.run(QStringLiteral("PRAGMA quick_check(1)"));
    const QString finding = row.next() ? row.value(0).toString() : QString();
    row.finish();
    if (!sql.ok()) {
        const StoreProblem problem = storeProblem(path, sql);
        passes = problem.passes;
        return problem.error;
    }
    if (finding != QLatin1String("ok"))
        return damaged(path, QStringLiteral("the transcript database is damaged (%1)").arg(finding.simplified()));
    return {};
}

/// The header may tell of an older version than the log has.
void bringUpToDate(Sql& sql)
{
    QSqlQuery row = sql.run(QStringLiteral("PRAGMA user_version"));
    const bool isOld = row.next() && row.value(0).toUInt() < schemaVersion;
    row.finish();
    if (!isOld || !sql.begin(Sql::Access::Write))
        return;
    sql.run(QString::fromLatin1(addition));
    sql.run(QStringLiteral("PRAGMA user_version = %1").arg(schemaVersion));
    sql.commit();
}

} // namespace

quint64 fileNumber(const QString& path)
{
    struct stat facts = {};
    return stat(QFile::encodeName(path).constData(), &facts) == 0 ? quint64(facts.st_ino) : 0;
}

StoreProblem movedAway(const QString& path)
{
    return {
        failure(path, QStringLiteral("the transcript database was moved or replaced while it was open"),
                QStringLiteral("put it back and load the clip again, or start the desk again to use what is there")),
        false};
}

StoreProblem storeProblem(const QString& path, const Sql& sql)
{
    switch (sql.failure()) {
    case Sql::Failure::Locked:
        return {failure(path, QStringLiteral("another program has locked the transcript database"),
                        QStringLiteral("end that program; the desk tries again by itself")),
                true};
    case Sql::Failure::Full:
        return {failure(path, QStringLiteral("the disk is full: transcripts cannot be stored"),
                        QStringLiteral("free some space; the desk tries again by itself")),
                true};
    case Sql::Failure::Disk:
        return {failure(path,
                        QStringLiteral("the transcript database cannot be read or written (%1)").arg(sql.problem()),
                        QStringLiteral("check the disk and its free space; the desk tries again by itself")),
                true};
    case Sql::Failure::Damaged:
        return {damaged(path, QStringLiteral("the transcript database is damaged (%1)").arg(sql.problem())), false};
    default:
        return {failure(path, QStringLiteral("the transcript database cannot be used (%1)").arg(sql.problem()),
                        QStringLiteral("check the file and the free space beside it, then try again")),
                false};
    }
}

std::unique_ptr<Sql> openStoreFile(const QString& path, StoreProblem& problem)
{
    problem = {};
    Status status = QFileInfo::exists(path) ? Status() : create(path);
    if (status.ok())
        status = checkOrigin(path);
    if (status.ok())
        status = checkPages(path, problem.passes);
    if (!status.ok()) {
        problem.error = status.error();
        return nullptr;
    }
    auto sql = std::make_unique<Sql>(path, Sql::Access::Write);
    for (const char* pragma : {"PRAGMA foreign_keys = ON", "PRAGMA synchronous = NORMAL", "PRAGMA journal_mode = WAL"})
        sql->run(QString::fromLatin1(pragma));
    if (sql->ok())
        bringUpToDate(*sql);
    if (sql->ok())
        return sql;
    problem = storeProblem(path, *sql);
    return nullptr;
}

} // namespace desk::speech
