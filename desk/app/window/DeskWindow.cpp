#include "desk/app/window/DeskWindow.h"

#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/IMF_ManagerWindow.h"
#include "StratacutUI/IMF_TreeView.h"
#include "ViewDeckQt/DecorationManager.h"
#include "desk/app/Host.h"
#include "desk/app/SoundDefaults.h"
#include "desk/app/window/BinModel.h"
#include "desk/app/window/BinPane.h"
#include "desk/app/window/JobPane.h"
#include "desk/app/window/MediaLoader.h"
#include "desk/app/window/PaneParts.h"
#include "desk/app/window/TranscriptPane.h"
#include "desk/media/Playing.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace desk::app
{

namespace
{
constexpr QSize firstSize(1600, 960);
constexpr int smallestScreen = 1024;
constexpr int binWidth = 320;
constexpr int jobsHeight = 130;
/// How long the status bar says what went well, in milliseconds.
constexpr int noteTime = 10000;

/// A splitter whose panes keep their sizes when the window grows, but for one.
QSplitter* splitter(const char* name, Qt::Orientation orientation, const QList<QWidget*>& panes, int growing)
{
    auto* made = new QSplitter(orientation);
    made->setObjectName(QLatin1String(name));
    made->setChildrenCollapsible(false);
    for (QWidget* pane : panes)
        made->addWidget(pane);
    made->setStretchFactor(growing, 1);
    return made;
}
} // namespace

void DeskWindow::prepareLook(const services::Profile& profile)
{
    QApplication::setStyle(ViewDeckQt::DecorationManager::style());
    Palette::PaletteManager::Instance().setSkin(WindowSettings::load(profile.windowFile()).skin);
}

DeskWindow::DeskWindow(Host* host)
    : ManagedWindow(static_cast<QWidget&>(*this)),
      m_host(host),
      m_settings(WindowSettings::load(host->profile().windowFile()))
{
    setObjectName(QStringLiteral("DeskWindow"));
    setManagedTitle(NvText("Stratacut Desk"));
    m_host->output().yieldToPlayback();
    createWidgets();
    layOut();
    createActions();
    connectAll();
    connectModel();
    connectMonitors();
    connectTranscript();
    restoreLook();
    updateActions();
}

DeskWindow::~DeskWindow()
{
    finishTyping();
    // The selection goes with the tree, and nobody needs to hear of it any more.
    disconnect(tree().selectionModel(), nullptr, this, nullptr);
    // Hiding takes the focus away when this is but a widget.
    disconnect(qApp, nullptr, this, nullptr);
}

void DeskWindow::createWidgets()
{
    m_thumbnails = new Thumbnails(m_host->profile().thumbnailFolder(), this);
    m_loader = new MediaLoader(this);
    m_binModel = new BinModel(&m_host->library(), m_thumbnails, this);
    m_bin = new BinPane(m_binModel, m_loader);
    m_manager = new IMF_ManagerWindow(&m_host->model(), m_host->model().rootIndex());
    m_manager->setObjectName(QStringLiteral("m_manager"));
    m_jobs = new JobPane(&m_host->output(), &m_host->transcripts());
    const auto sound = media::systemSoundOutput();
    m_source = new MonitorPane(MonitorPane::Kind::Source, sound);
    m_record = new MonitorPane(MonitorPane::Kind::Record, sound);
    m_activeMonitor = m_source;
    m_transcript = new TranscriptPane(m_host->transcripts(), m_source->player(), m_record->player());
    m_transcript->setFolder(m_host->profile().folder() + QStringLiteral("/scripts"));
    m_hint = new QuietLabel;
}

void DeskWindow::layOut()
{
    m_bin->setMinimumWidth(260);
    m_jobs->setMinimumHeight(110);
    m_work = new QTabWidget;
    m_work->setDocumentMode(true);
    m_work->setTabBarAutoHide(true);
    m_work->addTab(m_manager, QStringLiteral("Packages"));
    m_work->addTab(m_transcript, QStringLiteral("Transcript"));
    m_monitors = splitter("m_monitorSplitter", Qt::Horizontal, {m_source, m_record}, 0);
    m_monitors->setStretchFactor(1, 1);
    m_column = splitter("m_columnSplitter", Qt::Vertical, {m_monitors, m_work, m_jobs}, 0);
    m_across = splitter("m_acrossSplitter", Qt::Horizontal, {m_bin, m_column}, 1);
    const int side = firstSize.width() - binWidth;
    const int monitorHeight = side / 2 * 9 / 16 + 100;
    m_across->setSizes({binWidth, side});
    m_monitors->setSizes({side / 2, side / 2});
    m_column->setSizes({monitorHeight, firstSize.height() - monitorHeight - jobsHeight, jobsHeight});
    setCentralWidget(m_across);
    statusBar()->setSizeGripEnabled(false);
    m_hint->setContentsMargins(spacing::gap, 0, spacing::gap, 0);
    statusBar()->addWidget(m_hint, 1);
    // A sentence may be longer than the bar.
    connect(statusBar(), &QStatusBar::messageChanged, statusBar(), &QWidget::setToolTip);
    // A display that nobody looks at may be smaller than any desk.
    const QSize screen = QGuiApplication::primaryScreen()->availableSize();
    resize(screen.width() < smallestScreen ? firstSize : firstSize.boundedTo(screen));
}

IMF_TreeView& DeskWindow::tree() const
{
    return *m_manager->findChild<IMF_TreeView*>(QStringLiteral("m_treeView"));
}

void DeskWindow::connectAll()
{
    connect(m_bin, &BinPane::addAsked, this, &DeskWindow::chooseMedia);
    connect(m_bin, &BinPane::removeAsked, this, &DeskWindow::removeSelectedSequences);
    connect(m_bin, &BinPane::addToPackageAsked, this, &DeskWindow::addSelectedSequences);
    connect(m_bin, &BinPane::openAsked, this, &DeskWindow::loadSelectedSequence);
    connect(m_bin, &BinPane::filesDropped, this, &DeskWindow::addMedia);
    connect(m_bin->view().selectionModel(), &QItemSelectionModel::selectionChanged, this, &DeskWindow::updateActions);
    connect(m_loader, &MediaLoader::opened, this, [this](const media::Sequence& sequence) {
        m_host->library().add(sequence);
        m_errors += sequence.notices;
    });
    connect(m_loader, &MediaLoader::failed, this, [this](const Error& error) { m_errors += error.sentence(); });
    connect(m_loader, &MediaLoader::pendingChanged, this, [this](int files) {
        if (files == 0)
            showErrors();
    });
    connect(&m_host->library(), &services::MediaLibrary::changed, &m_host->model(),
            &IMF_PackageMgrQtModel::onMobStatusChanged);
    connect(m_jobs, &JobPane::activeChanged, this, [this](int jobs) {
        if (jobs == 0 && m_quitWhenIdle)
            closeWhenIdle();
    });
    m_saveTimer.setSingleShot(true);
    connect(&m_saveTimer, &QTimer::timeout, this, &DeskWindow::saveWhenDue);
    const auto splitters = findChildren<QSplitter*>();
    for (QSplitter* one : splitters)
        connect(one, &QSplitter::splitterMoved, this, &DeskWindow::scheduleLook);
}

void DeskWindow::connectMonitors()
{
    for (MonitorPane* one : {m_source, m_record}) {
        MonitorPane* other = one == m_source ? m_record : m_source;
        // They share the sound.
        connect(&one->player(), &media::Player::aboutToPlay, this, [this, one, other] {
            other->player().stop();
            m_activeMonitor = one;
        });
        connect(one, &MonitorPane::sequenceDropped, this, [this, one](const QString& id) { loadInMonitor(id, *one); });
        connect(&one->player(), &media::Player::loaded, this, &DeskWindow::updateActions);
        connect(&one->player(), &media::Player::failed, this,
                [this](const QString& sentence) { statusBar()->showMessage(sentence); });
    }
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        for (MonitorPane* one : {m_source, m_record})
            m_activeMonitor = now && one->isAncestorOf(now) ? one : m_activeMonitor;
    });
}

