#include "desk/speech/recognition/WhisperRecogniser.h"

#include "desk/speech/formats/Readers.h"
#include "desk/speech/recognition/WatchedProgram.h"

#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>

namespace desk::speech
{

namespace
{

/// One run of the program. Loading the model costs as much as some seconds of sound; a crash repeats one part.
constexpr qint64 partLength = 180 * soundRate;
/// The last stretch of a part, in which the quietest instant becomes its end.
constexpr int cutRange = 20 * soundRate;

/// A WAVE file of 16-bit mono sound.
bool writeWave(const QString& path, const QVector<qint16>& samples)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QDataStream stream(&file);
    stream.setByteOrder(QDataStream::LittleEndian);
    const quint32 bytes = quint32(samples.size()) * 2;
    stream.writeRawData("RIFF", 4);
    stream << quint32(36 + bytes);
    stream.writeRawData("WAVEfmt ", 8);
    stream << quint32(16) << quint16(1) << quint16(1) << quint32(soundRate) << quint32(soundRate * 2) << quint16(2)
           << quint16(16);
    stream.writeRawData("data", 4);
    stream << bytes;
    for (const qint16 sample : samples)
        stream << sample;
    return stream.status() == QDataStream::Ok && file.flush();
}

/// The program says what it hears besides speech in brackets, asterisks or notes, and silence too: "[BLANK_AUDIO]".
bool isSpeech(const QVector<Word>& words)
{
    static const QRegularExpression remark(QStringLiteral("\\[[^\\]]*\\]|\\([^)]*\\)|\\*[^*]*\\*"));
    QString text;
    for (const Word& word : words)
        text += word.text + QLatin1Char(' ');
    text.remove(remark);
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.isLetterOrNumber(); });
}

Batch batchOf(const Transcript& transcript, qint64 first, qint64 end)
{
    Batch batch;
    batch.resumeAt = end;
    const int offset = msOfSample(first);
    for (const Segment& segment : transcript.segments) {
        QVector<Word> words = segment.words;
        for (Word& word : words) {
            // Anything but a plain instant of a few minutes is left for the repair to see.
            word.startMs = int(std::clamp<qint64>(qint64(word.startMs) + offset, -1, INT_MAX));
            word.endMs = int(std::clamp<qint64>(qint64(word.endMs) + offset, -1, INT_MAX));
        }
        if (isSpeech(words))
            batch.utterances.append(words);
    }
    return batch;
}

const QByteArray progressMark = QByteArrayLiteral("progress =");

/// How much of the part is done, from the program's last "... progress =  35%".
int percentIn(const QByteArray& printed)
{
    const int mark = printed.lastIndexOf(progressMark);
    const int from = mark + progressMark.size();
    const int end = mark < 0 ? -1 : printed.indexOf('%', from);
    return end < 0 ? 0 : std::clamp(printed.mid(from, end - from).trimmed().toInt(), 0, 100);
}

/// The last line that says more than how far it is; mostly why the program failed.
QString lastWords(const QByteArray& printed)
{
    QList<QByteArray> lines = printed.trimmed().split('\n');
    while (!lines.isEmpty() && lines.last().contains(progressMark))
        lines.removeLast();
    return lines.isEmpty() ? QString() : QString::fromUtf8(lines.last()).trimmed().left(200);
}

QString spanText(std::chrono::seconds span)
{
    if (span.count() % 60 != 0)
        return QStringLiteral("%1 s").arg(span.count());
    return span.count() == 60 ? QStringLiteral("a minute") : QStringLiteral("%1 minutes").arg(span.count() / 60);
}

} // namespace

struct WhisperRecogniser::Part {
    qint64 first = 0;
    QVector<qint16> samples;

    qint64 end() const { return first + samples.size(); }
};

WhisperRecogniser::WhisperRecogniser(WhisperCommand command) : m_command(std::move(command)) {}

QString WhisperRecogniser::name() const
{
    return QStringLiteral("whisper.cpp, %1, %2").arg(QFileInfo(m_command.model).completeBaseName(), m_command.language);
}

