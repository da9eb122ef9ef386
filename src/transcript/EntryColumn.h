#pragma once

#include "StratacutUI/STT_TranscriptData.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QRect>

#include <functional>
#include <vector>

class QTextBlock;
class QTextCursor;
class QTextEdit;
class STT_EntryWidget;
class STT_MissingTranscriptWidget;

/// The widgets of the transcript's lines: they lie on the text edit's viewport, in the left margin of the segments'
/// blocks and over the blocks of clips without a transcript.
///
/// Only lines in view have widgets, which are recycled as the text scrolls: thousands of live editors would cost
/// seconds and hundreds of megabytes. What a line shows is asked anew when it comes into view. A field in which the
/// user types keeps its widget wherever the text scrolls. Which line a block is, is read from the block: its user state
/// is the segment's number, setClip marks the others. Owned by the text edit.
class EntryColumn : public QObject
{
    Q_OBJECT

public:
    /// What to ask about a segment. Not called for a segment that no block names.
    struct Texts {
        std::function<QString(int segment)> speaker;
        std::function<QString(int segment)> timecode;
    };

    EntryColumn(QTextEdit* edit, Texts texts);

    /// Makes room for a clip's widget in the cursor's empty block, which becomes its line with setClip.
    void layClipLine(QTextCursor& cursor) const;
    /// What the line of a clip shows from the next refreshTexts on, or when it comes into view.
    static void setClip(QTextBlock block, const STT_MissingTranscript& clip, const QString& timecode);

    /// Before and after the text is built anew: in between nothing is asked and nothing moves.
    void beginRebuild();
    void endRebuild();

    void setVisibilities(const STT_Visibilities& visibilities);

    /// How much of the left margin of a segment's block the parts that are shown need, in pixels.
    int gutterWidth() const;

    /// Asks anew for the texts of the lines in view; for the others they are asked when they come into view.
    void refreshTexts();

    /// Shows a name as the speaker of those lines in view whose segment is meant.
    void showSpeaker(const QString& name, const std::function<bool(int segment)>& isMeant);

    /// Ends, without a new name, the typing in fields of segments that are not meant.
    void endEditing(const std::function<bool(int segment)>& isMeant);

    /// Brings the widgets to the lines that are in view now. Runs by itself when the text has scrolled, was laid out
    /// or changed; call it to have it done at once.
    void sync();

    /// The widget of a segment that is in view; null for others.
    STT_EntryWidget* entry(int segment) const { return m_bySegment.value(segment); }

    /// The widgets that stand for a line now, from top to bottom.
    QList<STT_EntryWidget*> entries() const;
    QList<STT_MissingTranscriptWidget*> clipLines() const;

Q_SIGNALS:
    /// From the speaker field of any line.
    void speakerNameChanged(int segment, const QString& newName);
    void speakerMenuRequested(STT_EntryWidget* entry, const QPoint& position);
    /// By the keyboard, for the line that the user is at.
    void speakerMenuKeyPressed();
    void transcribeRequested(const QString& mediaGuid);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Place {
        int key = -1; // segment number, or block number of a clip's line
        QRect rect;
    };

    struct Places {
        std::vector<Place> entries;
        std::vector<Place> clips;
    };

    void syncSoon();
    Places placesInView() const;
    void placeEntries(const std::vector<Place>& places);
    void placeClips(const std::vector<Place>& places);
    STT_EntryWidget* takeEntry();
    STT_MissingTranscriptWidget* takeClipLine();
    void fill(STT_EntryWidget* entry, int segment);
    void fill(STT_MissingTranscriptWidget* line, int block);
    void giveFocusBack();

    QTextEdit* m_edit;
    Texts m_texts;
    STT_Visibilities m_visibilities;
    QHash<int, STT_EntryWidget*> m_bySegment;
    QHash<int, STT_MissingTranscriptWidget*> m_byBlock;
    QList<STT_EntryWidget*> m_spareEntries;
    QList<STT_MissingTranscriptWidget*> m_spareClips;
    bool m_isPaused = false;
    bool m_isSyncing = false;
    bool m_isSyncDue = false;
};
