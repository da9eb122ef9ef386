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
        return {"\xE2\x80\x93", "DisabledFontColor"};
    }
    return {"", "AppFontColor"};
}
} // namespace

JobRow::JobRow(const services::CommitStart& start, QWidget* parent)
    : QFrame(parent),
      m_start(start),
      m_sign(new QLabel),
      m_facts(new QuietLabel),
      m_bar(new QProgressBar),
      m_cancel(new ViewDeckQt::StyledButton(QStringLiteral("Cancel"))),
      m_open(new ViewDeckQt::StyledButton(QStringLiteral("Open Folder")))
{
    setObjectName(QStringLiteral("m_job"));
    setAccessibleName(QStringLiteral("Export of %1").arg(start.name));
    m_cancel->setObjectName(QStringLiteral("m_cancelJob"));
    m_cancel->setAccessibleName(QStringLiteral("Cancel the export of %1").arg(start.name));
    m_open->setObjectName(QStringLiteral("m_openFolder"));
    m_open->setAccessibleName(QStringLiteral("Open the folder of %1").arg(start.name));
    m_open->setToolTip(start.folder);
    m_bar->setTextVisible(false);
    m_bar->setFixedHeight(6);
    m_bar->setAccessibleName(QStringLiteral("Progress of %1").arg(start.name));
    m_bar->setRange(0, int(std::max<qint64>(1, start.totalFrames)));
    m_facts->setWordWrap(true);
    layOut();
    setState(State::Waiting, QStringLiteral("waiting for its turn"));
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        m_cancel->setEnabled(false);
        emit cancelAsked(m_start.deliveryId);
    });
    connect(m_open, &QPushButton::clicked, this, &JobRow::openFolder);
}

void JobRow::layOut()
{
    auto* name = paneTitle(m_start.name);
    name->setTextFormat(Qt::PlainText);
    name->setMinimumWidth(1);
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
    m_cancel->setVisible(!isOver());
    m_open->setVisible(isOver());
}

void JobRow::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        setState(m_state, m_facts->text());
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

void JobRow::end(int code, const QString& message)
{
    if (code == 0)
        setState(State::Done, m_start.folder);
    else if (code == IMFO_Bridge::IMFO_Error_t::WarningOnly)
        setState(State::Cancelled, QStringLiteral("cancelled; nothing was written"));
    else
        setState(State::Failed, message);
}

void JobRow::openFolder()
{
    // A commit that failed has left no folder; then the place where it would be is shown.
    const bool there = QDir(m_start.folder).exists();
    QDesktopServices::openUrl(QUrl::fromLocalFile(there ? m_start.folder : QFileInfo(m_start.folder).path()));
}

JobPane::JobPane(services::PackageOutput* output, QWidget* parent) : QWidget(parent), m_output(output)
{
    setObjectName(QStringLiteral("m_jobs"));
    layOut();
    connect(output, &services::PackageOutput::commitStarted, this, &JobPane::add);
    connect(output, &services::PackageOutput::progressed, this,
            [this](const QByteArray& id, const services::ExportProgress& progress) {
                if (JobRow* row = activeRow(id))
                    row->showProgress(progress);
            });
    connect(output, &services::PackageOutput::commitEnded, this,
            [this](const QByteArray& id, int code, const QString& message) {
                if (JobRow* row = activeRow(id))
                    row->end(code, message);
                refresh();
            });
    refresh();
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
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidget(page);
    auto* empty = invitation(QStringLiteral("Exports appear here, with their progress and their folder"));
    empty->setAutoFillBackground(true);
    empty->setBackgroundRole(QPalette::Base);
    m_stack = new QStackedWidget;
    m_stack->insertWidget(ListPage, area);
    m_stack->insertWidget(InvitationPage, empty);
    auto* top = new QHBoxLayout;
    top->addWidget(paneTitle(QStringLiteral("Exports")));
    top->addStretch();
    top->addWidget(m_clear);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(spacing::margin, spacing::margin, spacing::margin, spacing::margin);
    layout->setSpacing(spacing::gap);
    layout->addLayout(top);
    layout->addWidget(m_stack);
}

void JobPane::add(const services::CommitStart& start)
{
    auto* row = new JobRow(start);
    m_rows.prepend(row);
    m_list->insertWidget(0, row);
    connect(row, &JobRow::cancelAsked, this, [this](const QByteArray& id) {
        if (m_output)
            m_output->cancel(id);
    });
    refresh();
}

int JobPane::active() const
{
    return int(std::count_if(m_rows.begin(), m_rows.end(), [](const JobRow* row) { return !row->isOver(); }));
}

void JobPane::cancelAll()
{
    for (const JobRow* row : qAsConst(m_rows)) {
        if (!row->isOver() && m_output)
            m_output->cancel(row->deliveryId());
    }
}

JobRow* JobPane::activeRow(const QByteArray& deliveryId) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&](const JobRow* row) {
        return row->deliveryId() == deliveryId && !row->isOver();
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
    m_clear->setEnabled(active() < m_rows.size());
    emit activeChanged(active());
}

} // namespace desk::app
