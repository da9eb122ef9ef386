#pragma once

#include "desk/base/Result.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace desk::imf
{

/// A file by name, relative to the delivery's folder, and number.
struct NumberedFile {
    QString name;
    quint64 inode = 0;
};

/// What a commit is about to rename, on disk before the first rename. The number of the new asset map tells afterwards
/// whether the commit had come through.
struct CommitJournal {
    quint64 assetMap = 0;
    /// Files that the commit brings in; they go when it did not come through.
    QVector<NumberedFile> brought;
    /// Files of the former delivery that nothing refers to any longer; they go when it did.
    QVector<NumberedFile> obsolete;
};

/// The hidden folder inside a delivery in which one commit prepares its files.
class CommitFolder
{
public:
    enum class Parent { Existed, WasMade };

    /// Makes it. `parent`: whether the delivery's folder itself was made for this commit.
    static Result<CommitFolder> create(const QString& deliveryFolder, Parent parent);
    /// Those that a crash has left.
    static QVector<CommitFolder> leftIn(const QString& deliveryFolder);

    const QString& path() const { return m_path; }

    QString file(const QString& name) const { return m_path + QLatin1Char('/') + name; }

    /// On disk when it returns.
    Status writeJournal(const CommitJournal& journal) const;

    /// Ends the commit: backward where the asset map was not replaced, forward where it was, and removes the folder.
    /// May be interrupted at any point and run again. Answers what it has removed from the delivery.
    QStringList settle() const;

private:
    CommitFolder(QString deliveryFolder, QString path) : m_delivery(std::move(deliveryFolder)), m_path(std::move(path))
    {
    }

    CommitJournal readJournal() const;

    QString m_delivery;
    QString m_path;
};

/// True for the names that CommitFolder uses.
bool isCommitFolderName(const QString& name);

} // namespace desk::imf
