#include "desk/services/MediaEngine.h"

#include "StratacutUI/ImfDict.h"
#include "desk/services/FormatBuilder.h"
#include "desk/services/MixMode.h"
#include "desk/services/SoundPlan.h"

#include <QCoreApplication>
#include <QFont>
#include <QFontMetrics>
#include <QJsonDocument>
#include <QMimeData>
#include <QStandardItemModel>

#include <cmath>

namespace desk::services
{

namespace
{
constexpr char dragFormat[] = "application/x-dnditemdata";
/// The sequence behind a track data model, and whether its rows are there.
constexpr char mobProperty[] = "stratacutSequence";
constexpr char filledProperty[] = "stratacutFilled";

enum Column { Check, Name, SecondText, ColumnCount };

constexpr int labelRole = Qt::UserRole + 1;

QString mobOf(const QAbstractItemModel* model)
{
    return model ? model->property(mobProperty).toString() : QString();
}

/// The offered rate that lies nearest: what a sequence of another rate is written at.
Rational nearestRate(Rational rate)
{
    Rational nearest{24, 1};
    const QStringList names = words::frameRates();
    for (const QString& name : names) {
        const Rational offered = words::frameRate(name);
        const double distance = std::abs(offered.toDouble() - rate.toDouble());
        if (distance < std::abs(nearest.toDouble() - rate.toDouble()))
            nearest = offered;
    }
    return nearest;
}

OutputFormat formatFor(const BinItem& item)
{
    OutputFormat format;
    if (item.frameRate.isValid())
        format.rate = nearestRate(item.frameRate);
    if (item.width == 2048)
        format.width = item.width;
    format.audioMix = defaultMixMode(item.audio);
    return format;
}

QList<QStandardItem*> rowOf(const BinTrack& track)
{
    auto* check = new QStandardItem;
    check->setCheckable(true);
    check->setCheckState(Qt::Checked);
    auto* name = new QStandardItem(track.name);
    name->setData(track.label, labelRole);
    QList<QStandardItem*> row{check, name, new QStandardItem(track.title)};
    for (QStandardItem* item : row)
        item->setEditable(false);
    return row;
}
} // namespace

QStringList AudioMixDescription::list(const QString& key) const
{
    if (key != QLatin1String(ImfDict::AudioMix))
        return {};
    QStringList names = mixModeNames();
    names.move(names.indexOf(m_first), 0);
    return names;
}

MediaEngine::MediaEngine(MediaLibrary* library) : m_library(library) {}

QMimeData* MediaEngine::mimeData(const QStringList& ids)
{
    auto* mime = new QMimeData;
    mime->setData(QLatin1String(dragFormat),
                  QJsonDocument(QJsonArray::fromStringList(ids)).toJson(QJsonDocument::Compact));
    return mime;
}

std::optional<BinItem> MediaEngine::find(const QString& mobId) const
{
    return m_library ? m_library->find(mobId) : std::nullopt;
}

void MediaEngine::reserved1() {}

void MediaEngine::reserved2() {}

void MediaEngine::reserved6() {}

void MediaEngine::reserved12() {}

void MediaEngine::reserved20() {}

QStringList MediaEngine::mobIdsFromMimeData(const QMimeData* mime)
{
    return mime ? idsOf(*mime) : QStringList();
}

QStringList MediaEngine::idsOf(const QMimeData& mime)
{
    QStringList ids;
    const QJsonArray list = QJsonDocument::fromJson(mime.data(QLatin1String(dragFormat))).array();
    for (const QJsonValue& id : list) {
        if (id.isString())
            ids += id.toString();
    }
    return ids;
}

QString MediaEngine::sequenceName(const QString& mobId)
{
    const auto item = find(mobId);
    return item ? item->name : QString();
}

QString MediaEngine::creator()
{
    const QString version = QCoreApplication::applicationVersion();
    return version.isEmpty() ? QStringLiteral("Stratacut Desk") : QStringLiteral("Stratacut Desk ") + version;
}

void MediaEngine::sequenceToken(std::string& token, const QString& mobId)
{
    token = find(mobId) ? mobId.toStdString() : std::string();
}

void MediaEngine::sequenceFrameRate(std::string& frameRate, const QString& mobId)
{
    const auto item = find(mobId);
    const QString name = item ? words::frameRate(item->frameRate) : QString();
    frameRate = name.isEmpty() ? words::unknown : name.toStdString();
}

bool MediaEngine::isSequence(const QString& mobId)
{
    return m_library && m_library->exists(mobId);
}

void MediaEngine::projectName(QString& name)
{
    name = m_library ? m_library->projectName() : QString();
}

void MediaEngine::sequenceBin(QString& bin, const QString& mobId)
{
    bin = find(mobId) ? m_library->binName() : QString();
}

std::shared_ptr<TargetFormatBuilder> MediaEngine::createTargetFormatBuilder(const QString&, const QString& mobId)
{
    return std::make_shared<FormatBuilder>(formatFor(find(mobId).value_or(BinItem())));
}

QAbstractItemModel* MediaEngine::createTrackDataModel(QAbstractItemModel* packageModel, const QFont& font)
{
    auto* model = new QStandardItemModel(0, ColumnCount, packageModel);
    model->setHorizontalHeaderLabels({QString(), QStringLiteral("Track"), QStringLiteral("Title")});
    for (int column = 0; column < ColumnCount; ++column)
        model->setHeaderData(column, Qt::Horizontal, font, Qt::FontRole);
    model->setProperty("masterFaderNote",
                       QStringLiteral("Kept with the group. Stratacut Desk has no master fader: it changes nothing."));
    return model;
}

bool MediaEngine::isSequenceTrackModel(const QAbstractItemModel* trackModel)
{
    const QString mob = mobOf(trackModel);
    return !mob.isEmpty() && isSequence(mob);
}

void MediaEngine::fillAudioGroupingModel(QAbstractItemModel* trackModel, const QString& mobId)
{
    auto* model = qobject_cast<QStandardItemModel*>(trackModel);
    if (!model)
        return;
    model->removeRows(0, model->rowCount());
    model->setProperty(mobProperty, mobId);
    const auto item = find(mobId);
    model->setProperty(filledProperty, item.has_value());
    if (!item)
        return;
    for (const BinTrack& track : item->audio)
        model->appendRow(rowOf(track));
}

bool MediaEngine::isAudioGroupingModelPopulated(const QAbstractItemModel* trackModel)
{
    return trackModel && trackModel->property(filledProperty).toBool();
}

// Rows are made when they are first asked for: a new composition needs no preparation.
void MediaEngine::prepareTrackData(QAbstractItemModel*) {}

void MediaEngine::prepareAudioGroupingData(QAbstractItemModel*) {}

QStringList MediaEngine::activeTracks(const QAbstractItemModel* trackModel)
{
    QStringList names;
    const auto item = find(mobOf(trackModel));
    if (!item)
        return names;
    for (const BinTrack& track : item->audio)
        names += track.name;
    return names;
}

const IAudioMixDescription* MediaEngine::audioMixDescription(const QAbstractItemModel* trackModel)
{
    const auto item = find(mobOf(trackModel));
    if (!item)
        return nullptr;
    const QString first = losslessMixMode(item->audio);
    return &m_mixes.emplace(first, first).first->second;
}

QString MediaEngine::trackLabel(const QAbstractItemModel* trackModel, int row)
{
    return trackModel ? trackModel->index(row, Name).data(labelRole).toString() : QString();
}

MXE_TrackColumns MediaEngine::trackColumns(const QAbstractItemModel*)
{
    return {Check, Name, SecondText, QSize(13, 13)};
}

bool MediaEngine::isTrackColumnShown(const QAbstractItemModel*, int column)
{
    return column >= 0 && column < ColumnCount;
}

} // namespace desk::services
