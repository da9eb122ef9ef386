#pragma once

#include "NvCore/NvUnit.h"
#include "StratacutUI/Export.h"
#include "StratacutUI/ITranscriptWindowInfo.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"

#include <QColor>
#include <QList>
#include <QTextCursor>
#include <QTextFormat>
#include <QWidget>

#include <memory>
#include <vector>

class EntryColumn;
class QAction;
class QFont;
class QMenu;
class SegmentTimeIndex;
class StatePage;
class STT_EntryWidget;
class STT_MissingTranscriptWidget;

namespace ViewDeckQt
{
class StyledIconButton;
}

/// The transcript of what is loaded in the host's source or record monitor: it follows playback word by word, seeks
/// when a word is clicked, and passes requests about speakers, transcription and export to the host.
///
/// The host builds the window and owns it; the window owns the host's ITranscriptWindowInfo. The host tells it through
/// the slots when playback starts, proceeds and stops, when the position or a mark moves and when the transcript
/// changes; it may do so from inside a call that the window makes, the look-ups of slots 2, 17 and 18 excepted. The
/// window must outlive the calls that it makes: from inside one, deleteLater ends it. User-interface thread only.
class STRATACUTUI_EXPORT STT_TranscriptManagerWindow : public QWidget
{
    Q_OBJECT

public:
    /// @param info must not be null.
    explicit STT_TranscriptManagerWindow(std::unique_ptr<ITranscriptWindowInfo> info, QWidget* parent = nullptr);
    ~STT_TranscriptManagerWindow() override;

    // Frames, milliseconds, words and positions. A word is named by its segment's number and its index in the segment.
    // Out-pointers may be null.

    /// The smallest segment from minSegment on that is spoken at a time; with minSegment 0 and in a pause the one that
    /// ended last, and 0 where there is none. -1 with a greater minSegment and nobody speaking.
    int findSegmentFromMS(int ms, int minSegment);
    /// The word that a frame shows.
    /// @param previous asks for the last word that is over at the frame.
    /// @return false leaves segment and word undefined.
    bool findWordIndexFromFrame(int frame, bool previous, int minSegment, int& segment, int& word);
    /// The same, as positions in the document; all -1 where there is none.
    void findWordPosFromFrame(int frame, bool previous, int minSegment, int* start, int* end, int* segment);
    /// @return false, with -1 in start and end, for a word that has no place in the document.
    bool findWordPosFromWordIndex(int segment, int word, int* start, int* end);
    bool findWordIndexFromPosition(int position, int& segment, int& word);
    /// @return false where there is no such neighbour: at the ends of the transcript and beside a segment without
    /// words.
    bool getNextWordInfo(int segment, int word, int* nextSegment, int* nextWord, int* nextStartMs);
    bool getPrevWordInfo(int segment, int word, int* prevSegment, int* prevWord, int* prevEndMs);
    /// -1 for a segment that has no block.
    int getBlockNumberForSegment(int segment);
    /// The host's speakers without equal display names, in the order of these.
    std::vector<STT_SpeakerInfo> getSpeakersInfo(bool withUnnamed);

    STT_TranscriptTextEdit* getTranscriptTextEdit() const { return m_textEdit; }

    /// The word that is bold; selects nothing when none is.
    const QTextCursor& getBoldedCursor() const { return m_boldedCursor; }

    /// The widgets beside the lines in view, from top to bottom. A widget goes to another line when its own leaves the
    /// view.
    QList<STT_EntryWidget*> entryWidgets() const;
    QList<STT_MissingTranscriptWidget*> missingWidgets() const;

    /// Whether the window follows the monitor at the moment: gang is on and not suspended.
    bool isGangActive() const { return m_isGangOn && !m_isGangSuspended; }

    bool isGangSuspended() const { return m_isGangSuspended; }

    void setSuspendGanging(bool suspended) { m_isGangSuspended = suspended; }

    /// Tells the window which skin the host shows.
    void setLightSkin(bool light);
    QColor GetHighlightColor() const;
    QColor GetBoldColor() const;