void DeskWindow::connectTranscript()
{
    using services::TranscriptService;
    using speech::TranscriptStore;
    TranscriptService& service = m_host->transcripts();
    connect(m_transcript, &TranscriptPane::noted, this,
            [this](const QString& text) { statusBar()->showMessage(text, noteTime); });
    connect(m_transcript, &TranscriptPane::failed, this, [this](const QString& sentence) {
        m_errors += sentence;
        showErrors();
    });
    connect(&service.store(), &TranscriptStore::conditionChanged, this, [this, &service] {
        const QString problem = service.store().problem().what;
        statusBar()->showMessage(problem.isEmpty() ? QString() : service.store().problem().sentence());
        if (service.store().condition() == TranscriptStore::Condition::Online)
            resumeTranscriptions();
        updateActions();
    });
    connect(&service.store(), &TranscriptStore::clipChanged, this, [this, &service](const QString& clip) {
        // Not at every percent.
        const speech::ClipState state = service.store().clipState(clip);
        if (state.stage != speech::ClipState::Stage::Running || state.percent <= 0)
            updateActions();
    });
    connect(m_work, &QTabWidget::currentChanged, this, &DeskWindow::scheduleLook);
}

void DeskWindow::resumeTranscriptions()
{
    services::TranscriptService& service = m_host->transcripts();
    const services::MediaLibrary& library = m_host->library();
    bool areAllKnown = true;
    const QStringList waiting = service.store().clips(speech::ClipState::Stage::Waiting);
    for (const QString& id : waiting) {
        const auto item = library.find(id);
        areAllKnown = areAllKnown && item;
        if (item)
            service.transcribe({item->id, item->name, item->path});
    }
    // The others may stand in a timeline alone.
    for (const services::BinItem& item : library.items()) {
        if (!areAllKnown && media::isTimelineFile(item.path))
            service.resume(item.path);
    }
}

