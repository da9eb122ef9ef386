#include "desk/app/window/JobPane.h"

#include "StratacutUI/IMFO_Bridge.h"
#include "ViewDeckQt/PaletteManager.h"
#include "ViewDeckQt/StyledButton.h"
#include "desk/app/ProgressText.h"
#include "desk/app/window/PaneParts.h"

#include <QDesktopServices>
#include <QDir>
#include <QEvent>
#include <QGridLayout>
#include <QProgressBar>
#include <QScrollArea>
#include <QStackedWidget>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace desk::app
{

namespace
{
enum Page { ListPage, InvitationPage };

struct StateLook {
    const char* sign;
    /// A colour of the skin.
    const char* color;
};

StateLook lookOf(JobRow::State state)
{
    switch (state) {
    case JobRow::State::Waiting:
        return {"\xE2\x80\xA6", "AppFontColor"};
    case JobRow::State::Running:
        return {"\xE2\x96\xB6", "IconSecondColor"};
    case JobRow::State::Done:
        return {"\xE2\x9C\x93", "IconSecondColor"};
    case JobRow::State::Failed:
        return {"\xE2\x9C\x95", "AttentionColor"};
    case JobRow::State::Cancelled:
        return {"\xE2\x80\x93", "QuietFontColor"};
    }
    return {"", "AppFontColor"};
}

const char* kindName(Job::Kind kind)
{
    return kind == Job::Kind::Export ? "Export" : "Transcription";
}
} // namespace

JobRow::JobRow(const Job& job, QWidget& list)
    : m_job(job),
      m_list(list),
      m_sign(new QLabel),
      m_facts(new QuietLabel),
      m_bar(new QProgressBar),
      m_cancel(new ViewDeckQt::StyledButton(QStringLiteral("Cancel"))),
      m_open(new ViewDeckQt::StyledButton(QStringLiteral("Open Folder")))
{
    setObjectName(QStringLiteral("m_job"));
    const QString what = QLatin1String(kindName(job.kind));
    setAccessibleName(QStringLiteral("%1 of %2").arg(what, job.name));
    m_cancel->setObjectName(QStringLiteral("m_cancelJob"));
    m_cancel->setAccessibleName(QStringLiteral("Cancel the %1 of %2").arg(what.toLower(), job.name));
    m_open->setObjectName(QStringLiteral("m_openFolder"));
    m_open->setAccessibleName(QStringLiteral("Open the folder of %1").arg(job.name));
    m_open->setToolTip(job.folder);
    m_bar->setTextVisible(false);
    m_bar->setFixedHeight(6);
    m_bar->setAccessibleName(QStringLiteral("Progress of %1").arg(job.name));
    m_bar->setRange(0, int(std::max<qint64>(1, job.total)));
    m_facts->setWordWrap(true);
    layOut();
    setState(State::Waiting, QStringLiteral("waiting for its turn"));
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        handOnFocus();
        m_cancel->setEnabled(false);
        emit cancelAsked();
    });
    connect(m_open, &QPushButton::clicked, this, &JobRow::openFolder);
}

void JobRow::layOut()
{
    auto* name = paneTitle(m_job.name);
    m_sign->setForegroundRole(QPalette::WindowText);
    m_sign->setFixedWidth(18);
    m_sign->setAlignment(Qt::AlignCenter);
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(spacing::margin, spacing::gap, spacing::margin, spacing::gap);
    layout->setHorizontalSpacing(spacing::gap);
    layout->setVerticalSpacing(3);
    layout->addWidget(m_sign, 0, 0);
    layout->addWidget(name, 0, 1);
    layout->addWidget(m_bar, 1, 1);
    layout->addWidget(m_facts, 2, 1);
    layout->addWidget(m_cancel, 0, 2, 3, 1, Qt::AlignVCenter);
    layout->addWidget(m_open, 0, 3, 3, 1, Qt::AlignVCenter);
    layout->setColumnStretch(1, 1);
}

void JobRow::handOnFocus()
{
    // Left to itself it would go to a button of another row, and the list would scroll there; also in a window that is
    // not the active one.
    if (window()->focusWidget() == m_cancel)
        m_list.setFocus();
}

