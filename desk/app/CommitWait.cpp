#include "desk/app/CommitWait.h"

#include "desk/app/Console.h"
#include "desk/app/Interrupt.h"
#include "desk/app/ProgressText.h"

#include <QTimer>

namespace desk::app
{

CommitWait::CommitWait(services::PackageOutput* output, const QByteArray& deliveryId)
    : m_output(output), m_deliveryId(deliveryId)
{
    using services::PackageOutput;
    connect(output, &PackageOutput::commitStarted, this,
            [this](const services::CommitStart& start) { m_started = m_started || start.deliveryId == m_deliveryId; });
    connect(output, &PackageOutput::progressed, this,
            [this](const QByteArray&, const services::ExportProgress& progress) { show(progress); });
    connect(output, &PackageOutput::noted, this, [this](const QByteArray& id, const QString& note) {
        if (id == m_deliveryId)
            console::note(note);
    });
    connect(output, &PackageOutput::commitEnded, this, [this](const QByteArray& id, int code) {
        if (id != m_deliveryId)
            return;
        m_over = true;
        m_code = code;
        m_loop.quit();
    });
    catchInterrupts();
}

CommitWait::End CommitWait::wait()
{
    constexpr int glance = 50;
    if (!m_started)
        return End::Refused;
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [this] {
        if (isInterrupted() && !std::exchange(m_cancelled, true))
            m_output->cancel(m_deliveryId);
    });
    watch.start(glance);
    if (!m_over)
        m_loop.exec();
    console::endStatusLine();
    if (m_code == 0)
        return End::Done;
    return m_cancelled ? End::Cancelled : End::Failed;
}

void CommitWait::show(const services::ExportProgress& progress)
{
    constexpr qint64 plainInterval = 5000;
    const QString text = progressFacts(progress).join(QStringLiteral(", "));
    const bool last = progress.frames == progress.totalFrames;
    if (console::isTerminal())
        return console::statusLine(text);
    if (!last && m_sinceLine.isValid() && m_sinceLine.elapsed() < plainInterval)
        return;
    m_sinceLine.start();
    console::note(text);
}

} // namespace desk::app
