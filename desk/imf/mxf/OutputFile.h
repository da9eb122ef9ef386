#pragma once

#include "desk/base/Result.h"

#include <QByteArray>
#include <QString>

#include <memory>

struct evp_md_ctx_st;

namespace desk::imf
{

/// A new file that is written from front to back with every write checked. Hashed on the way, unless something in it is
/// written again later: then finish() reads it once more. One thread.
class OutputFile
{
public:
    enum class Hashing { WhileWriting, Afterwards };

    /// Fails if the file exists.
    static Result<std::unique_ptr<OutputFile>> create(const QString& path, Hashing hashing);
    ~OutputFile();

    qint64 position() const { return m_position; }

    const QString& path() const { return m_path; }

    Status write(const QByteArray& bytes) { return write(bytes.constData(), bytes.size()); }

    /// After some megabytes notices that the file has gone, and has the disk begin with them.
    Status write(const char* data, qint64 size);
    /// Only with Hashing::Afterwards.
    Status rewrite(qint64 offset, const QByteArray& bytes);
    /// Syncs to the disk, makes sure that the file is still where it was made, closes it; the SHA-1.
    Result<QByteArray> finish();

private:
    OutputFile(QString path, int descriptor, Hashing hashing);
    Error failure(int code) const;
    Status hashWhole();
    bool isStillThere();
    Status lookAndFlush();

    struct FreeDigest {
        void operator()(evp_md_ctx_st* context) const;
    };

    QString m_path;
    int m_descriptor;
    Hashing m_hashing;
    qint64 m_position = 0;
    /// Where in the file it was last made sure that the file is still there.
    qint64 m_lastLook = 0;
    std::unique_ptr<evp_md_ctx_st, FreeDigest> m_digest;
};

} // namespace desk::imf
