#pragma once

#include "desk/base/Result.h"

#include <QByteArray>
#include <QString>

namespace desk::imf
{

/// An error for a failed call of the system, with a next step that fits its errno.
Error systemError(const QString& file, int errorNumber);

/// Writes a new file and brings it to the disk. An existing file is an error.
Status writeNewFile(const QString& path, const QByteArray& bytes);

/// Brings a file's bytes, or a folder's entries, to the disk.
Status syncToDisk(const QString& path);

/// Renames within a file system; an existing target is an error and stays.
Status renameToNew(const QString& from, const QString& to);
/// Renames within a file system in the place of what is there.
Status renameOver(const QString& from, const QString& to);

/// Number of the file within its file system; 0 when there is none. A rename keeps it.
quint64 inodeOf(const QString& path);

/// Removes the file when it still is the one with that number.
bool removeIfSame(const QString& path, quint64 inode);

/// Keeps other transactions out of a folder, those of other processes too. The system drops it when the process ends.
class FolderLock
{
public:
    FolderLock() = default;
    FolderLock(FolderLock&& other) noexcept;
    FolderLock& operator=(FolderLock&& other) noexcept;
    ~FolderLock();

    /// False where another holds it. File systems without locks count as free.
    bool tryLock(const QString& folder);
    void unlock();

private:
    int m_descriptor = -1;
};

} // namespace desk::imf
