#include "desk/speech/recognition/WhisperRecogniser.h"

#include "desk/speech/formats/Readers.h"

#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>
#include <csignal>

#include <sys/prctl.h>

namespace desk::speech
{

namespace
{

/// One run of the program. Loading the model costs as much as some seconds of sound; a crash repeats one part.
constexpr qint64 partLength = 180 * soundRate;
/// The last stretch of a part, in which the quietest instant becomes its end.
constexpr int cutRange = 20 * soundRate;
constexpr int pollMs = 100;

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

/// A program that ends with the desk, whatever ends that: it would go on for nobody for minutes.
class Child : public QProcess
{
protected:
    void setupChildProcess() override { prctl(PR_SET_PDEATHSIG, SIGKILL); }
};

/// Keeps the end of what the program writes.
void keepTail(QProcess& process, QByteArray& tail)
{
    tail = (tail + process.readAll()).right(4096);
}

void stop(QProcess& process)
{
    process.kill();
    process.waitForFinished();
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
                       QStringLiteral("check that it knows the options -ojf and -of"))
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
    Child process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(m_command.program, {QStringLiteral("-m"), m_command.model, QStringLiteral("-l"), m_command.language,
                                      QStringLiteral("-f"), base + QStringLiteral(".wav"), QStringLiteral("-ojf"),
                                      QStringLiteral("-of"), base, QStringLiteral("-np")});
    if (!process.waitForStarted()) {
        return failure(QStringLiteral("the speech recognition program does not start: %1").arg(process.errorString()),
                       QStringLiteral("correct its path in the settings of the recogniser"));
    }
    QByteArray output;
    while (!process.waitForFinished(pollMs) && process.state() != QProcess::NotRunning) {
        keepTail(process, output);
        go = sink.progress(part.first);
        if (go == Go::Stop)
            return stop(process), Status();
    }
    if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return {};
    keepTail(process, output);
    const QString last = QString::fromUtf8(output).trimmed().section(QLatin1Char('\n'), -1).left(200);
    const QString silent = process.exitStatus() == QProcess::CrashExit ? QStringLiteral("it crashed")
                                                                       : QStringLiteral("it gave no reason");
    return failure(QStringLiteral("the speech recognition program failed: %1").arg(last.isEmpty() ? silent : last),
                   QStringLiteral("run it by hand to see why, or remove it from the settings"));
}

Status WhisperRecogniser::failure(const QString& what, const QString& next) const
{
    return Error{m_command.program, QString(), QString(), what, next};
}

} // namespace desk::speech