void DeskWindow::connectModel()
{
    IMF_PackageMgrQtModel& model = m_host->model();
    const auto mapSound = [this](const QModelIndex& parent, int first, int last) {
        mapUnmappedSound(m_host->model(), m_host->library(), parent, first, last);
    };
    const auto mapAllSound = [this, mapSound] { mapSound({}, 0, m_host->model().rowCount() - 1); };
    connect(&model, &QAbstractItemModel::rowsInserted, this, mapSound);
    // What a drop has made is there only when all is said about it.
    connect(&model, &QAbstractItemModel::layoutChanged, this, mapAllSound);
    mapAllSound();
    const auto follow = [this] {
        scheduleSave();
        updateActions();
        updateHint();
    };
    connect(&model, &QAbstractItemModel::dataChanged, this, follow);
    connect(&model, &QAbstractItemModel::rowsInserted, this, follow);
    connect(&model, &QAbstractItemModel::rowsRemoved, this, follow);
    connect(&model, &QAbstractItemModel::layoutChanged, this, follow);
    connect(&m_host->controller(), &IMF_Controller::commitCompleted, this, follow);
    // The row may be one of many that are loaded together: ask when all is done.
    connect(
        &m_host->controller(), &IMF_Controller::newDeliveryAdded, this,
        [this](const QModelIndex& delivery) { askForMissing(delivery); }, Qt::DirectConnection);
    connect(tree().selectionModel(), &QItemSelectionModel::selectionChanged, this, &DeskWindow::updateActions);
    // Removing ends work that nobody has written: the desk asks first.
    disconnect(&tree(), &IMF_TreeView::notifyRemoveItem, &m_host->controller(), nullptr);
    connect(&tree(), &IMF_TreeView::notifyRemoveItem, this, &DeskWindow::askAndRemove);
    updateHint();
}

void DeskWindow::restoreLook()
{
    if (!m_settings.geometry.isEmpty())
        restoreGeometry(m_settings.geometry);
    ManagedWindow::setRememberedSizes(m_settings.dialogs);
    for (auto entry = m_settings.splitters.constBegin(); entry != m_settings.splitters.constEnd(); ++entry) {
        if (auto* one = findChild<QSplitter*>(entry.key()))
            one->restoreState(*entry);
    }
    const bool shown = m_settings.monitors == WindowSettings::Monitors::Shown;
    action(QStringLiteral("showMonitors"))->setChecked(shown);
    m_monitors->setVisible(shown);
    m_work->setCurrentIndex(m_settings.work == WindowSettings::Work::Transcript ? 1 : 0);
}

WindowSettings DeskWindow::look() const
{
    WindowSettings settings = m_settings;
    settings.skin = Palette::PaletteManager::Instance().skin();
    settings.geometry = saveGeometry();
    settings.work =
        m_work->currentWidget() == m_transcript ? WindowSettings::Work::Transcript : WindowSettings::Work::Packages;
    settings.dialogs = ManagedWindow::rememberedSizes();
    const auto splitters = findChildren<QSplitter*>();
    for (const QSplitter* one : splitters)
        settings.splitters[one->objectName()] = one->saveState();
    return settings;
}

void DeskWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    scheduleLook();
}

void DeskWindow::moveEvent(QMoveEvent* event)
{
    QMainWindow::moveEvent(event);
    scheduleLook();
}

void DeskWindow::scheduleSave()
{
    m_hasNewWork = true;
    scheduleLook();
}

void DeskWindow::scheduleLook()
{
    // A timer that runs is left alone: whoever never pauses is kept all the same.
    if (!m_saveTimer.isActive())
        m_saveTimer.start(saveDelay);
}

/// Beside an export a file may take long to be written: how the window looks can wait until nothing plays.
void DeskWindow::saveWhenDue()
{
    if (!m_hasNewWork && media::Playing::isGoingOn())
        scheduleLook();
    else
        static_cast<void>(save());
}

Status DeskWindow::save()
{
    m_saveTimer.stop();
    m_hasNewWork = false;
    Status work = m_host->save();
    const Status window = look().save(m_host->profile().windowFile());
    if (!window)
        statusBar()->showMessage(window.error().sentence());
    if (work)
        emit saved();
    else
        statusBar()->showMessage(work.error().what);
    return work;
}

/// A field that is being typed in reports once it loses the focus.
void DeskWindow::finishTyping()
{
    if (QWidget* field = focusWidget())
        field->clearFocus();
}

void DeskWindow::closeEvent(QCloseEvent* event)
{
    finishTyping();
    if (!mayCloseWithJobs())
        return event->ignore();
    // Whoever stays now is not to be sent away by the end of a later export.
    m_quitWhenIdle = false;
    if (!mayLoseDeliveries() || !mayLoseWork())
        return event->ignore();
    event->accept();
}

void DeskWindow::closeWhenIdle()
{
    constexpr int againAfter = 50;
    // What a commit had to say stands in a message box until the user has read it.
    if (QApplication::activeModalWidget())
        QTimer::singleShot(againAfter, this, &DeskWindow::closeWhenIdle);
    else if (m_quitWhenIdle)
        QTimer::singleShot(0, this, [this] { close(); });
}

} // namespace desk::app
