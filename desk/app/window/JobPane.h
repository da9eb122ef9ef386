#pragma once

#include "desk/services/PackageOutput.h"

#include <QFrame>
#include <QPointer>
#include <QVector>

class QLabel;
class QProgressBar;
class QPushButton;
class QStackedWidget;
class QVBoxLayout;

namespace desk::app
{

/// One commit: how far it is, and how it ended.
class JobRow : public QFrame
{
    Q_OBJECT

public:
    enum class State { Waiting, Running, Done, Failed, Cancelled };
    Q_ENUM(State)

    explicit JobRow(const services::CommitStart& start, QWidget* parent = nullptr);

    const QByteArray& deliveryId() const { return m_start.deliveryId; }

    State state() const { return m_state; }

    bool isOver() const { return m_state != State::Waiting && m_state != State::Running; }

    /// How much is written, 0 to 1.
    double share() const;
    void showProgress(const services::ExportProgress& progress);
    /// @param code as IMFO_Error_t has it.
    void end(int code, const QString& message);

signals:
    void cancelAsked(const QByteArray& deliveryId);

protected:
    void changeEvent(QEvent* event) override;

private:
    void layOut();
    void setState(State state, const QString& text);
    void openFolder();

    services::CommitStart m_start;
    State m_state = State::Waiting;
    QLabel* m_sign;
    QLabel* m_facts;
    QProgressBar* m_bar;
    QPushButton* m_cancel;
    QPushButton* m_open;
};

/// Every commit of this run of the desk, the last one on top.
class JobPane : public QWidget
{
    Q_OBJECT

public:
    explicit JobPane(services::PackageOutput* output, QWidget* parent = nullptr);

    /// Commits that run or wait.
    int active() const;
    void cancelAll();

    const QVector<JobRow*>& rows() const { return m_rows; }

public slots:
    void clearFinished();

signals:
    void activeChanged(int jobs);

private:
    void layOut();
    void add(const services::CommitStart& start);
    void refresh();
    JobRow* activeRow(const QByteArray& deliveryId) const;

    QPointer<services::PackageOutput> m_output;
    QVector<JobRow*> m_rows;
    QStackedWidget* m_stack = nullptr;
    QVBoxLayout* m_list = nullptr;
    QPushButton* m_clear = nullptr;
};

} // namespace desk::app
