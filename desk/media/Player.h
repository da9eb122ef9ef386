#pragma once

#include "desk/media/Playing.h"
#include "desk/media/Preview.h"
#include "desk/media/Sequence.h"
#include "desk/media/SoundOutput.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>

namespace desk::media
{

class PictureFeed;
class SoundFeed;

/// Plays a sequence: pictures for a monitor, sound for the machine's device, whose clock the pictures follow. Decoding
/// and mixing have threads of their own; a picture that comes too late is dropped. User-interface thread; no call
/// blocks, and signals come from there.
///
/// A sequence without picture plays at 25 frames a second.
class Player : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Empty,
        Stopped,
        /// Has been told to play and gathers pictures and sound.
        Starting,
        Playing
    };
    Q_ENUM(State)

    /// In order of speed; J and L walk through them.
    static constexpr int fastest = 8;
    static constexpr qint64 none = -1;

    explicit Player(std::shared_ptr<SoundOutput> output, QObject* parent = nullptr);
    ~Player() override;

    /// Stops, forgets marks and stands on frame 0.
    void load(const Sequence& sequence);
    void unload();

    /// What is loaded; empty with State::Empty.
    const std::optional<Sequence>& sequence() const { return m_sequence; }

    State state() const { return m_state; }

    bool isPlaying() const { return m_state == State::Starting || m_state == State::Playing; }

    Rational rate() const { return m_rate; }

    qint64 frames() const { return m_frames; }

    /// The frame that the monitor stands on.
    qint64 position() const { return m_position; }

    /// Sequence speeds a second of the clock, negative backwards; 0 while it stands. Sound is heard at 1.
    int speed() const { return isPlaying() ? m_speed : 0; }

    /// Frames; `none` where there is none. The mark out lies inside the marked span.
    qint64 markIn() const { return m_markIn; }

    qint64 markOut() const { return m_markOut; }

    /// Sets both; `none` clears one. A mark that would cross the other one moves it away.
    void setMarks(qint64 in, qint64 out);

    /// The size of the monitor in pixels of the screen; pictures are made to fit.
    void setBox(QSize box);

    /// The newest picture; null before the first.
    const PreviewPtr& picture() const { return m_picture; }

    struct Statistics {
        qint64 shown = 0;
        qint64 dropped = 0;
        /// How long after its time a picture was shown, in seconds: the longest, and all together.
        double latest = 0;
        double lateness = 0;
    };

    /// Of the last run.
    const Statistics& statistics() const { return m_statistics; }

public slots:
    /// From the end it starts over.
    void play();
    void stop();
    void togglePlay();
    /// L is 1 and J is -1: starts, then doubles, first slowing down what runs the other way.
    void shuttle(int direction);
    /// Stops and goes on by that many frames.
    void step(int frames);
    /// Held within the sequence. While it plays, it goes on from there.
    void seek(qint64 frame);
    /// Stops and seeks for a hand that drags: where the frame takes long to decode, other pictures stand in for it.
    void scrub(qint64 frame);
    void markInHere();
    void markOutHere();
    void clearMarks();
    void goToMarkIn();
    void goToMarkOut();

signals:
    /// Another sequence, or none, is loaded.
    void loaded();
    void stateChanged();
    void positionChanged(qint64 frame);
    void pictureChanged();
    void marksChanged();
    /// Playback has been asked for; it starts when nowPlaying() comes.
    void aboutToPlay(qint64 frame);
    void nowPlaying(qint64 frame);
    void donePlaying(qint64 frame);
    /// Something cannot be played; the rest can.
    void failed(const QString& sentence);

private:
    void setState(State state);
    void start(int speed);
    void startRun();
    void begin();
    void halt();
    void onReady();
    void tick();
    double elapsed() const;
    void moveTo(qint64 frame);
    void takePicture();
    void notePicture();
    void placeMarks(qint64 in, qint64 out);

    /// How the feeds' threads reach the player, or no longer do.
    struct Wire;
    void retireFeeds();

    std::shared_ptr<SoundOutput> m_output;
    std::shared_ptr<Wire> m_wire;
    std::optional<Sequence> m_sequence;
    std::unique_ptr<PictureFeed> m_pictures;
    std::unique_ptr<SoundFeed> m_sound;
    State m_state = State::Empty;
    std::optional<Playing> m_playing;
    Rational m_rate{25, 1};
    qint64 m_frames = 0;
    qint64 m_position = 0;
    int m_speed = 1;
    qint64 m_markIn = none;
    qint64 m_markOut = none;
    QSize m_box{640, 360};
    PreviewPtr m_picture;
    /// Where the run started, and the clock of runs without sound.
    qint64 m_origin = 0;
    QElapsedTimer m_clock;
    QTimer m_timer;
    Statistics m_statistics;
    QString m_problem;
};

} // namespace desk::media