void JobRow::setState(State state, const QString& text)
{
    m_state = state;
    const StateLook look = lookOf(state);
    m_sign->setText(QString::fromUtf8(look.sign));
    QPalette own;
    own.setColor(QPalette::WindowText, Palette::PaletteManager::Instance().color(QLatin1String(look.color)));
    m_sign->setPalette(own);
    m_facts->setText(text);
    m_bar->setVisible(!isOver());
    if (isOver())
        handOnFocus();
    m_cancel->setVisible(!isOver());
    m_open->setVisible(isOver() && !m_job.folder.isEmpty());
}

void JobRow::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        setState(m_state, m_facts->text());
}

QWidgetList JobRow::tabStops() const
{
    return {m_cancel, m_open};
}

void JobRow::showProgress(const services::ExportProgress& progress)
{
    m_bar->setMaximum(int(std::max<qint64>(1, progress.totalFrames)));
    m_bar->setValue(int(progress.frames));
    setState(State::Running, progressFacts(progress).join(QString::fromUtf8(" \xC2\xB7 ")));
}

double JobRow::share() const
{
    return double(std::max(0, m_bar->value())) / m_bar->maximum();
}

void JobRow::showPercent(int percent)
{
    m_bar->setValue(std::max(0, percent));
    setState(State::Running, percent < 0 ? QStringLiteral("Getting ready: opening the media and the recogniser's model")
                                         : QStringLiteral("Recognising speech, %1 %").arg(percent));
}

void JobRow::end(State state, const QString& text)
{
    setState(state, text);
}

void JobRow::openFolder()
{
    // A commit that failed has left no folder; then the place where it would be is shown.
    const bool there = QDir(m_job.folder).exists();
    QDesktopServices::openUrl(QUrl::fromLocalFile(there ? m_job.folder : QFileInfo(m_job.folder).path()));
}

JobPane::JobPane(services::PackageOutput* output, services::TranscriptService* transcripts, QWidget* parent)
    : QWidget(parent), m_output(output), m_transcripts(transcripts)
{
    setObjectName(QStringLiteral("m_jobs"));
    layOut();
    followExports();
    followTranscriptions();
    refresh();
}

void JobPane::followExports()
{
    const auto find = [this](const QByteArray& id) { return activeRow(Job::Kind::Export, id); };
    connect(m_output, &services::PackageOutput::commitStarted, this, [this](const services::CommitStart& start) {
        add({Job::Kind::Export, start.deliveryId, start.name, start.folder, start.totalFrames});
    });
    connect(m_output, &services::PackageOutput::progressed, this,
            [find](const QByteArray& id, const services::ExportProgress& progress) {
                if (JobRow* row = find(id))
                    row->showProgress(progress);
            });
    connect(m_output, &services::PackageOutput::noted, this, [find](const QByteArray& id, const QString& note) {
        if (JobRow* row = find(id))
            row->addNote(note);
    });
    connect(m_output, &services::PackageOutput::commitEnded, this,
            [this, find](const QByteArray& id, int code, const QString& message) {
                JobRow* row = find(id);
                if (row && code == 0)
                    row->end(JobRow::State::Done, (QStringList{row->job().folder} + row->notes()).join('\n'));
                else if (row && code == IMFO_Bridge::IMFO_Error_t::WarningOnly)
                    row->end(JobRow::State::Cancelled, QStringLiteral("cancelled; nothing was written"));
                else if (row)
                    row->end(JobRow::State::Failed, message);
                refresh();
            });
}

void JobPane::followTranscriptions()
{
    using services::TranscriptService;
    const auto find = [this](const QString& clip) { return activeRow(Job::Kind::Transcription, clip.toUtf8()); };
    connect(m_transcripts, &TranscriptService::queued, this, [this](const QString& clip, const QString& name) {
        add({Job::Kind::Transcription, clip.toUtf8(), QStringLiteral("Transcript of %1").arg(name), {}, 100});
    });
    connect(m_transcripts, &TranscriptService::progressed, this, [find](const QString& clip, int percent) {
        if (JobRow* row = find(clip))
            row->showPercent(percent);
    });
    connect(m_transcripts, &TranscriptService::ended, this,
            [this, find](const QString& clip, TranscriptService::Outcome outcome, const QString& text) {
                JobRow* row = find(clip);
                if (row && outcome == TranscriptService::Outcome::Done)
                    row->end(JobRow::State::Done, text);
                else if (row && outcome == TranscriptService::Outcome::Failed)
                    row->end(JobRow::State::Failed, text);
                else if (row)
                    row->end(JobRow::State::Cancelled, QStringLiteral("cancelled; what was heard so far is kept"));
                refresh();
            });
}

