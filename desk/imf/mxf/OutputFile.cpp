#include "desk/imf/mxf/OutputFile.h"

#include <QFile>

#include <openssl/evp.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace desk::imf
{

namespace
{

struct Cause {
    int code;
    const char* what;
    const char* next;
};

const Cause causes[] = {
    {ENOSPC, "the disk is full", "free some space or choose another folder, then try again"},
    {EDQUOT, "the disk quota is used up", "free some space or choose another folder, then try again"},
    {EFBIG, "the file system does not take a file of this size", "choose another folder"},
    {ENOENT, "the folder is gone", "make it available again or choose another one, then try again"},
    {EACCES, "the folder may not be written to", "choose another folder"},
    {EROFS, "the disk is read-only", "choose another folder"},
    {EEXIST, "the file exists already", "choose another name"},
};

} // namespace

void OutputFile::FreeDigest::operator()(evp_md_ctx_st* context) const
{
    EVP_MD_CTX_free(context);
}

OutputFile::OutputFile(QString path, int descriptor, Hashing hashing)
    : m_path(std::move(path)), m_descriptor(descriptor), m_hashing(hashing), m_digest(EVP_MD_CTX_new())
{
    EVP_DigestInit_ex(m_digest.get(), EVP_sha1(), nullptr);
}

OutputFile::~OutputFile()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

Result<std::unique_ptr<OutputFile>> OutputFile::create(const QString& path, Hashing hashing)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    const int code = errno;
    std::unique_ptr<OutputFile> file(new OutputFile(path, descriptor, hashing));
    if (descriptor < 0)
        return file->failure(code);
    return file;
}

Error OutputFile::failure(int code) const
{
    const QString where = m_position > 0 ? QStringLiteral("offset %1").arg(m_position) : QString();
    for (const Cause& cause : causes) {
        if (cause.code == code)
            return {m_path, {}, where, QString::fromLatin1(cause.what), QString::fromLatin1(cause.next)};
    }
    return {m_path,
            {},
            where,
            QStringLiteral("it cannot be written (%1)").arg(QString::fromLocal8Bit(std::strerror(code))),
            QStringLiteral("check the disk, then try again")};
}

Status OutputFile::write(const char* data, qint64 size)
{
    if (m_hashing == Hashing::WhileWriting)
        EVP_DigestUpdate(m_digest.get(), data, std::size_t(size));
    while (size > 0) {
        const ssize_t written = ::write(m_descriptor, data, std::size_t(size));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return failure(written < 0 ? errno : ENOSPC);
        data += written;
        size -= written;
        m_position += written;
    }
    constexpr qint64 interval = 4 << 20;
    return m_position - m_lastLook < interval ? Status() : lookAndFlush();
}

Status OutputFile::rewrite(qint64 offset, const QByteArray& bytes)
{
    Q_ASSERT(m_hashing == Hashing::Afterwards);
    if (::pwrite(m_descriptor, bytes.constData(), std::size_t(bytes.size()), offset) != bytes.size())
        return failure(errno);
    return {};
}

Status OutputFile::hashWhole()
{
    std::vector<char> buffer(1 << 20);
    for (qint64 at = 0; at < m_position;) {
        const ssize_t count = ::pread(m_descriptor, buffer.data(), buffer.size(), at);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return failure(count < 0 ? errno : EIO);
        EVP_DigestUpdate(m_digest.get(), buffer.data(), std::size_t(count));
        at += count;
    }
    return {};
}

/// Writing goes on into a file that somebody has removed or whose folder has gone.
bool OutputFile::isStillThere()
{
    struct stat byName = {};
    struct stat byDescriptor = {};
    return ::stat(QFile::encodeName(m_path).constData(), &byName) == 0 && ::fstat(m_descriptor, &byDescriptor) == 0 &&
           byName.st_ino == byDescriptor.st_ino && byName.st_dev == byDescriptor.st_dev && byName.st_size == m_position;
}

/// What is left for finish() to wait for is little then.
Status OutputFile::lookAndFlush()
{
#ifdef SYNC_FILE_RANGE_WRITE
    // Only a hint: what the disk refuses finish() reports.
    ::sync_file_range(m_descriptor, m_lastLook, m_position - m_lastLook, SYNC_FILE_RANGE_WRITE);
#endif
    m_lastLook = m_position;
    return isStillThere() ? Status() : failure(ENOENT);
}

Result<QByteArray> OutputFile::finish()
{
    if (::fsync(m_descriptor) != 0)
        return failure(errno);
    if (m_hashing == Hashing::Afterwards) {
        if (const Status status = hashWhole(); !status)
            return status.error();
    }
    const bool there = isStillThere();
    const int closed = ::close(m_descriptor);
    m_descriptor = -1;
    if (closed != 0)
        return failure(errno);
    if (!there)
        return failure(ENOENT);
    QByteArray sha1(EVP_MAX_MD_SIZE, '\0');
    unsigned int size = 0;
    EVP_DigestFinal_ex(m_digest.get(), reinterpret_cast<unsigned char*>(sha1.data()), &size);
    sha1.truncate(int(size));
    return sha1;
}

} // namespace desk::imf
