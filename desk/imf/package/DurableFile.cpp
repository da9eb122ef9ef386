#include "desk/imf/package/DurableFile.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace desk::imf
{
namespace
{

struct Advice {
    int errorNumber;
    const char* what;
    const char* next;
};

constexpr std::array<Advice, 9> advices{{
    {ENOSPC, "the disk is full", "free space on it and commit again"},
    {EDQUOT, "the disk quota is used up", "free space and commit again"},
    {EROFS, "the disk is read-only", "choose a folder that can be written to"},
    {EACCES, "writing is not permitted", "choose a folder that you may write to"},
    {EPERM, "writing is not permitted", "choose a folder that you may write to"},
    {ENOENT, "the file or its folder is no longer there", "connect its disk and commit again"},
    {ENOTDIR, "a file stands where a folder is needed", "choose another folder"},
    {EEXIST, "a file of that name is already there", "move it away and commit again"},
    {EIO, "the disk reports an error", "check the disk and commit again"},
}};

class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// 0 or the errno.
int writeAll(int descriptor, const QByteArray& bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.constData() + done, size_t(bytes.size() - done));
        if (count < 0 && errno != EINTR)
            return errno;
        done += qMax<ssize_t>(count, 0);
    }
    return ::fsync(descriptor) == 0 ? 0 : errno;
}

} // namespace

Error systemError(const QString& file, int errorNumber)
{
    for (const Advice& one : advices) {
        if (one.errorNumber == errorNumber)
            return {file, {}, {}, QLatin1String(one.what), QLatin1String(one.next)};
    }
    return {file,
            {},
            {},
            QStringLiteral("the system refuses (%1)").arg(qt_error_string(errorNumber)),
            QStringLiteral("check the folder and commit again")};
}

Status writeNewFile(const QString& path, const QByteArray& bytes)
{
    const Descriptor file(::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file.get() < 0)
        return systemError(path, errno);
    const int failure = writeAll(file.get(), bytes);
    if (failure != 0)
        return systemError(path, failure);
    return {};
}

Status syncToDisk(const QString& path)
{
    const Descriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0)
        return systemError(path, errno);
    // Some network file systems cannot sync a folder and say EINVAL; they order its entries themselves.
    if (::fsync(file.get()) != 0 && errno != EINVAL)
        return systemError(path, errno);
    return {};
}

Status renameToNew(const QString& from, const QString& to)
{
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) == 0)
        return {};
    if (errno != EINVAL && errno != ENOSYS)
        return systemError(errno == ENOENT ? from : to, errno);
    if (::access(target.constData(), F_OK) == 0)
        return systemError(to, EEXIST);
    return renameOver(from, to);
}

Status renameOver(const QString& from, const QString& to)
{
    if (::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0)
        return {};
    return systemError(to, errno);
}

quint64 inodeOf(const QString& path)
{
    struct stat facts {
    };

    return ::lstat(QFile::encodeName(path).constData(), &facts) == 0 ? quint64(facts.st_ino) : 0;
}

bool removeIfSame(const QString& path, quint64 inode)
{
    return inode != 0 && inodeOf(path) == inode && ::unlink(QFile::encodeName(path).constData()) == 0;
}

FolderLock::FolderLock(FolderLock&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

FolderLock& FolderLock::operator=(FolderLock&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

FolderLock::~FolderLock()
{
    unlock();
}

bool FolderLock::tryLock(const QString& folder)
{
    unlock();
    m_descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_descriptor < 0 || ::flock(m_descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
        return true;
    unlock();
    return false;
}

void FolderLock::unlock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}

} // namespace desk::imf