    /// Bolds the word that a frame shows, and those spoken at the same time in other segments.
    /// @param keepView the view stays where the user put it once it does not show the bold word any more.
    void followMonitor(NvUnit_t frame, bool keepView);
    /// Makes the text between two positions the only bold one. @param follow brings it into view.
    void moveBoldText(int start, int end, bool follow);
    void clearWordBolding();
    void setWordBolding(QTextCursor& cursor, bool on);

    /// How the block of a segment is set: room for what stands beside the text. The same for a line of a clip that has
    /// no transcript (-1).
    QTextBlockFormat getTranscriptFormat(int segment) const;
    void mergeBlockFormats();

    void updateGangStatus();
    /// Selects the words between the marks, or nothing unless both are set.
    void updateMarkSelection();
    /// Sets both marks round the words that are selected.
    void setMarksFromSelection();
    /// Bolds anew in the colours that suit the selection.
    void checkSelection();

    /// Reads everything from the host and shows it.
    void refreshWindow(bool saveScrollPos);
    void TranscriptTextClicked(STT_TranscriptTextEdit* textEdit, const QPoint& position);

    // The speaker menu, one for all lines of the process.

    static QMenu* GetSpeakerMenu();
    /// @param entry the line that the menu is opened for; null for none.
    static void SetSpeakerMenuEntry(STT_EntryWidget* entry);
    /// Fills the menu for a segment.
    void RefreshSpeakerMenu(int segment);
    void IdentifySpeakerAction(QAction* action, STT_SpeakerInfo speaker);
    void CorrectSpeakerAction(QAction* action, STT_SpeakerInfo speaker);
    void ClearNameSpeakerAction();
    void RenameSpeakerAction();
    void AddNewSpeakerAction();

    bool event(QEvent* event) override;

public Q_SLOTS:
    // What the host reports. Frames count from 0 at the start of the material.

    /// The monitor stands at another frame.
    void MonPosChangedSlot(NvUnit_t monPosFrame);
    void NowPlayingSlot(long frame);
    void AboutToPlaySlot(long frame);
    /// Playback stopped; its last frame.
    void DonePlayingSlot(long frame);

    void TranscriptTextDoubleClickedSlot(STT_TranscriptTextEdit* pTextEdit, const QPoint& position);
    void TranscriptTextClickedSlot(STT_TranscriptTextEdit* pTextEdit, const QPoint& position);
    void SpacebarPressedSlot();
    void SwitchGangModeSlot();
    /// While text is edited, the space bar does not play.
    void SwitchEditModeSlot();
    /// The transcript, the speakers, the state of a transcription or the material changed.
    /// @param saveScrollPos the same material: the view stays where it is.
    void TranscriptInfoChangedSlot(bool saveScrollPos);
    /// Sets the mark at the monitor's frame.
    void MarkInSlot();
    void MarkOutSlot();
    /// A mark of the monitor moved. @param markInPosFrame -1: there is none any more.
    void MarkInChangedSlot(long markInPosFrame);
    void MarkOutChangedSlot(long markOutPosFrame);
    void GangButtonClickedSlot();
    void ArrowKeyPressedSlot(bool isRightArrow);
    void SpeakerNameChangedSlot(int segment, QString newName);
    /// @param mediaGuid a clip's identifier, or "ALL".
    void TranscribeSlot(const QString& mediaGuid);
    void DocumentSizeChangedSlot(const QSizeF& newSize);
    void refreshSlot();
    void setFontSlot();
    void FastMenuSlot();
    void TranscribeAllMissingSlot();
    void SetTimecodeVisibilitySlot();
    void SetSpeakerVisibilitySlot();
    void SetMissingVisibilitySlot();
    void scriptFromClipSlot();
    void exportTranscriptSlot();
    void exportSubcapSlot();
    void createSubcapSlot();
    /// Builds text and time index anew from what the host has.
    void UpdateTranscriptWindow();
    void SourceRecordMonChange();
    void onTrackSelectionClicked();
    /// @param type "GangMode" or "ToggleSourceRecord"; any other does nothing.
    void handleShortcuts(QString type);

Q_SIGNALS:
    /// The user set a mark of the monitor here.
    void markInSignal();
    void markOutSignal();
    /// Everything is up to date with the host. The text may have been built anew: cursors and positions of before are
    /// void then.
    void refreshDoneSignal();
    /// The other monitor's transcript is shown from now on.
    void monChanged();
    /// The user wants to choose the tracks of the transcript. @param parent the button, for the host's dialog or menu.
    void selectTracks(QWidget* parent);

protected:
    void showEvent(QShowEvent* event) override;

private:
    struct Content;
    enum class Showing;
    struct MenuEntry;

