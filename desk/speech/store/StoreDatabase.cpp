#include "desk/speech/store/StoreDatabase.h"

#include "desk/speech/store/StoreFile.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace desk::speech
{

namespace
{

/// A segment's words as "[[start, end, text, confidence], ...]".
QString packed(const QVector<Word>& words)
{
    QJsonArray list;
    for (const Word& word : words)
        list.append(QJsonArray{word.startMs, word.endMs, word.text, word.confidence});
    return QString::fromUtf8(QJsonDocument(list).toJson(QJsonDocument::Compact));
}

QVector<Word> unpacked(const QVariant& value)
{
    QVector<Word> words;
    const QJsonArray list = QJsonDocument::fromJson(value.toString().toUtf8()).array();
    words.reserve(list.size());
    for (const QJsonValue& item : list)
        words.append({item[0].toInt(), item[1].toInt(), item[2].toString(), item[3].toDouble(-1)});
    return words;
}

/// A null text would be NULL, which no column takes.
QString notNull(const QString& text)
{
    return text.isNull() ? QString(QLatin1String("")) : text;
}

} // namespace

std::unique_ptr<StoreDatabase> StoreDatabase::open(const QString& path, StoreProblem& problem)
{
    auto sql = openStoreFile(path, problem);
    return sql ? std::unique_ptr<StoreDatabase>(new StoreDatabase(std::move(sql))) : nullptr;
}

StoreContents StoreDatabase::contents()
{
    StoreContents contents;
    contents.speakers = speakers();
    QHash<qint64, QString> clips;
    for (QSqlQuery row = m_sql->run("SELECT id, media, stage, percent, failure FROM clip"); row.next();) {
        ClipState state{ClipState::Stage(row.value(2).toInt()), row.value(3).toInt(), row.value(4).toString()};
        // Whoever ran it is gone.
        if (state.stage == ClipState::Stage::Running)
            state.stage = ClipState::Stage::Waiting;
        clips[row.value(0).toLongLong()] = row.value(1).toString();
        contents.clips[row.value(1).toString()] = state;
    }
    for (QSqlQuery row = m_sql->run("SELECT media FROM clip WHERE EXISTS(SELECT * FROM segment WHERE clip = clip.id)");
         row.next();)
        contents.transcribed.insert(row.value(0).toString());
    for (QSqlQuery row = m_sql->run("SELECT clip, track, recogniser, sample FROM position"); row.next();) {
        auto& track = contents.recognised[clips[row.value(0).toLongLong()]][row.value(1).toInt()];
        track.origin = row.value(2).toString();
        track.resumeAt = row.value(3).toLongLong();
    }
    for (QSqlQuery row = m_sql->run("SELECT clip, track, words FROM utterance ORDER BY number"); row.next();) {
        auto& track = contents.recognised[clips[row.value(0).toLongLong()]][row.value(1).toInt()];
        track.utterances.append(unpacked(row.value(2)));
    }
    return contents;
}

QVector<Speaker> StoreDatabase::speakers()
{
    QVector<Speaker> speakers;
    for (QSqlQuery row = m_sql->run("SELECT id, name FROM speaker ORDER BY id"); row.next();)
        speakers.append({row.value(0).toInt(), row.value(1).toString()});
    return speakers;
}

QVector<KeptSegment> StoreDatabase::segments(const QString& clip)
{
    QVector<KeptSegment> segments;
    QSqlQuery row = m_sql->run("SELECT speaker, heard, words, track FROM segment JOIN clip ON clip.id = segment.clip "
                               "WHERE media = ? ORDER BY number",
                               {clip});
    while (row.next())
        segments.append({{row.value(0).toInt(), unpacked(row.value(2)), row.value(3).toInt()}, row.value(1).toInt()});
    return segments;
}

void StoreDatabase::replaceTranscript(const QString& clip, const Transcript& transcript, std::atomic<int>& nextSpeaker)
{
    QHash<int, int> match = matchSpeakers(transcript, segments(clip), speakers());
    for (const Speaker& speaker : transcript.speakers) {
        int& id = match[speaker.id];
        const bool isNew = id < 0;
        if (isNew)
            id = nextSpeaker++;
        if (isNew || !speaker.name.isEmpty())
            setSpeaker({id, speaker.name});
    }
    QVector<KeptSegment> kept;
    kept.reserve(transcript.segments.size());
    for (const Segment& segment : transcript.segments) {
        const int id = match.value(segment.speaker, -1);
        kept.append({{id, segment.words, segment.track}, id});
    }
    const qint64 id = clipId(clip);
    applyCorrections(kept, corrections(id));
    insertSegments(id, kept);
    forgetRecognised(clip);
    setState(clip, {ClipState::Stage::Done, 100, QString()});
    dropUnusedSpeakers();
}

void StoreDatabase::removeClip(const QString& clip)
{
    m_sql->run("DELETE FROM clip WHERE media = ?", {clip});
    dropUnusedSpeakers();
}

void StoreDatabase::setState(const QString& clip, const ClipState& state)
{
    m_sql->run("UPDATE clip SET stage = ?, percent = ?, failure = ? WHERE id = ?",
               {int(state.stage), state.percent, notNull(state.failure), clipId(clip)});
}

void StoreDatabase::setSpeaker(const Speaker& speaker)
{
    m_sql->run("INSERT INTO speaker(id, name) VALUES(?, ?) ON CONFLICT(id) DO UPDATE SET name = excluded.name",
               {speaker.id, notNull(speaker.name)});
}

void StoreDatabase::correct(const QString& clip, const Correction& correction)
{
    const qint64 id = clipId(clip);
    const QVariantList place{id, correction.span.startMs, correction.span.endMs, correction.heard};
    m_sql->run("DELETE FROM correction WHERE clip = ? AND start = ? AND end = ? AND heard = ?", place);
    m_sql->run("INSERT INTO correction(clip, start, end, heard, speaker) VALUES(?, ?, ?, ?, ?)",
               place + QVariantList{correction.speaker});
    m_sql->run("INSERT OR IGNORE INTO speaker(id, name) VALUES(?, '')", {correction.speaker});
    const QVector<KeptSegment> before = segments(clip);
    QVector<KeptSegment> after = before;
    applyCorrections(after, {correction});
    for (int i = 0; i < after.size(); ++i) {
        if (after[i].segment.speaker != before[i].segment.speaker)
            m_sql->run("UPDATE segment SET speaker = ? WHERE clip = ? AND number = ?", {correction.speaker, id, i});
    }
}

void StoreDatabase::addRecognised(const QString& clip, int track, const QString& origin, const Batch& batch)
{
    const qint64 id = clipId(clip);
    m_sql->run("DELETE FROM utterance WHERE clip = ? AND track = ? AND EXISTS(SELECT * FROM position WHERE "
               "position.clip = utterance.clip AND position.track = utterance.track AND recogniser <> ?)",
               {id, track, origin});
    for (const QVector<Word>& words : batch.utterances)
        m_sql->run("INSERT INTO utterance(clip, track, words) VALUES(?, ?, ?)", {id, track, packed(words)});
    m_sql->run("INSERT OR REPLACE INTO position(clip, track, recogniser, sample) VALUES(?, ?, ?, ?)",
               {id, track, origin, batch.resumeAt});
}

void StoreDatabase::forgetRecognised(const QString& clip)
{
    const qint64 id = clipId(clip);
    m_sql->run("DELETE FROM utterance WHERE clip = ?", {id});
    m_sql->run("DELETE FROM position WHERE clip = ?", {id});
}

qint64 StoreDatabase::clipId(const QString& clip)
{
    m_sql->run("INSERT OR IGNORE INTO clip(media) VALUES(?)", {clip});
    QSqlQuery row = m_sql->run("SELECT id FROM clip WHERE media = ?", {clip});
    return row.next() ? row.value(0).toLongLong() : -1;
}

QVector<Correction> StoreDatabase::corrections(qint64 clip)
{
    QVector<Correction> corrections;
    QSqlQuery row =
        m_sql->run("SELECT start, end, heard, speaker FROM correction WHERE clip = ? ORDER BY rowid", {clip});
    while (row.next())
        corrections.append({{row.value(0).toInt(), row.value(1).toInt()}, row.value(2).toInt(), row.value(3).toInt()});
    return corrections;
}

void StoreDatabase::insertSegments(qint64 clip, const QVector<KeptSegment>& segments)
{
    m_sql->run("DELETE FROM segment WHERE clip = ?", {clip});
    int number = 0;
    for (const KeptSegment& kept : segments) {
        m_sql->run("INSERT INTO segment(clip, number, speaker, heard, words, track) VALUES(?, ?, ?, ?, ?, ?)",
                   {clip, number++, kept.segment.speaker, kept.heard, packed(kept.segment.words), kept.segment.track});
    }
}

/// A speaker without a name whom no segment has is what a repeated recognition leaves behind.
void StoreDatabase::dropUnusedSpeakers()
{
    m_sql->run("DELETE FROM speaker WHERE name = '' AND id NOT IN (SELECT speaker FROM segment UNION SELECT heard FROM "
               "segment UNION SELECT speaker FROM correction)");
}

} // namespace desk::speech