void JobPane::layOut()
{
    m_clear = new ViewDeckQt::StyledButton(QStringLiteral("Clear Finished"));
    m_clear->setObjectName(QStringLiteral("m_clearJobs"));
    connect(m_clear, &QPushButton::clicked, this, &JobPane::clearFinished);
    auto* page = new QWidget;
    page->setAutoFillBackground(true);
    page->setBackgroundRole(QPalette::Base);
    m_list = new QVBoxLayout(page);
    m_list->setContentsMargins(0, 0, 0, 0);
    m_list->setSpacing(0);
    m_list->addStretch();
    m_area = new QScrollArea;
    m_area->setAccessibleName(QStringLiteral("Jobs"));
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setWidgetResizable(true);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_area->setWidget(page);
    auto* empty = invitation(QStringLiteral("Exports and transcriptions appear here, with their progress"));
    empty->setAutoFillBackground(true);
    empty->setBackgroundRole(QPalette::Base);
    m_stack = new QStackedWidget;
    m_stack->insertWidget(ListPage, m_area);
    m_stack->insertWidget(InvitationPage, empty);
    auto* top = new QHBoxLayout;
    top->addWidget(paneTitle(QStringLiteral("Jobs")));
    top->addStretch();
    top->addWidget(m_clear);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(spacing::margin, spacing::margin, spacing::margin, spacing::margin);
    layout->setSpacing(spacing::gap);
    layout->addLayout(top);
    layout->addWidget(m_stack);
}

void JobPane::add(const Job& job)
{
    auto* row = new JobRow(job, *m_area);
    m_rows.prepend(row);
    m_list->insertWidget(0, row);
    // The keyboard meets the rows in the order in which they stand.
    QWidget* before = m_area;
    const QWidgetList stops = row->tabStops();
    for (QWidget* stop : stops)
        setTabOrder(std::exchange(before, stop), stop);
    connect(row, &JobRow::cancelAsked, this, [this, row] { cancel(row->job()); });
    refresh();
}

void JobPane::cancel(const Job& job)
{
    if (job.kind == Job::Kind::Export && m_output)
        m_output->cancel(job.id);
    else if (job.kind == Job::Kind::Transcription && m_transcripts)
        m_transcripts->cancel(QString::fromUtf8(job.id));
}

int JobPane::active() const
{
    return int(std::count_if(m_rows.begin(), m_rows.end(),
                             [](const JobRow* row) { return row->job().kind == Job::Kind::Export && !row->isOver(); }));
}

void JobPane::cancelAll()
{
    for (const JobRow* row : qAsConst(m_rows)) {
        if (row->job().kind == Job::Kind::Export && !row->isOver())
            cancel(row->job());
    }
}

JobRow* JobPane::activeRow(Job::Kind kind, const QByteArray& id) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&](const JobRow* row) {
        return row->job().kind == kind && row->job().id == id && !row->isOver();
    });
    return found == m_rows.end() ? nullptr : *found;
}

void JobPane::clearFinished()
{
    const auto over = std::stable_partition(m_rows.begin(), m_rows.end(), [](JobRow* row) { return !row->isOver(); });
    std::for_each(over, m_rows.end(), [](JobRow* row) { row->deleteLater(); });
    m_rows.erase(over, m_rows.end());
    refresh();
}

void JobPane::refresh()
{
    m_stack->setCurrentIndex(m_rows.isEmpty() ? InvitationPage : ListPage);
    m_clear->setEnabled(std::any_of(m_rows.begin(), m_rows.end(), [](const JobRow* row) { return row->isOver(); }));
    emit activeChanged(active());
}

} // namespace desk::app
