#pragma once

#include "StratacutUI/ITranscriptWindowInfo.h"
#include "desk/media/Player.h"
#include "desk/services/TranscriptService.h"

#include <QObject>
#include <QPointer>

namespace desk::services
{

/// The transcript window's host: transcripts of the service, time and playback of two players. What needs a dialog is
/// passed on as a signal. User-interface thread; service and players outlive it.
class TranscriptWindowInfo : public QObject, public ITranscriptWindowInfo
{
    Q_OBJECT

public:
    enum class Wish { ExportTranscript, ExportSubcaptions, CreateSubcaptions, CreateScript };
    Q_ENUM(Wish)

    TranscriptWindowInfo(TranscriptService& service, media::Player& source, media::Player& record);

    /// The player whose material is shown.
    media::Player& player() const { return *m_player; }

    TranscriptService& service() const { return m_service; }

    /// Remembers which tracks of the material are transcribed and shown.
    /// @return what the user should know about it; mostly empty.
    QString chooseTracks(const QVector<int>& tracks);

    /// Whether the clip sounds in the material.
    bool holds(const QString& clip) const;

    const std::vector<STT_TranscriptSegment>& segments(int track) override;
    void prepareTranscript() override;
    STT_SpeakerInfo speakerOfSegment(int segment) override;
    bool isTranscriptLoaded() override;
    long markIn() override;
    long markOut() override;
    NvUnit_t position() override;
    void goToMarkIn() override;
    void goToMarkOut() override;
    void moveMonitor(NvUnit_t frame) override;
    void togglePlayback() override;
    void stopPlayback() override;
    void setMarkIn(NvUnit_t frame) override;
    void setMarks(NvUnit_t in, NvUnit_t out) override;
    int msFromFrame(int frame, bool previous) override;
    int frameFromMs(int ms) override;
    std::string timecodeText(int ms) override;
    void correctSpeaker(int segment, const STT_SpeakerInfo& speaker) override;
    void storeSpeakerName(const STT_SpeakerInfo& speaker, const std::string& newName) override;
    int addSpeaker() override;
    std::vector<STT_SpeakerInfo> speakers(bool withUnnamed) override;
    bool isDatabaseOnline() override;
    std::vector<STT_MissingTranscript> missingTranscripts() override;
    std::string speakerText(int key) override;
    void transcribe(const std::string& mediaGuid) override;
    void storeFont(const QFont& font) override;
    bool storedFont(QFont& font) override;
    void storeSpeakerVisibility(bool visible) override;
    void storeTimecodeVisibility(bool visible) override;
    void storeNotTranscribedVisibility(bool visible) override;
    STT_Visibilities storedVisibilities() override;
    void exportSubcaptions() override;
    void createSubcaptions() override;
    void exportTranscript() override;
    void createScriptFromClip() override;
    void showMonitor(bool record) override;
    bool isMaterialLoaded() override;
    int countOfRemainingClips() override;
    void refreshTranscript() override;

    void reserved1() override {}

    void reserved15() override {}

    void reserved23() override {}

    void reserved24() override {}

    void reserved42() override {}

Q_SIGNALS:
    /// The window's transcript is not what it shows any more: TranscriptInfoChangedSlot(true).
    void changed();
    /// The shown monitor holds something else: TranscriptInfoChangedSlot(false).
    void materialChanged();

    void wished(desk::services::TranscriptWindowInfo::Wish wish);
    /// A request of the window could not be done; one sentence.
    void refused(const QString& sentence);

private:
    struct MissingClip {
        const SpokenRange* first;
        speech::ClipState state;
    };

    std::vector<MissingClip> missingClips() const;
    void forget();
    void load();
    void resume();
    void changeSettings(const TranscriptSettings& settings);

    TranscriptService& m_service;
    media::Player* m_source;
    media::Player* m_record;
    media::Player* m_player;
    std::vector<SpokenRange> m_ranges;
    bool m_isLoaded = false;
    /// Whether clips of the material have a transcript that is not read yet.
    bool m_awaits = false;
    bool m_hasTranscript = false;
    /// What the window asked for shows there already.
    bool m_isAsked = false;
    MappedTranscript m_mapped;
    std::vector<STT_TranscriptSegment> m_segments;
};

} // namespace desk::services
