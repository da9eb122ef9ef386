#include "desk/media/Player.h"

#include "desk/media/PictureFeed.h"
#include "desk/media/SoundFeed.h"
#include "desk/media/SoundReader.h"

#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <mutex>

namespace desk::media
{

namespace
{

/// Milliseconds between two looks at the clock: a fraction of the shortest frame.
constexpr int interval = 4;
constexpr Rational soundOnlyRate(25, 1);

qint64 lengthOf(const Sequence& sequence, Rational rate)
{
    if (sequence.picture)
        return sequence.frames;
    const qint64 samples = soundRate * rate.den;
    return std::max<qint64>(1, (sequence.soundSamples * rate.num + samples - 1) / samples);
}

} // namespace

struct Player::Wire {
    std::mutex mutex;
    Player* player = nullptr;

    void ready()
    {
        const std::lock_guard lock(mutex);
        if (player != nullptr)
            QMetaObject::invokeMethod(player, &Player::onReady, Qt::QueuedConnection);
    }
};

Player::Player(std::shared_ptr<SoundOutput> output, QObject* parent) : QObject(parent), m_output(std::move(output))
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(interval);
    connect(&m_timer, &QTimer::timeout, this, &Player::tick);
}

Player::~Player()
{
    halt();
    retireFeeds();
}

/// A feed ends when it has decoded what it is at, which the user-interface thread does not wait for.
void Player::retireFeeds()
{
    if (!m_wire)
        return;
    {
        const std::lock_guard lock(m_wire->mutex);
        m_wire->player = nullptr;
    }
    m_wire.reset();
    auto retired = std::make_shared<std::pair<std::unique_ptr<PictureFeed>, std::unique_ptr<SoundFeed>>>(
        std::move(m_pictures), std::move(m_sound));
    QThreadPool::globalInstance()->start([retired = std::move(retired)]() mutable { retired.reset(); });
}

void Player::load(const Sequence& sequence)
{
    unload();
    m_sequence = sequence;
    m_rate = sequence.frameRate.isValid() ? sequence.frameRate : soundOnlyRate;
    m_frames = lengthOf(sequence, m_rate);
    m_wire = std::make_shared<Wire>();
    m_wire->player = this;
    const auto ready = [wire = m_wire] { wire->ready(); };
    m_pictures = std::make_unique<PictureFeed>(sequence, ready);
    m_sound = std::make_unique<SoundFeed>(sequence, m_output, ready);
    m_pictures->setBox(m_box);
    m_pictures->show(0);
    setState(State::Stopped);
    emit loaded();
    emit marksChanged();
    emit positionChanged(0);
}

void Player::unload()
{
    if (m_state == State::Empty)
        return;
    stop();
    retireFeeds();
    m_sequence.reset();
    m_picture.reset();
    m_frames = m_position = 0;
    m_markIn = m_markOut = none;
    m_problem.clear();
    setState(State::Empty);
    emit loaded();
}

void Player::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    if (!isPlaying()) {
        m_playing.reset();
    } else if (!m_playing) {
        m_playing.emplace();
    }
    emit stateChanged();
}

void Player::setBox(QSize box)
{
    if (box == m_box)
        return;
    m_box = box;
    if (!m_pictures)
        return;
    m_pictures->setBox(box);
    if (!isPlaying())
        m_pictures->show(m_position);
}

void Player::play()
{
    if (m_state != State::Empty && !(isPlaying() && m_speed == 1))
        start(1);
}

void Player::togglePlay()
{
    isPlaying() ? stop() : play();
}

void Player::shuttle(int direction)
{
    if (m_state == State::Empty)
        return;
    const int now = speed();
    if (now == 0)
        return start(direction);
    if (now * direction > 0)
        return start(std::clamp(now * 2, -fastest, fastest));
    std::abs(now) == 1 ? start(direction) : start(now / 2);
}

/// Begins a run where the monitor stands, or takes the one that runs to another speed.
void Player::start(int speed)
{
    const bool stood = !isPlaying();
    const bool changed = stood || speed != m_speed;
    if (speed > 0 && m_position >= m_frames - 1)
        moveTo(0);
    else if (speed < 0 && m_position == 0)
        return stop();
    halt();
    m_speed = speed;
    m_statistics = {};
    if (m_state == State::Starting && changed)
        emit stateChanged();
    setState(State::Starting);
    startRun();
    if (stood)
        emit aboutToPlay(m_position);
}

void Player::startRun()
{
    m_origin = m_position;
    m_pictures->run(m_position, m_speed);
    if (m_speed == 1)
        m_sound->run(firstSampleOfFrame(m_position, m_rate, soundRate));
    m_timer.start();
}

