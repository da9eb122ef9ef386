#pragma once

#include "desk/services/PackageOutput.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QObject>

namespace desk::app
{

/// Waits for one commit and tells on the error stream how far it is. An interrupt or a termination signal cancels it.
class CommitWait : public QObject
{
    Q_OBJECT

public:
    enum class End { Refused, Done, Failed, Cancelled };

    /// Before the commit is asked for. The output is not owned.
    CommitWait(services::PackageOutput* output, const QByteArray& deliveryId);

    /// Returns at once where no commit was taken since; else when its completion was delivered.
    End wait();

private:
    void show(const services::ExportProgress& progress);

    services::PackageOutput* m_output;
    QByteArray m_deliveryId;
    QEventLoop m_loop;
    QElapsedTimer m_sinceLine;
    bool m_started = false;
    bool m_over = false;
    bool m_cancelled = false;
    int m_code = 0;
};

} // namespace desk::app
