#pragma once

#include "desk/services/PackageOutput.h"
#include "desk/services/TranscriptService.h"

#include <QFrame>
#include <QPointer>
#include <QVector>

class QLabel;
class QProgressBar;
class QPushButton;
class QScrollArea;
class QStackedWidget;
class QVBoxLayout;

namespace desk::app
{

/// What a row of the jobs is about.
struct Job {
    enum class Kind { Export, Transcription };

    Kind kind = Kind::Export;
    /// That of the delivery or the clip.
    QByteArray id;
    QString name;
    /// The delivery's own; empty where nothing is written into a folder.
    QString folder;
    /// Frames, or percent.
    qint64 total = 100;
};

/// One job: how far it is, and how it ended.
class JobRow : public QFrame
{
    Q_OBJECT

public:
    enum class State { Waiting, Running, Done, Failed, Cancelled };
    Q_ENUM(State)

    /// @param list takes the focus of a button that goes.
    JobRow(const Job& job, QWidget& list);

    const Job& job() const { return m_job; }

    State state() const { return m_state; }

    bool isOver() const { return m_state != State::Waiting && m_state != State::Running; }

    /// How much is written, 0 to 1.
    double share() const;
    QWidgetList tabStops() const;
    void showProgress(const services::ExportProgress& progress);
    void showPercent(int percent);

    /// What is told at the end beside the outcome.
    void addNote(const QString& note) { m_notes += note; }

    const QStringList& notes() const { return m_notes; }

    void end(State state, const QString& text);

signals:
    void cancelAsked();

protected:
    void changeEvent(QEvent* event) override;

private:
    void layOut();
    void handOnFocus();
    void setState(State state, const QString& text);
    void openFolder();

    Job m_job;
    QWidget& m_list;
    State m_state = State::Waiting;
    QStringList m_notes;
    QLabel* m_sign;
    QLabel* m_facts;
    QProgressBar* m_bar;
    QPushButton* m_cancel;
    QPushButton* m_open;
};

/// Every commit and every transcription of this run of the desk, the last one on top.
class JobPane : public QWidget
{
    Q_OBJECT

public:
    JobPane(services::PackageOutput* output, services::TranscriptService* transcripts, QWidget* parent = nullptr);

    /// Commits that run or wait. Transcriptions go on after the next start.
    int active() const;
    void cancelAll();

    const QVector<JobRow*>& rows() const { return m_rows; }

public slots:
    void clearFinished();

signals:
    void activeChanged(int jobs);

private:
    void layOut();
    void followExports();
    void followTranscriptions();
    void add(const Job& job);
    void cancel(const Job& job);
    void refresh();
    JobRow* activeRow(Job::Kind kind, const QByteArray& id) const;

    QPointer<services::PackageOutput> m_output;
    QPointer<services::TranscriptService> m_transcripts;
    QVector<JobRow*> m_rows;
    QStackedWidget* m_stack = nullptr;
    QScrollArea* m_area = nullptr;
    QVBoxLayout* m_list = nullptr;
    QPushButton* m_clear = nullptr;
};

} // namespace desk::app
