#include "desk/imf/package/Digest.h"

#include <QFile>

#include <openssl/evp.h>

#include <memory>

namespace desk::imf
{
namespace
{

constexpr qint64 blockSize = 1 << 20;

class Sha1
{
public:
    Sha1() : m_context(EVP_MD_CTX_new(), &EVP_MD_CTX_free) { EVP_DigestInit_ex(m_context.get(), EVP_sha1(), nullptr); }

    void add(const char* bytes, qint64 count) { EVP_DigestUpdate(m_context.get(), bytes, size_t(count)); }

    QByteArray finish()
    {
        QByteArray digest(20, '\0');
        EVP_DigestFinal_ex(m_context.get(), reinterpret_cast<unsigned char*>(digest.data()), nullptr);
        return digest;
    }

private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> m_context;
};

} // namespace

QByteArray sha1Of(const QByteArray& bytes)
{
    Sha1 digest;
    digest.add(bytes.constData(), bytes.size());
    return digest.finish();
}

Result<QByteArray> sha1OfFile(const QString& path, const std::function<bool(qint64)>& progress)
{
    QFile file(path);
    const auto failure = [&] {
        return Error{path,
                     {},
                     {},
                     QStringLiteral("the file cannot be read (%1)").arg(file.errorString()),
                     QStringLiteral("check the disk and the file's permissions")};
    };
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return failure();
    Sha1 digest;
    QByteArray block(int(blockSize), Qt::Uninitialized);
    while (true) {
        const qint64 count = file.read(block.data(), block.size());
        if (count < 0)
            return failure();
        if (count == 0)
            return digest.finish();
        digest.add(block.constData(), count);
        if (progress && !progress(count))
            return QByteArray();
    }
}

} // namespace desk::imf
