#include "support/RecordingMediaEngine.h"

#include "StratacutUI/IMF_Bridges.h"
#include "support/FakeTargetFormatBuilder.h"

#include <QMimeData>
#include <QStandardItemModel>

namespace
{
const QString dragFormat = QStringLiteral("application/x-dnditemdata");

class MixModes : public IAudioMixDescription
{
public:
    QStringList list(const QString& key) const override
    {
        return key == "Audio Mix" ? QStringList{"Direct", "Stereo", "5.1"} : QStringList();
    }
};
} // namespace

namespace support
{

RecordingMediaEngine& RecordingMediaEngine::installed()
{
    static RecordingMediaEngine* engine = [] {
        auto made = std::make_unique<RecordingMediaEngine>();
        RecordingMediaEngine* address = made.get();
        IMF_MXE_bridge::Initialize(std::move(made));
        return address;
    }();
    engine->reset();
    return *engine;
}

std::unique_ptr<QMimeData> RecordingMediaEngine::dragOf(const QStringList& mobIds)
{
    auto mime = std::make_unique<QMimeData>();
    mime->setData(dragFormat, mobIds.join('\n').toUtf8());
    return mime;
}

void RecordingMediaEngine::addSequence(const QString& mobId, const QString& name)
{
    Sequence sequence;
    sequence.name = name;
    sequence.token = "token:" + mobId.toStdString();
    sequence.tracks = QStringList{"A1", "A2"};
    sequences.insert(mobId, sequence);
}

void RecordingMediaEngine::reset()
{
    sequences.clear();
    project = QStringLiteral("Project");
    creatorText = QStringLiteral("Test 1.0");
    hiddenColumn = -1;
    calls.clear();
    makeBuilder = nullptr;
    lastBuilder.reset();
    m_filled.clear();
}

QStringList RecordingMediaEngine::mobIdsFromMimeData(const QMimeData* mime)
{
    return QString::fromUtf8(mime->data(dragFormat)).split('\n', Qt::SkipEmptyParts);
}

bool RecordingMediaEngine::isSequence(const QString& mobId)
{
    note("isSequence", mobId);
    return sequences.contains(mobId);
}

std::shared_ptr<TargetFormatBuilder> RecordingMediaEngine::createTargetFormatBuilder(const QString& cplId,
                                                                                     const QString& mobId)
{
    calls += QStringLiteral("createTargetFormatBuilder(%1, %2)").arg(cplId, mobId);
    if (makeBuilder)
        return makeBuilder();
    const auto builder = std::make_shared<FakeTargetFormatBuilder>();
    lastBuilder = builder;
    return builder;
}

QAbstractItemModel* RecordingMediaEngine::createTrackDataModel(QAbstractItemModel* packageModel, const QFont&)
{
    calls += QStringLiteral("createTrackDataModel()");
    return new QStandardItemModel(0, 3, packageModel);
}

void RecordingMediaEngine::fillAudioGroupingModel(QAbstractItemModel* trackModel, const QString& mobId)
{
    calls += QStringLiteral("fillAudioGroupingModel(%1, %2)").arg(described(trackModel), mobId);
    if (!trackModel)
        return;
    m_filled.insert(trackModel, mobId);
    const QStringList tracks = sequences.value(mobId).tracks;
    trackModel->removeRows(0, trackModel->rowCount());
    trackModel->insertRows(0, tracks.size());
    for (int row = 0; row < tracks.size(); ++row)
        trackModel->setData(trackModel->index(row, 1), tracks.at(row));
}

bool RecordingMediaEngine::isAudioGroupingModelPopulated(const QAbstractItemModel* trackModel)
{
    note("isAudioGroupingModelPopulated", described(trackModel));
    return m_filled.contains(trackModel);
}

const IAudioMixDescription* RecordingMediaEngine::audioMixDescription(const QAbstractItemModel* trackModel)
{
    static const MixModes modes;
    return isSequenceTrackModel(trackModel) ? &modes : nullptr;
}

MXE_TrackColumns RecordingMediaEngine::trackColumns(const QAbstractItemModel*)
{
    MXE_TrackColumns columns;
    columns.indicatorSize = QSize(16, 16);
    return columns;
}

} // namespace support
