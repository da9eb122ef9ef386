#pragma once

#include "desk/media/PreviewMaker.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace desk::media
{

/// Decodes the pictures that a player needs next on a thread of its own, up to twenty-four ahead; fewer for large
/// monitors. Every call returns at once; they come from one thread.
class PictureFeed
{
public:
    /// `ready` is called on the feed's thread when a picture that was asked for, or enough to start a run, lies ready.
    PictureFeed(const Sequence& sequence, std::function<void()> ready);
    /// Waits for the frame that is being decoded.
    ~PictureFeed();
    PictureFeed(const PictureFeed&) = delete;
    PictureFeed& operator=(const PictureFeed&) = delete;

    /// The size of the monitor in pixels.
    void setBox(QSize box);
    /// Asks for one frame; what was asked for before and is not begun is forgotten. One that is begun still comes, so
    /// that a hand that moves fast sees something.
    void show(qint64 frame);
    /// As show(), for a hand that drags: where the frame takes long, pictures from the way to it stand in for it.
    void scrub(qint64 frame);
    /// Nothing more is wanted.
    void rest();
    /// Asks for every `step`th frame (not 0; negative backwards) from `frame` on.
    void run(qint64 frame, int step);

    /// Enough of a run lies ready, or all of it.
    bool isPrimed() const;
    /// The picture that a run shows at `due`, or the one that show() asked for; null while there is no newer one than
    /// the last that was taken. A run that is behind `due` skips frames.
    PreviewPtr take(qint64 due);
    /// Pictures of this run that came too late to be shown.
    qint64 dropped() const;

private:
    struct Order {
        enum class Kind { Show, Scrub, Run } kind = Kind::Show;
        /// Something is left to be decoded.
        bool open = false;
        qint64 frame = 0;
        int step = 1;
        QSize box = {};
        int number = 0;
        /// Pictures that are decoded in one go.
        qint64 count = 1;
    };

    void loop();
    void ask(Order order);
    bool mayWork() const;
    bool prepare();
    std::size_t room() const;
    Order nextOrder();
    void work(const Order& order);
    void show(Order order);
    bool turnTo(Order& order);
    Status open();
    void standIn(const SourceFrame& reached, const Order& order);
    PreviewPtr decode(qint64 frame, QSize box);
    bool isWanted(const Order& order) const;
    bool isCurrent(const Order& order) const;
    void place(const Order& order, std::deque<PreviewPtr> pictures);

    Sequence m_sequence;
    std::function<void()> m_ready;
    FrameSource m_source;
    PreviewMaker m_maker;
    bool m_opened = false;
    /// Pictures that are decoded forwards and shown backwards: going back one at a time would decode many for each.
    /// Long groups of the codec make it grow.
    qint64 m_group = 12;
    /// How many pictures are shown while a group is decoded.
    qint64 m_groupTime = 0;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    /// Of a run, the part that is still to be decoded.
    Order m_order;
    std::deque<PreviewPtr> m_queue;
    qint64 m_due = 0;
    qint64 m_dropped = 0;
    bool m_told = false;
    bool m_ending = false;
    std::thread m_thread;
};

} // namespace desk::media
