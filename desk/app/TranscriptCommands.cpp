// What is said in the clips of the bin: recognising, showing, reading and writing transcripts, naming speakers.

#include "desk/app/Command.h"
#include "desk/app/Console.h"
#include "desk/app/Interrupt.h"
#include "desk/app/ItemSession.h"
#include "desk/services/SpeechSound.h"
#include "desk/services/TranscriptExport.h"
#include "desk/services/TranscriptService.h"

#include <QCommandLineParser>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>

namespace desk::app
{

using services::TranscriptService;
using speech::TranscriptStore;

namespace
{
/// How long another process may hold the database, in milliseconds.
constexpr int patience = 10000;
/// How often to look whether the command was interrupted, in milliseconds.
constexpr int glance = 50;

const QString cancelText = QStringLiteral("%1: cancelled; what was heard so far is kept");

int wrong(const QString& text, const QString& command)
{
    console::error(text);
    console::note(QStringLiteral("stratacut-desk %1 --help shows what there is.").arg(command));
    return exitCode::usage;
}

/// Lets the program go on until the condition holds, which is looked at after each change of the store.
template <class Condition>
void waitUntil(TranscriptStore& store, Condition holds)
{
    QEventLoop loop;
    const auto look = [&] {
        if (holds())
            loop.quit();
    };
    QObject::connect(&store, &TranscriptStore::conditionChanged, &loop, look, Qt::QueuedConnection);
    QObject::connect(&store, &TranscriptStore::clipChanged, &loop, look, Qt::QueuedConnection);
    if (!holds())
        loop.exec();
}

Result<TranscriptService*> openTranscripts(ItemSession& session)
{
    TranscriptService& service = session.host().transcripts();
    TranscriptStore& store = service.store();
    QTimer limit;
    limit.setSingleShot(true);
    limit.start(patience);
    QObject::connect(&limit, &QTimer::timeout, &store, &TranscriptStore::conditionChanged);
    using Condition = TranscriptStore::Condition;
    waitUntil(store, [&] {
        return store.condition() == Condition::Online || store.condition() == Condition::Offline || !limit.isActive();
    });
    if (store.condition() == Condition::Online)
        return &service;
    return store.problem();
}

/// Everything written, or what hinders it.
Status flush(TranscriptService& service)
{
    if (service.store().waitUntilStored(patience))
        return {};
    QCoreApplication::processEvents();
    return service.store().problem();
}

Result<media::Sequence> openClip(ItemSession& session, const QString& name)
{
    const auto id = session.sequence(name);
    if (!id)
        return id.error();
    return media::openSequence(session.host().library().find(*id)->path);
}

/// "2", "A2", "1,3" or "all": numbers that count from 0; empty for all.
Result<QVector<int>> tracksFrom(const QString& text, const media::Sequence& sequence)
{
    if (text == QLatin1String("all"))
        return QVector<int>();
    const QVector<services::SpeechTrack> tracks = services::speechTracks(sequence);
    QStringList names;
    for (const services::SpeechTrack& track : tracks)
        names += track.name.simplified();
    QVector<int> chosen;
    const QStringList parts = text.split(QLatin1Char(','));
    for (const QString& part : parts) {
        const QString number = part.trimmed();
        const int place = (number.startsWith(QLatin1Char('A')) ? number.mid(1) : number).toInt() - 1;
        if (place < 0 || place >= tracks.size())
            return Error{sequence.path,
                         QStringLiteral("track \"%1\"").arg(number),
                         {},
                         QStringLiteral("there is no such track"),
                         names.isEmpty() ? QStringLiteral("name a clip with sound")
                                         : QStringLiteral("name tracks by their numbers: %1, or say \"all\"")
                                               .arg(names.join(QStringLiteral("; ")))};
        if (!chosen.contains(tracks[place].number))
            chosen += tracks[place].number;
    }
    std::sort(chosen.begin(), chosen.end());
    return chosen.size() == tracks.size() ? QVector<int>() : chosen;
}

QCommandLineOption tracksOption()
{
    return {"tracks",
            "Takes these sound tracks, by number, from now on: \"1,3\"; \"all\" takes every one. Of a clip those that "
            "are listened to and shown, of a timeline those whose clips are transcribed and shown.",
            "TRACKS"};
}

Status chooseTracks(TranscriptService& service, const QCommandLineParser& parser, const media::Sequence& sequence)
{
    const QString option = QStringLiteral("tracks");
    if (!parser.isSet(option))
        return {};
    const auto tracks = tracksFrom(parser.value(option), sequence);
    return tracks ? service.chooseTracks(sequence.id, *tracks) : tracks.error();
}

/// Says what the chosen tracks leave to be wished for; the transcript is read.
void noteOnTracks(TranscriptService& service, const media::Sequence& sequence)
{
    switch (service.hasWordsOf(sequence, service.chosenTracks(sequence.id))) {
    case TranscriptService::Heard::No:
        return console::note(QStringLiteral("%1: the transcript has no words of the chosen tracks; \"stratacut-desk "
                                            "transcribe --again\" listens to them")
                                 .arg(sequence.name));
    case TranscriptService::Heard::Unknown:
        return console::note(QStringLiteral("%1: the transcript does not say which track its words are from, so all "
                                            "are shown")
                                 .arg(sequence.name));
    case TranscriptService::Heard::Yes:
        return;
    }
}

/// How a transcription begins.
using Start = void (TranscriptService::*)(const TranscriptService::Clip&);

/// Waits for one clip, with its progress on the error stream.
Status recognise(TranscriptService& service, const TranscriptService::Clip& clip, Start start)
{
    TranscriptStore& store = service.store();
    bool isOver = false;
    Status outcome;
    QString words;
    QObject context;
    QObject::connect(&service, &TranscriptService::progressed, &context, [&](const QString&, int percent) {
        if (console::isTerminal())
            console::statusLine(percent < 0 ? QStringLiteral("%1: getting ready").arg(clip.name)
                                            : QStringLiteral("%1: %2 %").arg(clip.name).arg(percent));
    });
    QObject::connect(&service, &TranscriptService::ended, &context,
                     [&](const QString&, TranscriptService::Outcome end, const QString& text) {
                         isOver = true;
                         words = text;
                         if (end == TranscriptService::Outcome::Cancelled)
                             outcome = Error{{}, {}, {}, cancelText.arg(clip.name), {}};
                         else if (end == TranscriptService::Outcome::Failed)
                             outcome = Error{{}, {}, {}, text, {}};
                     });
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &context, [&] {
        if (isInterrupted())
            service.cancel(clip.id);
    });
    watch.start(glance);
    (service.*start)(clip);
    waitUntil(store, [&] { return isOver || service.active() == 0; });
    console::endStatusLine();
    if (outcome)
        console::out(words.isEmpty() ? QStringLiteral("%1: has a transcript").arg(clip.name)
                                     : QStringLiteral("%1: %2").arg(clip.name, words));
    return outcome;
}

/// The files in which something is said: of a timeline its clips, each once.
QVector<TranscriptService::Clip> clipsOf(const media::Sequence& sequence, const QVector<int>& chosen)
{
    QVector<TranscriptService::Clip> clips;
    const auto ranges = services::spokenRanges(sequence, chosen);
    for (const services::SpokenRange& range : ranges) {
        const auto clip = TranscriptService::clipOf(*range.clip);
        const bool isKnown =
            std::any_of(clips.begin(), clips.end(), [&](const auto& one) { return one.id == clip.id; });
        if (!isKnown)
            clips += clip;
    }
    return clips;
}

/// A clip that fails does not keep the others from being transcribed. Answers the last failure; those before it are
/// told.
Status transcribeEach(TranscriptService& service, const QVector<TranscriptService::Clip>& clips, Start start)
{
    Status outcome;
    for (const TranscriptService::Clip& clip : clips) {
        const Status done = recognise(service, clip, start);
        if (!done && !outcome)
            console::error(outcome.error().what);
        if (!done)
            outcome = done;
        if (isInterrupted())
            break;
    }
    return outcome;
}

Status transcribeAll(ItemSession& session, const QCommandLineParser& parser, const QStringList& names)
{
    const Start start =
        parser.isSet(QStringLiteral("again")) ? &TranscriptService::transcribeAgain : &TranscriptService::transcribe;
    const auto service = openTranscripts(session);
    if (!service)
        return service.error();
    QVector<media::Sequence> sequences;
    QVector<TranscriptService::Clip> clips;
    for (const QString& name : names) {
        const auto sequence = openClip(session, name);
        if (!sequence)
            return sequence.error();
        if (Status chosen = chooseTracks(**service, parser, *sequence); !chosen)
            return chosen;
        const auto found = clipsOf(*sequence, (*service)->chosenTracks(sequence->id));
        if (found.isEmpty())
            return Error{
                sequence->path, {}, {}, QStringLiteral("it has no sound"), QStringLiteral("name a clip with sound")};
        clips += found;
        sequences += *sequence;
    }
    catchInterrupts();
    const Status outcome = transcribeEach(**service, clips, start);
    const Status stored = flush(**service);
    for (const media::Sequence& sequence : qAsConst(sequences))
        noteOnTracks(**service, sequence);
    return outcome ? stored : outcome;
}

Status import(TranscriptService& service, const media::Sequence& clip, const QString& file)
{
    if (clip.isTimeline())
        return Error{clip.path,
                     {},
                     {},
                     QStringLiteral("a timeline's transcript is that of its clips"),
                     QStringLiteral("import it for a clip")};
    const auto read = speech::importTranscriptFile(file, services::lengthMs(clip));
    if (!read)
        return read.error();
    if (read->repairs.total() > 0)
        console::note(QStringLiteral("%1: times of %2 words were repaired").arg(file).arg(read->repairs.total()));
    service.store().putTranscript(clip.id, read->transcript);
    Status stored = flush(service);
    QCoreApplication::processEvents();
    return stored;
}

/// The transcripts of all clips, read from the file.
speech::Transcript readTranscript(TranscriptService& service, const media::Sequence& sequence)
{
    TranscriptStore& store = service.store();
    const auto ranges = services::spokenRanges(sequence, service.chosenTracks(sequence.id));
    const auto isRead = [&](const services::SpokenRange& range) {
        return !store.hasTranscript(range.clip->id) || store.transcript(range.clip->id);
    };
    waitUntil(store, [&] { return std::all_of(ranges.begin(), ranges.end(), isRead); });
    return service.transcriptOf(ranges).transcript;
}

Status write(const media::Sequence& clip, const speech::Transcript& transcript, const QStringList& files)
{
    if (!files.isEmpty()) {
        const auto note = services::writeTranscript(transcript, clip, files);
        if (!note)
            return note.error();
        if (!note->isEmpty())
            console::note(*note);
        return {};
    }
    const auto settings = services::exportSettings(clip);
    console::out(
        QString::fromUtf8(speech::exportTranscript(transcript, speech::ExportFormat::PlainText, settings)).trimmed());
    return {};
}

Status showTranscript(ItemSession& session, const QCommandLineParser& parser, const QString& name)
{
    const auto clip = openClip(session, name);
    if (!clip)
        return clip.error();
    const auto service = openTranscripts(session);
    if (!service)
        return service.error();
    if (Status chosen = chooseTracks(**service, parser, *clip); !chosen)
        return chosen;
    if (parser.isSet(QStringLiteral("remove"))) {
        (*service)->store().removeClip(clip->id);
        return flush(**service);
    }
    if (parser.isSet(QStringLiteral("import"))) {
        if (Status done = import(**service, *clip, parser.value(QStringLiteral("import"))); !done)
            return done;
        if (!parser.isSet(QStringLiteral("export")))
            return {};
    }
    const speech::Transcript transcript = readTranscript(**service, *clip);
    if (parser.isSet(QStringLiteral("tracks")))
        noteOnTracks(**service, *clip);
    if (transcript.segments.isEmpty())
        return Error{clip->path,
                     {},
                     {},
                     QStringLiteral("it has no transcript"),
                     QStringLiteral("make one with \"stratacut-desk transcribe\"")};
    return write(*clip, transcript, parser.values(QStringLiteral("export")));
}

Status workOnSpeakers(ItemSession& session, const QStringList& arguments)
{
    const auto service = openTranscripts(session);
    if (!service)
        return service.error();
    TranscriptStore& store = (*service)->store();
    if (arguments.size() == 3) {
        const int id = arguments[1].toInt();
        const auto isMeant = [id](const speech::Speaker& speaker) { return speaker.id == id; };
        if (std::none_of(store.speakers().begin(), store.speakers().end(), isMeant))
            return Error{{},
                         arguments[1],
                         {},
                         QStringLiteral("there is no such speaker"),
                         QStringLiteral("\"stratacut-desk speakers\" shows their numbers")};
        store.nameSpeaker(id, arguments[2]);
        return flush(**service);
    }
    for (const speech::Speaker& speaker : store.speakers())
        console::out(QStringLiteral("%1  %2").arg(speaker.id).arg(speaker.name).trimmed());
    return {};
}
} // namespace

