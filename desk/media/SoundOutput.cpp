#include "desk/media/SoundOutput.h"

#include "desk/media/SoundReader.h"

#include <QElapsedTimer>
#include <QLibrary>
#include <QtGlobal>

#include <SDL.h>

#include <algorithm>
#include <atomic>
#include <mutex>

namespace desk::media
{

namespace
{

constexpr int bufferFrames = 512;
constexpr double secondsOfSample = 1.0 / soundRate;

void ignore(const char*, int, const char*, int, const char*, ...) {} // NOLINT(cert-dcl50-cpp)

/// A machine without a sound card is no fault that a terminal has to be told of, as ALSA does.
void silenceAlsa()
{
    using Handler = void (*)(const char*, int, const char*, int, const char*, ...);
    using SetHandler = int (*)(Handler);
    QLibrary alsa(QStringLiteral("asound"), 2);
    if (auto set = reinterpret_cast<SetHandler>(alsa.resolve("snd_lib_error_set_handler")))
        set(ignore);
}

/// What a device has played, as far as its callbacks tell: while it asks for one buffer it plays the one before.
class HeardCounter
{
public:
    void reset()
    {
        const std::lock_guard lock(m_mutex);
        m_heard = m_handed = m_last = 0;
        m_since.start();
    }

    void hand(int frames)
    {
        const std::lock_guard lock(m_mutex);
        m_heard = m_handed;
        m_handed += frames;
        m_since.start();
    }

    double seconds() const
    {
        const std::lock_guard lock(m_mutex);
        const double waited = double(m_since.nsecsElapsed()) * 1e-9;
        const double playing = std::min(waited, double(m_handed - m_heard) * secondsOfSample);
        // A device that was pulled out asks no more: time goes on without it.
        const double orphaned = std::max(0.0, waited - patience);
        m_last = std::max(m_last, double(m_heard) * secondsOfSample + playing + orphaned);
        return m_last;
    }

private:
    static constexpr double patience = 0.5;

    mutable std::mutex m_mutex;
    qint64 m_handed = 0;
    qint64 m_heard = 0;
    QElapsedTimer m_since;
    mutable double m_last = 0;
};

class SystemOutput : public SoundOutput
{
public:
    ~SystemOutput() override;
    void prepare() override;
    void start(Pull pull) override;
    void stop() override;
    double position() const override;

private:
    static void fill(void* self, Uint8* bytes, int count);
    void open();

    std::once_flag m_once;
    std::atomic<SDL_AudioDeviceID> m_device{0};
    bool m_initialised = false;
    /// The device that start() has set going, 0 for the silent clock.
    SDL_AudioDeviceID m_running = 0;
    Pull m_pull;
    HeardCounter m_heard;
    QElapsedTimer m_silent;
};

SystemOutput::~SystemOutput()
{
    if (m_device != 0)
        SDL_CloseAudioDevice(m_device);
    if (m_initialised)
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
}

void SystemOutput::prepare()
{
    std::call_once(m_once, [this] { open(); });
}

void SystemOutput::open()
{
    silenceAlsa();
    SDL_SetMainReady();
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    m_initialised = SDL_InitSubSystem(SDL_INIT_AUDIO) == 0;
    // The dummy driver keeps no time.
    if (!m_initialised || qstrcmp(SDL_GetCurrentAudioDriver(), "dummy") == 0)
        return;
    SDL_AudioSpec wanted{};
    wanted.freq = soundRate;
    wanted.format = AUDIO_F32SYS;
    wanted.channels = 2;
    wanted.samples = bufferFrames;
    wanted.callback = fill;
    wanted.userdata = this;
    SDL_AudioSpec given{};
    m_device = SDL_OpenAudioDevice(nullptr, 0, &wanted, &given, 0);
}

void SystemOutput::fill(void* self, Uint8* bytes, int count)
{
    auto& output = *static_cast<SystemOutput*>(self);
    const int frames = count / int(2 * sizeof(float));
    auto* pairs = reinterpret_cast<float*>(bytes);
    const int got = output.m_pull ? output.m_pull(pairs, frames) : 0;
    std::fill(pairs + std::ptrdiff_t(got) * 2, pairs + std::ptrdiff_t(frames) * 2, 0.0F);
    output.m_heard.hand(got);
}

void SystemOutput::start(Pull pull)
{
    stop();
    m_silent.start();
    m_heard.reset();
    m_running = m_device;
    if (m_running == 0)
        return;
    SDL_LockAudioDevice(m_running);
    m_pull = std::move(pull);
    SDL_UnlockAudioDevice(m_running);
    SDL_PauseAudioDevice(m_running, 0);
}

void SystemOutput::stop()
{
    if (m_running == 0)
        return;
    SDL_PauseAudioDevice(m_running, 1);
    SDL_LockAudioDevice(m_running);
    m_pull = {};
    SDL_UnlockAudioDevice(m_running);
    m_running = 0;
}

double SystemOutput::position() const
{
    if (m_running != 0)
        return m_heard.seconds();
    return m_silent.isValid() ? double(m_silent.nsecsElapsed()) * 1e-9 : 0.0;
}

} // namespace

std::shared_ptr<SoundOutput> systemSoundOutput()
{
    return std::make_shared<SystemOutput>();
}

} // namespace desk::media
