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
/// Used on the user-interface thread. The order of the declarations is the binary interface.
class STRATACUTUI_EXPORT IAudioMixDescription
{
public:
    /// Slot 0.
    virtual ~IAudioMixDescription();
    /// Slot 1. The entries under a key, in the order in which users shall see them; "Audio Mix" holds the mix modes.
    /// Empty for an unknown key.
    virtual QStringList list(const QString& key) const = 0;
};

/// How the columns of a track data model are to be read and drawn. Columns are counted from 0.
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
/// All calls come from the user-interface thread and must not throw; none reports an error: what the host does not know
/// it answers as each slot says. Arguments are valid for the length of the call. From inside one the host neither
/// changes nor destroys the item model, nor runs an event loop, in which the user could; the same holds for
/// TargetFormatBuilder and IAudioMixDescription. `mobId` is the host's identifier of a sequence: stable from run to
/// run, opaque to the module. A track data model is never null except where a slot says so. The order of the
/// declarations is the binary interface.
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
    /// none or they cannot be read. The layout of that format is the host's own.
    /// @param mime never null; not kept.
    virtual QStringList mobIdsFromMimeData(const QMimeData* mime) = 0;
    /// Slot 4. The sequence's name; empty for an unknown identifier.
    virtual QString sequenceName(const QString& mobId) = 0;
    /// Slot 5. What new deliverables and CPLs carry as "Creator": the application's name and version.
    virtual QString creator() = 0;
    /// Slot 6. Reserved: the module does not call it.
    virtual void reserved6() = 0;
    /// Slot 7. The token by which IMFO_Bridge::createCPL finds the sequence.
    /// @param token out: text of the host's own, UTF-8; empty for an unknown identifier.
    virtual void sequenceToken(std::string& token, const QString& mobId) = 0;
    /// Slot 8. The sequence's frame rate, in the spelling of the target-format builder's choices for "Frame Rate".
    /// @param frameRate out: frames a second, UTF-8; "Unknown" where the output offers no such rate or there is no such
    ///        sequence.
    virtual void sequenceFrameRate(std::string& frameRate, const QString& mobId) = 0;
    /// Slot 9. Whether the identifier denotes a sequence that exists at present.
    virtual bool isSequence(const QString& mobId) = 0;
    /// Slot 10. The name of the project that is open. @param name out: empty when none is open.
    virtual void projectName(QString& name) = 0;
    /// Slot 11. The bin that holds the sequence. @param bin out: empty for an unknown identifier.
    virtual void sequenceBin(QString& bin, const QString& mobId) = 0;
    /// Slot 12. Reserved: the module does not call it.
    virtual void reserved12() = 0;
    /// Slot 13. A builder of the output format for a CPL, with default parameters that suit the sequence.
    /// @param cplId the CPL's identifier; it may still change by a rename.
    /// @param mobId the CPL's sequence; empty for a CPL that was read from disk, unknown where the sequence is gone.
    /// @return owned by the CPL and its copies, so a new one for each call. Null where the host can make none: the CPL
    ///         then has no encoding parameters to choose and its frame rate counts as not offered.
    virtual std::shared_ptr<TargetFormatBuilder> createTargetFormatBuilder(const QString& cplId,
                                                                           const QString& mobId) = 0;
    /// Slot 14. Creates an empty track data model. Where the host has to say something about "Include Master Fader", it
    /// sets a property "masterFaderNote" of the model: a text that the grouping dialog shows as a tooltip.
    /// @param packageModel becomes the new model's parent, which releases it with the last CPL of the sequence.
    /// @return never null.
    /// @param font the font in which tracks will be shown.
    virtual QAbstractItemModel* createTrackDataModel(QAbstractItemModel* packageModel, const QFont& font) = 0;
    /// Slot 15. Whether the track data model belongs to a sequence that exists. @param trackModel may be null: false.
    virtual bool isSequenceTrackModel(const QAbstractItemModel* trackModel) = 0;
    /// Slot 16. Fills a track data model for the sequence; what it held before is replaced. An unknown identifier
    /// leaves the model empty.
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
    /// Slot 21. The names of the active tracks behind a track data model, in timeline order. A name holds the track's
    /// number, counted from 1, and no other digits ("A2"): the flat audio mapping is made from it. Empty when there is
    /// no sequence behind the model. @param trackModel may be null: empty.
    virtual QStringList activeTracks(const QAbstractItemModel* trackModel) = 0;
    /// Slot 22. What the mixing can make of the model's tracks; owned by the host. Null when there is no sequence
    /// behind the model.
    virtual const IAudioMixDescription* audioMixDescription(const QAbstractItemModel* trackModel) = 0;
    /// Slot 23. The label of a row, for example its channel format; empty when it has none. @param row counted from 0.
    virtual QString trackLabel(const QAbstractItemModel* trackModel, int row) = 0;
    /// Slot 24. Which columns of a track data model hold the check box, the name and the second text, and how large the
    /// check box is.
    virtual MXE_TrackColumns trackColumns(const QAbstractItemModel* trackModel) = 0;
    /// Slot 25. Whether a column of the model is shown to the user. @param column counted from 0.
    virtual bool isTrackColumnShown(const QAbstractItemModel* trackModel, int column) = 0;
};
