#pragma once

#include "StratacutUI/MXE_Bridge.h"

#include <QHash>

#include <functional>
#include <memory>
#include <utility>

class QMimeData;

namespace support
{

class FakeTargetFormatBuilder;

/// A media engine that knows the sequences it is told of and writes down every call.
class RecordingMediaEngine : public MXE_Bridge
{
public:
    /// The process-wide engine, installed in its holder and brought back to its first state. The holder keeps it.
    static RecordingMediaEngine& installed();
    /// What a drag of these sequences carries.
    static std::unique_ptr<QMimeData> dragOf(const QStringList& mobIds);

    struct Sequence {
        QString name;
        std::string token;
        std::string frameRate = "25";
        QString bin = QStringLiteral("Bin");
        /// The tracks' names, in timeline order.
        QStringList tracks;
    };

    /// By identifier.
    QHash<QString, Sequence> sequences;
    QString project = QStringLiteral("Project");
    QString creatorText = QStringLiteral("Test 1.0");
    /// A column of every track data model that is not shown.
    int hiddenColumn = -1;
    /// Every call in order: "isSequence(mob)", "createTargetFormatBuilder(cpl, mob)".
    QStringList calls;
    /// Makes the next builders; the default makes a FakeTargetFormatBuilder.
    std::function<std::shared_ptr<TargetFormatBuilder>()> makeBuilder;
    /// The builder made last by the default, while some CPL holds it.
    std::weak_ptr<FakeTargetFormatBuilder> lastBuilder;

    /// Adds a sequence whose token is "token:" and its identifier.
    void addSequence(const QString& mobId, const QString& name);
    void reset();

    QStringList takeCalls() { return std::exchange(calls, {}); }

    void reserved1() override {}

    void reserved2() override {}

    QStringList mobIdsFromMimeData(const QMimeData* mime) override;

    QString sequenceName(const QString& mobId) override { return asked("sequenceName", mobId).name; }

    QString creator() override { return creatorText; }

    void reserved6() override {}

    void sequenceToken(std::string& token, const QString& mobId) override
    {
        token = asked("sequenceToken", mobId).token;
    }

    void sequenceFrameRate(std::string& frameRate, const QString& mobId) override
    {
        frameRate = asked("sequenceFrameRate", mobId).frameRate;
    }

    bool isSequence(const QString& mobId) override;

    void projectName(QString& name) override { name = project; }

    void sequenceBin(QString& bin, const QString& mobId) override { bin = sequences.value(mobId).bin; }

    void reserved12() override {}

    std::shared_ptr<TargetFormatBuilder> createTargetFormatBuilder(const QString& cplId, const QString& mobId) override;
    QAbstractItemModel* createTrackDataModel(QAbstractItemModel* packageModel, const QFont& font) override;

    bool isSequenceTrackModel(const QAbstractItemModel* tracks) override
    {
        return sequences.contains(sequenceOf(tracks));
    }

    void fillAudioGroupingModel(QAbstractItemModel* trackModel, const QString& mobId) override;
    bool isAudioGroupingModelPopulated(const QAbstractItemModel* trackModel) override;

    void prepareTrackData(QAbstractItemModel* tracks) override { note("prepareTrackData", described(tracks)); }

    void prepareAudioGroupingData(QAbstractItemModel* tracks) override
    {
        note("prepareAudioGroupingData", described(tracks));
    }

    void reserved20() override {}

    QStringList activeTracks(const QAbstractItemModel* tracks) override
    {
        return sequences.value(sequenceOf(tracks)).tracks;
    }

    const IAudioMixDescription* audioMixDescription(const QAbstractItemModel* trackModel) override;

    QString trackLabel(const QAbstractItemModel*, int row) override { return QStringLiteral("Mono%1").arg(row); }

    MXE_TrackColumns trackColumns(const QAbstractItemModel* trackModel) override;

    bool isTrackColumnShown(const QAbstractItemModel*, int column) override { return column != hiddenColumn; }

private:
    void note(const char* call, const QString& arguments) { calls += QString("%1(%2)").arg(call, arguments); }

    Sequence asked(const char* call, const QString& mobId)
    {
        note(call, mobId);
        return sequences.value(mobId);
    }

    static QString described(const QAbstractItemModel* trackModel) { return trackModel ? "model" : "null"; }

    QString sequenceOf(const QAbstractItemModel* trackModel) const { return m_filled.value(trackModel); }

    QHash<const QAbstractItemModel*, QString> m_filled;
};

} // namespace support
