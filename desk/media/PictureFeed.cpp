#include "desk/media/PictureFeed.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdlib>

namespace desk::media
{

namespace
{

/// Pictures that a run starts with.
constexpr std::size_t enough = 3;
/// Pictures that lie ready at most; backwards a group more.
constexpr std::size_t fewest = 4;
constexpr std::size_t most = 24;
constexpr std::size_t mostBytes = 96 << 20;
/// Pictures stand in for a frame that is further than this, and as often as this many milliseconds.
constexpr qint64 nearby = 24;
constexpr qint64 standInInterval = 50;
/// A group takes this much less time than it lasts, or becomes longer.
constexpr double reserve = 1.5;

} // namespace

PictureFeed::PictureFeed(const Sequence& sequence, std::function<void()> ready)
    : m_sequence(sequence),
      m_ready(std::move(ready)),
      m_source(m_sequence, {FF_THREAD_FRAME | FF_THREAD_SLICE, 0}),
      m_thread([this] { loop(); })
{
}

PictureFeed::~PictureFeed()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
        ++m_order.number;
    }
    m_wake.notify_all();
    m_thread.join();
}

void PictureFeed::setBox(QSize box)
{
    const std::lock_guard lock(m_mutex);
    m_order.box = box;
}

void PictureFeed::ask(Order order)
{
    {
        const std::lock_guard lock(m_mutex);
        order.box = m_order.box;
        order.number = m_order.number + 1;
        m_order = order;
        m_queue.clear();
        m_due = order.frame;
        m_dropped = 0;
        m_told = false;
    }
    m_wake.notify_all();
}

void PictureFeed::show(qint64 frame)
{
    ask({Order::Kind::Show, true, frame});
}

void PictureFeed::scrub(qint64 frame)
{
    ask({Order::Kind::Scrub, true, frame});
}

void PictureFeed::rest()
{
    ask({});
}

void PictureFeed::run(qint64 frame, int step)
{
    ask({Order::Kind::Run, true, frame, step});
}

bool PictureFeed::isPrimed() const
{
    const std::lock_guard lock(m_mutex);
    return m_told;
}

PreviewPtr PictureFeed::take(qint64 due)
{
    PreviewPtr taken;
    {
        const std::lock_guard lock(m_mutex);
        const int direction = m_order.step < 0 ? -1 : 1;
        m_due = due;
        const bool shows = m_order.kind != Order::Kind::Run;
        while (!m_queue.empty() && (shows || (m_queue.front()->frame - due) * direction <= 0)) {
            m_dropped += taken ? 1 : 0;
            taken = std::move(m_queue.front());
            m_queue.pop_front();
        }
    }
    m_wake.notify_all();
    return taken;
}

qint64 PictureFeed::dropped() const
{
    const std::lock_guard lock(m_mutex);
    return m_dropped;
}

/// Pictures that there is memory for.
std::size_t PictureFeed::room() const
{
    const std::size_t bytes = std::size_t(m_order.box.width()) * std::size_t(m_order.box.height()) * 4;
    return std::max(mostBytes / std::max<std::size_t>(1, bytes), fewest);
}

bool PictureFeed::mayWork() const
{
    return m_order.open && (m_order.kind != Order::Kind::Run || m_queue.size() < std::min(room(), most));
}

/// The next picture or group; what is left of the order stays behind.
PictureFeed::Order PictureFeed::nextOrder()
{
    Order next = m_order;
    if (next.kind != Order::Kind::Run) {
        m_order.open = false;
        return next;
    }
    const bool backwards = next.step < 0;
    // Late frames of a run are not worth decoding; the one that is due now will be late too, as will be those that fall
    // due while a group is decoded.
    const qint64 behind = (m_due - next.frame) * (backwards ? -1 : 1);
    if (behind > 0) {
        const qint64 late = (behind + std::abs(next.step) - 1) / std::abs(next.step);
        const qint64 left = backwards ? next.frame / -next.step : late;
        const qint64 skipped = std::min(late + (backwards ? m_groupTime : 0), left);
        m_dropped += skipped;
        next.frame += skipped * next.step;
    }
    next.count = backwards ? std::min<qint64>(m_group, qint64(room())) : 1;
    m_order.frame = next.frame + next.count * next.step;
    m_order.open = m_order.frame >= 0 && m_order.frame < m_sequence.frames;
    return next;
}

bool PictureFeed::isWanted(const Order& order) const
{
    const bool shows = order.kind != Order::Kind::Run && m_order.kind != Order::Kind::Run;
    return shows || m_order.number == order.number;
}

