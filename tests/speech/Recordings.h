#pragma once

#include "desk/speech/recognition/SoundSource.h"
#include "support/Files.h"

#include <QDir>
#include <QRegularExpression>

#include <cstring>
#include <numeric>

/// Recorded speech of the package pocketsphinx-testdata and what is said in it.
namespace recordings
{

using Samples = QVector<qint16>;

/// Sound in memory. It can break off with a failure.
class Memory : public desk::speech::SoundSource
{
public:
    explicit Memory(Samples samples, qint64 breaksAt = -1) : m_samples(std::move(samples)), m_breaksAt(breaksAt) {}

    qint64 length() const override { return m_samples.size(); }

    desk::Result<QVector<qint16>> read(qint64 first, qint64 count) override
    {
        if (m_breaksAt >= 0 && first + count > m_breaksAt)
            return desk::Error{"clip.mov", {}, {}, "the clip is gone", "connect the drive"};
        return m_samples.mid(int(first), int(count));
    }

private:
    Samples m_samples;
    qint64 m_breaksAt;
};

inline desk::speech::SoundOpener opener(const Samples& samples, qint64 breaksAt = -1)
{
    return [=]() -> desk::Result<std::unique_ptr<desk::speech::SoundSource>> {
        return std::unique_ptr<desk::speech::SoundSource>(std::make_unique<Memory>(samples, breaksAt));
    };
}

struct Recording {
    QString name;
    Samples samples;
    /// Lower case, as spoken.
    QStringList words;
};

inline Samples samplesOf(const QByteArray& wave)
{
    const int data = wave.indexOf("data") + 8;
    Samples samples((wave.size() - data) / 2);
    std::memcpy(samples.data(), wave.constData() + data, std::size_t(samples.size()) * 2);
    return samples;
}

/// Empty where the package is not installed.
inline QVector<Recording> folder(const QString& name)
{
    const QDir dir(QStringLiteral("/usr/share/pocketsphinx/test/data/") + name);
    const QStringList texts = dir.entryList({"*transcription"}, QDir::Files);
    QVector<Recording> found;
    const auto lines = texts.isEmpty() ? QByteArrayList() : support::fileBytes(dir.filePath(texts.first())).split('\n');
    static const QRegularExpression form(QStringLiteral("<s> (.*) </s> \\((.*)\\)"));
    for (const QByteArray& line : lines) {
        const auto match = form.match(QString::fromUtf8(line));
        if (match.hasMatch())
            found.append({match.captured(2), samplesOf(support::fileBytes(dir.filePath(match.captured(2) + ".wav"))),
                          match.captured(1).simplified().split(' ')});
    }
    return found;
}

/// All of them one after the other, with a second of silence between.
inline Recording joined(const QVector<Recording>& all)
{
    Recording one;
    for (const Recording& next : all) {
        one.samples += next.samples + Samples(desk::speech::soundRate, 0);
        one.words += next.words;
    }
    return one;
}

/// Words inserted, left out or put in the place of another, over the words spoken.
inline double wordErrorRate(const QStringList& spoken, const QStringList& heard)
{
    QVector<int> row(heard.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (int i = 0; i < spoken.size(); ++i) {
        int diagonal = row[0]++;
        for (int j = 0; j < heard.size(); ++j) {
            const int same = diagonal + (spoken[i] == heard[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({same, row[j] + 1, diagonal + 1});
        }
    }
    return double(row.last()) / spoken.size();
}

} // namespace recordings