    // Construction
    void createWidgets();
    ViewDeckQt::StyledIconButton* createButton(const char* name, const char* image, const char* toolTip);
    void createEntryColumn();
    void createMenu();
    void layOut();
    void connectAll();
    void showGangImage();
    void showMonitorImage();
    void showHighlightColor();

    // Text
    void rebuild(const Content& content, Showing first);
    bool fillText(const Content& content, Showing first);
    void addLines(STT_TranscriptTextEdit::Lines& lines, const Content& content, std::size_t end);
    std::size_t linesToShowFirst(const Content& content) const;
    void paintFirstLines();
    void refreshLines(const Content& content);
    void finishRefresh();
    void addMissingTranscript(const STT_MissingTranscript& clip, const QString& timecode, int block);
    void hideMissingLines();
    void showState();
    void showVisibilities();
    QString speakerText(int segment);
    QString timecodeText(int segment);
    void useFont(const QFont& font);
    void fitWindowFont();

    // Speakers
    void openSpeakerMenu(STT_EntryWidget* entry, const QPoint& position);
    void openSpeakerMenuByKey();
    void closeSpeakerMenu();
    STT_EntryWidget* entryInView(int segment);

    // Following
    class Bolding;
    bool bringIntoView(int start, int end);
    bool canFollow() const;
    void setGang(bool on);
    bool selectWord(QTextCursor& cursor, int start, int end) const;
    bool isInSelection(const QTextCursor& cursor) const;
    QColor colorOfWord(const QTextCursor& cursor) const;
    NvUnit_t currentFrame();
    int lastFrameOf(int ms);

    // Seeking
    void stopPlayback();
    bool handleKey(QEvent* event);

    std::unique_ptr<ITranscriptWindowInfo> info;
    std::unique_ptr<SegmentTimeIndex> m_index;
    /// The block of each segment.
    std::vector<int> m_blocks;
    /// How often the host was asked what to show, and what the text was filled of.
    std::size_t m_readings = 0;
    std::size_t m_fingerprint = 0;
    /// The blocks of clips that have no transcript.
    std::vector<int> m_missingBlocks;
    STT_TranscriptTextEdit* m_textEdit = nullptr;
    EntryColumn* m_entryColumn = nullptr;
    StatePage* m_statePage = nullptr;
    QTextCursor m_boldedCursor;
    QList<QTextCursor> m_otherBoldedCursors;
    long m_markIn = -1;
    long m_markOut = -1;
    long m_stoppedAt = -1;
    /// The monitor's frame as the host told it last; -1 before that.
    NvUnit_t m_frame = -1;
    bool m_isGangOn = true;
    bool m_showsRecord = false;
    bool m_isLightSkin = false;
    bool m_isGangSuspended = false;
    bool m_isEditing = false;
    bool m_isActive = false;
    bool m_isBolding = false;
    STT_Visibilities m_visibilities;
    ViewDeckQt::StyledIconButton* m_gangButton = nullptr;
    ViewDeckQt::StyledIconButton* m_monitorButton = nullptr;
    ViewDeckQt::StyledIconButton* m_trackButton = nullptr;
    ViewDeckQt::StyledIconButton* m_menuButton = nullptr;
    QMenu* m_menu = nullptr;
    QAction* m_transcribeAll = nullptr;
    QAction* m_showTimecode = nullptr;
    QAction* m_showSpeaker = nullptr;
    QAction* m_showMissing = nullptr;
};
