#pragma once

#include "StratacutUI/MXE_Bridge.h"
#include "desk/services/MediaLibrary.h"

#include <QPointer>

#include <map>

namespace desk::services
{

/// What the output's sound mixing can make.
class AudioMixDescription : public IAudioMixDescription
{
public:
    /// @param first the mix mode to name first: new rows of an audio mapping begin with it.
    explicit AudioMixDescription(const QString& first) : m_first(first) {}

    QStringList list(const QString& key) const override;

private:
    QString m_first;
};

/// The desk's media for the package manager: sequences are those of the bin, their identifier is also their token.
/// A drag carries a JSON list of identifiers. User-interface thread.
class MediaEngine : public MXE_Bridge
{
public:
    /// The library is not owned; when it goes first, no sequence exists any more.
    explicit MediaEngine(MediaLibrary* library);

    /// The data of a drag of these sequences, for drag sources of the host; the caller owns it.
    static QMimeData* mimeData(const QStringList& ids);
    /// The sequences that such data carry; none for other data.
    static QStringList idsOf(const QMimeData& mime);

    void reserved1() override;
    void reserved2() override;
    QStringList mobIdsFromMimeData(const QMimeData* mime) override;
    QString sequenceName(const QString& mobId) override;
    QString creator() override;
    void reserved6() override;
    void sequenceToken(std::string& token, const QString& mobId) override;
    void sequenceFrameRate(std::string& frameRate, const QString& mobId) override;
    bool isSequence(const QString& mobId) override;
    void projectName(QString& name) override;
    void sequenceBin(QString& bin, const QString& mobId) override;
    void reserved12() override;
    std::shared_ptr<TargetFormatBuilder> createTargetFormatBuilder(const QString& cplId, const QString& mobId) override;
    QAbstractItemModel* createTrackDataModel(QAbstractItemModel* packageModel, const QFont& font) override;
    bool isSequenceTrackModel(const QAbstractItemModel* trackModel) override;
    void fillAudioGroupingModel(QAbstractItemModel* trackModel, const QString& mobId) override;
    bool isAudioGroupingModelPopulated(const QAbstractItemModel* trackModel) override;
    void prepareTrackData(QAbstractItemModel* trackModel) override;
    void prepareAudioGroupingData(QAbstractItemModel* trackModel) override;
    void reserved20() override;
    QStringList activeTracks(const QAbstractItemModel* trackModel) override;
    const IAudioMixDescription* audioMixDescription(const QAbstractItemModel* trackModel) override;
    QString trackLabel(const QAbstractItemModel* trackModel, int row) override;
    MXE_TrackColumns trackColumns(const QAbstractItemModel* trackModel) override;
    bool isTrackColumnShown(const QAbstractItemModel* trackModel, int column) override;

private:
    std::optional<BinItem> find(const QString& mobId) const;

    QPointer<MediaLibrary> m_library;
    /// By the mix mode that they name first.
    std::map<QString, AudioMixDescription> m_mixes;
};

} // namespace desk::services
