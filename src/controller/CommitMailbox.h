#pragma once

#include "StratacutUI/IMFO_Bridge.h"
#include "StratacutUI/IMF_Controller.h"

#include <functional>
#include <mutex>

/// Where completions of commits arrive, from any thread. The host's callbacks share it, so that one that comes after
/// the controller finds it closed.
class IMF_Controller::Mailbox
{
public:
    using Receiver = std::function<void(quint64 ticket, const IMFO_Bridge::Error& error)>;

    Mailbox(QObject* context, Receiver receiver) : m_context(context), m_receiver(std::move(receiver)) {}

    /// Queues a call of the receiver on the context's thread.
    void post(quint64 ticket, const IMFO_Bridge::Error& error);
    /// What is posted from now on is dropped. To be called before the context goes.
    void close();

private:
    std::mutex m_mutex;
    QObject* m_context;
    const Receiver m_receiver;
};