QList<QCommandLineOption> transcribeOptions()
{
    return {profileOption(),
            tracksOption(),
            {"again",
             "Also where there is a transcript, which stays until the new one is complete. Names and corrections of "
             "speakers are kept."}};
}

int runTranscribe(const QCommandLineParser& parser, const QStringList& clips)
{
    if (clips.isEmpty())
        return wrong(QStringLiteral("name at least one clip of the bin, or its file"), QStringLiteral("transcribe"));
    const int code = ItemSession(parser).run(
        [&](ItemSession& session) { return transcribeAll(session, parser, clips); }, ItemSession::Keeping::Nothing);
    return isInterrupted() ? exitCode::cancelled : code;
}

QList<QCommandLineOption> transcriptOptions()
{
    return {profileOption(),
            tracksOption(),
            {"export",
             "Writes the transcript as .srt, .vtt, .ttml (IMSC 1.1), .txt, .csv or .json. May be given several "
             "times.",
             "FILE"},
            {"import", "Takes a transcript from whisper.cpp's JSON, SubRip, WebVTT or the desk's own JSON.", "FILE"},
            {"remove", "Forgets the clip's transcript, so that it can be made anew."}};
}

int runTranscript(const QCommandLineParser& parser, const QStringList& clips)
{
    if (clips.size() != 1)
        return wrong(QStringLiteral("name one clip of the bin, or its file"), QStringLiteral("transcript"));
    return ItemSession(parser).run([&](ItemSession& session) { return showTranscript(session, parser, clips[0]); },
                                   ItemSession::Keeping::Nothing);
}