void Player::halt()
{
    m_timer.stop();
    if (!isPlaying())
        return;
    m_output->stop();
    m_sound->rest();
}

void Player::begin()
{
    if (m_speed == 1)
        m_output->start([this](float* pairs, int frames) { return m_sound->pull(pairs, frames); });
    else
        m_clock.start();
    setState(State::Playing);
    emit nowPlaying(m_position);
}

void Player::stop()
{
    if (!isPlaying())
        return;
    halt();
    setState(State::Stopped);
    if (m_picture && m_picture->frame == m_position && !m_picture->isStandIn)
        m_pictures->rest();
    else
        m_pictures->show(m_position);
    emit donePlaying(m_position);
}

double Player::elapsed() const
{
    return m_speed == 1 ? m_output->position() : double(m_clock.nsecsElapsed()) * 1e-9;
}

void Player::onReady()
{
    if (!m_pictures)
        return;
    const QString problem = m_sound->problem();
    if (problem != std::exchange(m_problem, problem) && !problem.isEmpty())
        emit failed(problem);
    if (m_state == State::Starting)
        tick();
    else if (m_state == State::Stopped)
        takePicture();
}

void Player::tick()
{
    if (m_state == State::Starting) {
        if (!m_pictures->isPrimed() || !m_sound->isPrimed())
            return;
        begin();
        if (m_state != State::Playing)
            return;
    }
    const auto gone = qint64(std::floor(elapsed() * m_rate.toDouble() * std::abs(m_speed) + 1e-6));
    const qint64 due = m_origin + (m_speed < 0 ? -gone : gone);
    const qint64 frame = std::clamp<qint64>(due, 0, m_frames - 1);
    m_position == frame ? takePicture() : moveTo(frame);
    if (due != frame && isPlaying())
        stop();
}

void Player::moveTo(qint64 frame)
{
    m_position = frame;
    takePicture();
    emit positionChanged(frame);
}

void Player::takePicture()
{
    if (PreviewPtr picture = m_pictures->take(m_position)) {
        m_picture = std::move(picture);
        notePicture();
        emit pictureChanged();
    }
}

void Player::notePicture()
{
    if (m_state != State::Playing)
        return;
    const double due = double(std::abs(m_picture->frame - m_origin)) / (m_rate.toDouble() * std::abs(m_speed));
    const double late = elapsed() - due;
    const qint64 dropped = m_pictures->dropped();
    // Shuttling leaves pictures out anyway.
    if (std::abs(m_speed) == 1 && (dropped > m_statistics.dropped || late * m_rate.toDouble() > 1))
        Playing::fallBehind();
    m_statistics.shown += 1;
    m_statistics.dropped = dropped;
    m_statistics.latest = std::max(m_statistics.latest, late);
    m_statistics.lateness += late;
}

void Player::step(int frames)
{
    if (m_state == State::Empty)
        return;
    stop();
    seek(m_position + frames);
}

void Player::seek(qint64 frame)
{
    if (m_state == State::Empty)
        return;
    const qint64 target = std::clamp<qint64>(frame, 0, m_frames - 1);
    if (isPlaying()) {
        halt();
        m_position = target;
        setState(State::Starting);
        startRun();
        emit positionChanged(target);
        return;
    }
    if (target == m_position)
        return;
    m_pictures->show(target);
    m_position = target;
    emit positionChanged(target);
}

void Player::scrub(qint64 frame)
{
    if (m_state == State::Empty)
        return;
    stop();
    const qint64 target = std::clamp<qint64>(frame, 0, m_frames - 1);
    if (target == m_position)
        return;
    m_pictures->scrub(target);
    m_position = target;
    emit positionChanged(target);
}

void Player::placeMarks(qint64 in, qint64 out)
{
    if (m_state == State::Empty || (in == m_markIn && out == m_markOut))
        return;
    m_markIn = in;
    m_markOut = out;
    emit marksChanged();
}

void Player::setMarks(qint64 in, qint64 out)
{
    const auto held = [this](qint64 frame) { return frame < 0 ? none : std::min(frame, m_frames - 1); };
    const qint64 from = held(in);
    const qint64 to = held(out);
    placeMarks(from, to != none && to < from ? none : to);
}

void Player::markInHere()
{
    placeMarks(m_position, m_markOut < m_position ? none : m_markOut);
}

void Player::markOutHere()
{
    placeMarks(m_markIn > m_position ? none : m_markIn, m_position);
}

void Player::clearMarks()
{
    placeMarks(none, none);
}

void Player::goToMarkIn()
{
    if (m_markIn != none)
        seek(m_markIn);
}

void Player::goToMarkOut()
{
    if (m_markOut != none)
        seek(m_markOut);
}

} // namespace desk::media