Status WhisperRecogniser::recognise(SoundSource& sound, qint64 first, RecognitionSink& sink)
{
    const qint64 length = sound.length();
    for (qint64 at = first; at < length;) {
        auto samples = sound.read(at, std::min(partLength, length - at));
        if (!samples)
            return samples.error();
        if (samples->isEmpty())
            return {};
        Part part{at, std::move(*samples)};
        if (part.end() < length && part.samples.size() > 2 * cutRange)
            part.samples.resize(quietPlace(part.samples, cutRange));
        const auto batch = recognisePart(part, sink);
        if (!batch)
            return batch.error();
        if (!*batch)
            return {};
        sink.take(**batch);
        at = part.end();
        if (sink.progress(at) == Go::Stop)
            return {};
    }
    return {};
}

Result<std::unique_ptr<Batch>> WhisperRecogniser::recognisePart(const Part& part, RecognitionSink& sink) const
{
    // Scripts in front of the program may trip over a blank, which the application's name has.
    const QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/stratacut-speech-XXXXXX"));
    const QString base = folder.filePath(QStringLiteral("part"));
    if (!folder.isValid() || !writeWave(base + QStringLiteral(".wav"), part.samples)) {
        return Error{folder.path(), QString(), QString(), QStringLiteral("the sound cannot be stored for recognition"),
                     QStringLiteral("free space for temporary files and transcribe again")};
    }
    Go go = Go::On;
    const Status status = run(part, base, sink, go);
    if (!status.ok())
        return status.error();
    if (go == Go::Stop)
        return std::unique_ptr<Batch>();
    QFile written(base + QStringLiteral(".json"));
    if (!written.open(QIODevice::ReadOnly)) {
        return failure(QStringLiteral("the speech recognition program wrote no result"),
                       QStringLiteral("check that it knows the options -ojf, -of, -np and -pp"))
            .error();
    }
    const auto transcript = readWhisperJson(written.readAll(), m_command.program);
    if (!transcript) {
        return failure(QStringLiteral("the result of the speech recognition program cannot be read: %1")
                           .arg(transcript.error().what),
                       QStringLiteral("run it by hand to see what it writes"))
            .error();
    }
    return std::make_unique<Batch>(batchOf(*transcript, part.first, part.end()));
}

Status WhisperRecogniser::run(const Part& part, const QString& base, RecognitionSink& sink, Go& go) const
{
    using End = WatchedProgram::End;
    WatchedProgram program({m_command.program,
                            {QStringLiteral("-m"), m_command.model, QStringLiteral("-l"), m_command.language,
                             QStringLiteral("-f"), base + QStringLiteral(".wav"), QStringLiteral("-ojf"),
                             QStringLiteral("-of"), base, QStringLiteral("-np"), QStringLiteral("-pp")},
                            base + QStringLiteral(".json"),
                            m_command.patience});
    const End end = program.run(
        [&] { return go = sink.progress(part.first + part.samples.size() * percentIn(program.tail()) / 100); });
    const QString last = lastWords(program.tail());
    switch (end) {
    case End::Done:
    case End::Stopped:
        return {};
    case End::NotStarted:
        return failure(QStringLiteral("the speech recognition program does not start: %1").arg(program.problem()),
                       QStringLiteral("correct its path in the settings of the recogniser"));
    case End::Silent:
        return failure(QStringLiteral("the speech recognition program gave no sign of life for %1 and was ended")
                           .arg(spanText(m_command.patience)),
                       QStringLiteral("transcribe the clip again, or run the program by hand to see where it hangs"));
    case End::Flooding:
        return failure(QStringLiteral("the speech recognition program wrote more than %1 MB and was ended")
                           .arg(WatchedProgram::mostWritten >> 20),
                       QStringLiteral("run it by hand to see what it writes"));
    case End::Crashed:
        return failed(last.isEmpty() ? QStringLiteral("it crashed") : QStringLiteral("it crashed after: %1").arg(last));
    case End::Failed:
        break;
    }
    return failed(last.isEmpty() ? QStringLiteral("it gave no reason") : last);
}

Status WhisperRecogniser::failed(const QString& why) const
{
    return failure(QStringLiteral("the speech recognition program failed: %1").arg(why),
                   QStringLiteral("run it by hand to see why, or remove it from the settings"));
}

/// The clip's name is put before it by who knows it.
Status WhisperRecogniser::failure(const QString& what, const QString& next) const
{
    return Error{QString(), m_command.program, QString(), what, next};
}

} // namespace desk::speech