bool PictureFeed::isCurrent(const Order& order) const
{
    const std::lock_guard lock(m_mutex);
    return m_order.number == order.number;
}

Status PictureFeed::open()
{
    if (m_opened)
        return {};
    Status status = checkUnchanged(m_sequence, QStringLiteral("picture"));
    status = status ? m_source.open() : status;
    m_opened = status.ok();
    return status;
}

PreviewPtr PictureFeed::decode(qint64 frame, QSize box)
{
    const auto failed = [frame](const Error& error) {
        auto preview = std::make_shared<Preview>();
        preview->frame = frame;
        preview->problem = error.sentence();
        return preview;
    };
    if (const Status status = open(); !status)
        return failed(status.error());
    const Result<SourceFrame> source = m_source.frame(frame);
    if (!source)
        return failed(source.error());
    const Result<PreviewPtr> preview = m_maker.make(*source, frame, box);
    return preview ? *preview : failed(preview.error());
}

void PictureFeed::standIn(const SourceFrame& reached, const Order& order)
{
    const Result<PreviewPtr> made = m_maker.make(reached, order.frame, order.box);
    if (!made)
        return;
    auto preview = std::make_shared<Preview>(**made);
    preview->isStandIn = true;
    place(order, {preview});
}

/// Takes up a newer wish of the dragging hand; false where what is wanted now is no single frame.
bool PictureFeed::turnTo(Order& order)
{
    const std::lock_guard lock(m_mutex);
    if (m_ending || m_order.kind == Order::Kind::Run)
        return false;
    if (m_order.kind == Order::Kind::Scrub && m_order.open)
        order = nextOrder();
    return true;
}

/// Decodes towards the frame one picture at a time, so that the hand that drags need not wait for it.
void PictureFeed::show(Order order)
{
    QElapsedTimer sinceStandIn;
    while (open()) {
        const Result<FrameSource::Step> step = m_source.approach(order.frame);
        if (!step || step->left == 0)
            break;
        const bool mayStandIn = !sinceStandIn.isValid() || sinceStandIn.hasExpired(standInInterval);
        if (order.kind == Order::Kind::Scrub && step->left > nearby && mayStandIn) {
            standIn(step->reached, order);
            sinceStandIn.start();
        }
        if (!turnTo(order))
            return;
    }
    place(order, {decode(order.frame, order.box)});
}

void PictureFeed::work(const Order& order)
{
    if (order.kind != Order::Kind::Run)
        return show(order);
    std::deque<PreviewPtr> pictures;
    const bool backwards = order.step < 0;
    const qint64 stride = std::abs(order.step);
    const qint64 more = backwards ? std::min(order.count - 1, order.frame / stride) : 0;
    QElapsedTimer clock;
    clock.start();
    for (qint64 frame = order.frame - more * stride; frame <= order.frame && isCurrent(order); frame += stride) {
        const PreviewPtr picture = decode(frame, order.box);
        backwards ? pictures.push_front(picture) : pictures.push_back(picture);
    }
    if (backwards && isCurrent(order)) {
        m_groupTime = qint64(double(clock.nsecsElapsed()) * 1e-9 * m_sequence.frameRate.toDouble());
        m_group = std::max(m_group, qint64(double(m_groupTime) * reserve));
    }
    place(order, std::move(pictures));
}

void PictureFeed::place(const Order& order, std::deque<PreviewPtr> pictures)
{
    bool tell = false;
    {
        const std::lock_guard lock(m_mutex);
        if (!isWanted(order))
            return;
        for (PreviewPtr& picture : pictures)
            m_queue.push_back(std::move(picture));
        const bool primed = order.kind == Order::Kind::Run && (m_queue.size() >= enough || !m_order.open) && !m_told;
        m_told = m_told || primed;
        tell = primed || order.kind != Order::Kind::Run;
    }
    if (tell)
        m_ready();
}

/// What comes after the pictures that lie ready, of which there is room for no more; false when it needs nothing.
bool PictureFeed::prepare()
{
    qint64 last = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (m_ending || m_order.kind != Order::Kind::Run || m_order.step < 0 || mayWork())
            return false;
        last = m_order.frame - m_order.step;
    }
    return m_source.prepare(last);
}

void PictureFeed::loop()
{
    for (;;) {
        while (prepare()) {
        }
        std::unique_lock lock(m_mutex);
        m_wake.wait(lock, [this] { return m_ending || mayWork(); });
        if (m_ending)
            return;
        const Order order = nextOrder();
        lock.unlock();
        work(order);
    }
}

} // namespace desk::media
