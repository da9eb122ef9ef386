#pragma once

#include "StratacutUI/IMFO_Bridge.h"
#include "StratacutUI/MXE_Bridge.h"
#include "StratacutUI/TargetFormatBuilder.h"

#include <QStandardItemModel>

/// A host that answers at once, so that the module alone is measured.
class IdleEngine : public MXE_Bridge
{
public:
    void reserved1() override {}

    void reserved2() override {}

    QStringList mobIdsFromMimeData(const QMimeData*) override { return {}; }

    QString sequenceName(const QString& mobId) override { return mobId; }

    QString creator() override { return {}; }

    void reserved6() override {}

    void sequenceToken(std::string&, const QString&) override {}

    void sequenceFrameRate(std::string&, const QString&) override {}

    bool isSequence(const QString&) override { return true; }

    void projectName(QString&) override {}

    void sequenceBin(QString&, const QString&) override {}

    void reserved12() override {}

    std::shared_ptr<TargetFormatBuilder> createTargetFormatBuilder(const QString&, const QString&) override
    {
        return nullptr;
    }

    QAbstractItemModel* createTrackDataModel(QAbstractItemModel* packageModel, const QFont&) override
    {
        return new QStandardItemModel(packageModel);
    }

    bool isSequenceTrackModel(const QAbstractItemModel*) override { return true; }

    void fillAudioGroupingModel(QAbstractItemModel*, const QString&) override {}

    bool isAudioGroupingModelPopulated(const QAbstractItemModel*) override { return true; }

    void prepareTrackData(QAbstractItemModel*) override {}

    void prepareAudioGroupingData(QAbstractItemModel*) override {}

    void reserved20() override {}

    QStringList activeTracks(const QAbstractItemModel*) override { return {}; }

    const IAudioMixDescription* audioMixDescription(const QAbstractItemModel*) override { return nullptr; }

    QString trackLabel(const QAbstractItemModel*, int) override { return {}; }

    MXE_TrackColumns trackColumns(const QAbstractItemModel*) override { return {}; }

    bool isTrackColumnShown(const QAbstractItemModel*, int) override { return true; }
};

class IdleOutput : public IMFO_Bridge
{
public:
    void readDelivery(IMFO_Error_t&, const QString&, std::pair<QByteArray, QJsonObject>&) override {}

    void getDeliveryInfo(IMFO_Error_t&, const QByteArray&, QJsonObject&, bool) override {}

    void reserved3(IMFO_Error_t&) override {}

    void reserved4(IMFO_Error_t&) override {}

    void reserved5(IMFO_Error_t&) override {}

    void createDelivery(IMFO_Error_t&, const QString&, QString&, bool, QString& id) override { id = "id"; }

    void removeItem(IMFO_Error_t&, const QByteArray&) override {}

    void commit(IMFO_Error_t&, const IMFO_ItemInfo&, CommitCallback) override {}

    void createIMP(IMFO_Error_t&, const QByteArray&, const QByteArray&) override {}

    void createCPL(IMFO_Error_t&, const QByteArray&, const QByteArray&, const QByteArray&) override {}

    void setItemPath(IMFO_Error_t&, const IMFO_ItemInfo&, const QString&, QString&) override {}

    void renameItem(IMFO_Error_t&, const IMFO_ItemInfo&, const QString&, QString&) override {}

    void applyCommitSettings(IMFO_Error_t&, const QString&, const IMFO_ItemInfo&) override {}

    void applyDescriptiveMetadata(IMFO_Error_t&, const QString&, const IMFO_ItemInfo&) override {}

    void getCPLTrackInfo(IMFO_Error_t&, QMap<QString, IMFO_TrackInfo>&, const QByteArray&) override {}
};