QList<QCommandLineOption> recogniserOptions()
{
    return {profileOption(),
            {"program", "The command-line program of whisper.cpp; with an empty one PocketSphinx is used.", "FILE"},
            {"model", "Its model.", "FILE"},
            {"language", "Two letters, or auto.", "LANGUAGE"},
            {"patience",
             "Seconds after which whisper.cpp is ended where it shows no sign of life; 0 for the default, 300.",
             "SECONDS"}};
}

int runRecogniser(const QCommandLineParser& parser, const QStringList&)
{
    const QString patienceName = QStringLiteral("patience");
    bool isNumber = true;
    const int seconds = parser.isSet(patienceName) ? parser.value(patienceName).toInt(&isNumber) : 0;
    if (!isNumber || seconds < 0)
        return wrong(QStringLiteral("--patience takes a whole number of seconds"), QStringLiteral("recogniser"));
    const auto work = [&](ItemSession& session) -> Status {
        const QString file = session.host().profile().transcriptSettingsFile();
        auto settings = services::TranscriptSettings::load(file);
        const auto before = settings.recogniser;
        const std::pair<const char*, QString*> choices[] = {{"program", &settings.recogniser.whisperProgram},
                                                            {"model", &settings.recogniser.whisperModel},
                                                            {"language", &settings.recogniser.whisperLanguage}};
        for (const auto& [option, text] : choices) {
            if (parser.isSet(QLatin1String(option)))
                *text = parser.value(QLatin1String(option));
        }
        if (parser.isSet(patienceName))
            settings.recogniser.whisperPatience = seconds;
        const auto name = services::recogniserName(settings.recogniser);
        if (!name)
            return name.error();
        console::out(*name);
        return settings.recogniser == before ? Status() : settings.save(file);
    };
    return ItemSession(parser).run(work, ItemSession::Keeping::Nothing);
}

int runSpeakers(const QCommandLineParser& parser, const QStringList& arguments)
{
    const QString action = arguments.value(0, QStringLiteral("list"));
    const bool isList = action == QLatin1String("list") && arguments.size() <= 1;
    const bool isRename = action == QLatin1String("rename") && arguments.size() == 3;
    if (!isList && !isRename)
        return wrong(QStringLiteral("say \"list\", or \"rename\" with a number and a name"),
                     QStringLiteral("speakers"));
    return ItemSession(parser).run([&](ItemSession& session) { return workOnSpeakers(session, arguments); },
                                   ItemSession::Keeping::Nothing);
}

} // namespace desk::app
