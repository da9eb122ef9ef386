#pragma once

#include "StratacutUI/Export.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <memory>
#include <string>

class QAbstractItemModel;
class QFont;
class QMimeData;
class TargetFormatBuilder;

/// The host's list of what its audio mixing can make. Owned by the host; valid as long as the media-engine bridge.
class STRATACUTUI_EXPORT IAudioMixDescription
{
public:
    virtual ~IAudioMixDescription();
    /// The entries under a key, in the order in which users shall see them; "Audio Mix" holds the mix modes. Empty for
    /// an unknown key.
    virtual QStringList list(const QString& key) const = 0;
};

/// How the columns of a track data model are to be read and drawn.
struct MXE_TrackColumns {
    /// The column that shows a check box.
    int check = 0;
    /// The column whose display text is the track's name, as group profiles store it.
    int name = 1;
    /// The column with a second text, shown behind the row's label.
    int secondText = 2;
    /// The size of the check box in device-independent pixels.
    QSize indicatorSize;
};

/// The host's media engine: it answers questions about sequences and builds what a CPL needs of them.
///
/// The host implements this class and installs it once with IMF_MXE_bridge::Initialize, which owns it from then on.
/// All calls come from the user-interface thread and must not throw. `mobId` is the host's identifier of a sequence:
/// stable from run to run, opaque to the module. The order of the declarations is the binary interface.
class STRATACUTUI_EXPORT MXE_Bridge
{
public:
    /// Slot 0.
    virtual ~MXE_Bridge();

    /// Slot 1. Reserved: the module does not call it.
    virtual void reserved1() = 0;
    /// Slot 2. Reserved: the module does not call it.
    virtual void reserved2() = 0;
    /// Slot 3. The identifiers of the media that a drag carries in "application/x-dnditemdata"; empty when it carries
    /// none. The layout of that format is the host's own.
    virtual QStringList mobIdsFromMimeData(const QMimeData* mime) = 0;
    /// Slot 4. The sequence's name; empty for an unknown identifier.
    virtual QString sequenceName(const QString& mobId) = 0;
    /// Slot 5. What new items carry as "Creator": the application's name and version.
    virtual QString creator() = 0;
    /// Slot 6. Reserved: the module does not call it.
    virtual void reserved6() = 0;
    /// Slot 7. The token by which IMFO_Bridge::createCPL finds the sequence.
    /// @param token out: UTF-8; empty for an unknown identifier.
    virtual void sequenceToken(std::string& token, const QString& mobId) = 0;
    /// Slot 8. The sequence's frame rate, in the spelling of the target-format builder's choices for "Frame Rate".
    /// @param frameRate out: UTF-8; "Unknown" where the output offers no such rate.
    virtual void sequenceFrameRate(std::string& frameRate, const QString& mobId) = 0;
    /// Slot 9. Whether the identifier denotes a sequence that exists at present.
    virtual bool isSequence(const QString& mobId) = 0;
    /// Slot 10. The name of the project that is open.
    virtual void projectName(QString& name) = 0;
    /// Slot 11. The bin that holds the sequence.
    virtual void sequenceBin(QString& bin, const QString& mobId) = 0;
    /// Slot 12. Reserved: the module does not call it.
    virtual void reserved12() = 0;
    /// Slot 13. A builder of the output format for a CPL, with default parameters that suit the sequence.
    /// @param cplId the CPL's identifier; it may still change by a rename.
    /// @param mobId the CPL's sequence; empty for a CPL that was read from disk.
    virtual std::shared_ptr<TargetFormatBuilder> createTargetFormatBuilder(const QString& cplId,
                                                                           const QString& mobId) = 0;
    /// Slot 14. Creates an empty track data model.
    /// @param packageModel becomes the new model's parent, which releases it with the last CPL of the sequence.
    /// @param font the font in which tracks will be shown.
    virtual QAbstractItemModel* createTrackDataModel(QAbstractItemModel* packageModel, const QFont& font) = 0;
    /// Slot 15. Whether the track data model belongs to a sequence that exists.
    virtual bool isSequenceTrackModel(const QAbstractItemModel* trackModel) = 0;
    /// Slot 16. Fills a track data model for the sequence; what it held before is replaced.
    virtual void fillAudioGroupingModel(QAbstractItemModel* trackModel, const QString& mobId) = 0;
    /// Slot 17. Whether slot 16 has filled the model.
    virtual bool isAudioGroupingModelPopulated(const QAbstractItemModel* trackModel) = 0;
    /// Slot 18. Prepares the track data of a CPL that was just made. @param trackModel null while the CPL has none.
    virtual void prepareTrackData(QAbstractItemModel* trackModel) = 0;
    /// Slot 19. Prepares the audio-grouping data of a CPL that was just made. @param trackModel null while the CPL has
    /// none.
    virtual void prepareAudioGroupingData(QAbstractItemModel* trackModel) = 0;
    /// Slot 20. Reserved: the module does not call it.
    virtual void reserved20() = 0;
    /// Slot 21. The names of the active tracks behind a track data model, in timeline order.
    virtual QStringList activeTracks(const QAbstractItemModel* trackModel) = 0;
    /// Slot 22. What the mixing can make of the model's tracks. Null when there is no sequence behind the model.
    virtual const IAudioMixDescription* audioMixDescription(const QAbstractItemModel* trackModel) = 0;
    /// Slot 23. The label of a row, for example its channel format; empty when it has none.
    virtual QString trackLabel(const QAbstractItemModel* trackModel, int row) = 0;
    /// Slot 24. Which columns of a track data model hold the check box, the name and the second text, and how large the
    /// check box is.
    virtual MXE_TrackColumns trackColumns(const QAbstractItemModel* trackModel) = 0;
    /// Slot 25. Whether a column of the model is shown to the user.
    virtual bool isTrackColumnShown(const QAbstractItemModel* trackModel, int column) = 0;
};
