// What the desk's menu bar offers.

#include "desk/app/window/DeskWindow.h"

#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/IMF_ManagerWindow.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/IMF_TreeView.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "desk/app/Host.h"
#include "desk/app/window/BinPane.h"
#include "desk/app/window/JobPane.h"
#include "desk/app/window/TranscriptPane.h"
#include "desk/services/TranscriptService.h"

#include <QActionGroup>
#include <QFileDialog>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QSplitter>
#include <QTabWidget>

#include <algorithm>

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;

struct DeskWindow::ActionRow {
    /// A new one starts a menu; empty goes on with the last, null puts a line before the action.
    const char* menu;
    const char* name;
    const char* text;
    const char* keys;
    void (DeskWindow::*run)();
};

const DeskWindow::ActionRow DeskWindow::actionRows[] = {
    {"&File", "addMedia", "Add &Media...", "Ctrl+I", &DeskWindow::chooseMedia},
    {"", "removeMedia", "Remove from &Bin", "", &DeskWindow::removeSelectedSequences},
    {nullptr, "explore", "&Explore a Delivery...", "Ctrl+O", &DeskWindow::explore},
    {nullptr, "quit", "&Quit", "Ctrl+Q", nullptr},
    {"&Package", "newOriginal", "New IMF &Original", "Ctrl+N", &DeskWindow::newOriginal},
    {"", "newSupplemental", "New IMF &Supplemental", "Ctrl+Shift+N", &DeskWindow::newSupplemental},
    {"", "newImp", "New &IMP", "Ctrl+P", &DeskWindow::newImp},
    {"", "addSequence", "&Add Selected Sequence", "Ctrl+D", &DeskWindow::addSelectedSequences},
    {nullptr, "rename", "&Rename", "F2", &DeskWindow::rename},
    {"", "chooseFolder", "Choose &Folder...", "Ctrl+Shift+F", &DeskWindow::chooseFolder},
    {"", "remove", "Re&move", "Ctrl+Backspace", &DeskWindow::removeSelected},
    {nullptr, "refresh", "Refres&h", "F5", &DeskWindow::refreshSelected},
    {"", "refreshAll", "Refresh A&ll", "Shift+F5", &DeskWindow::refreshAll},
    {"", "resolveMissing", "Find &What Is Missing...", "", &DeskWindow::resolveMissing},
    {"", "forgetAbsent", "Forge&t Absent Deliveries...", "", &DeskWindow::forgetAbsent},
    {nullptr, "export", "&Export", "Ctrl+E", &DeskWindow::exportSelected},
    {"&Monitor", "loadMonitor", "&Load Selected Sequence", "Ctrl+L", &DeskWindow::loadSelectedSequence},
    {"", "playStop", "&Play or Stop", "Ctrl+Space", &DeskWindow::togglePlayback},
    {"", "clearMarks", "&Clear Marks", "", &DeskWindow::clearMarks},
    {"&Transcript", "transcribe", "&Transcribe Selected Clip", "Ctrl+T", &DeskWindow::transcribeSelected},
    {"", "transcribeAgain", "Transcribe Selected Clip A&gain...", "", &DeskWindow::transcribeAgain},
    {"", "importTranscript", "&Import a Transcript of Selected Clip...", "", &DeskWindow::importTranscript},
    {"", "recogniser", "Recogni&ser...", "", &DeskWindow::chooseRecogniser},
    {nullptr, "switchTranscript", "Source or &Record Monitor", "Ctrl+Shift+T", &DeskWindow::switchTranscriptMonitor},
    {"", "transcriptTracks", "Trac&ks...", "Ctrl+Shift+K", &DeskWindow::chooseTracks},
    {"&View", "focusBin", "&Bin", "Ctrl+1", &DeskWindow::focusBin},
    {"", "focusPackages", "&Packages", "Ctrl+2", &DeskWindow::focusPackages},
    {"", "focusParameters", "P&arameters", "Ctrl+3", &DeskWindow::focusParameters},
    {"", "focusJobs", "&Jobs", "Ctrl+4", &DeskWindow::focusJobs},
    {"", "focusSource", "&Source Monitor", "Ctrl+5", &DeskWindow::focusSource},
    {"", "focusRecord", "&Record Monitor", "Ctrl+6", &DeskWindow::focusRecord},
    {"", "focusTranscript", "Transcrip&t", "Ctrl+7", &DeskWindow::focusTranscript},
    {nullptr, "showMonitors", "Show &Monitors", "Ctrl+M", &DeskWindow::showMonitors},
    {"&Help", "about", "&About Stratacut Desk", "", &DeskWindow::about},
};

void DeskWindow::createActions()
{
    QMenu* menu = nullptr;
    for (const ActionRow& row : actionRows) {
        if (row.menu && *row.menu)
            menu = menuBar()->addMenu(QLatin1String(row.menu));
        else if (!row.menu)
            menu->addSeparator();
        auto* action = menu->addAction(QLatin1String(row.text));
        action->setObjectName(QLatin1String(row.name));
        action->setShortcut(QKeySequence(QLatin1String(row.keys)));
        m_actions.insert(action->objectName(), action);
        if (row.run)
            connect(action, &QAction::triggered, this, row.run);
        if (action->objectName() == QLatin1String("showMonitors"))
            createSkinActions(menu);
    }
    action(QStringLiteral("showMonitors"))->setCheckable(true);
    // Not a member: closing tells by its answer whether the window went.
    connect(action(QStringLiteral("quit")), &QAction::triggered, this, [this] { close(); });
}

void DeskWindow::createSkinActions(QMenu* menu)
{
    menu->addSeparator();
    auto* group = new QActionGroup(this);
    const auto add = [&](const char* name, const char* text, Palette::Skin skin) {
        QAction* action = menu->addAction(QLatin1String(text));
        action->setObjectName(QLatin1String(name));
        action->setCheckable(true);
        action->setChecked(skin == m_settings.skin);
        group->addAction(action);
        m_actions.insert(action->objectName(), action);
        connect(action, &QAction::triggered, this, [this, skin] { setSkin(skin); });
    };
    add("dark", "&Dark", Palette::Skin::Dark);
    add("light", "&Light", Palette::Skin::Light);
}

void DeskWindow::setSkin(Palette::Skin skin)
{
    m_settings.skin = skin;
    Palette::PaletteManager::Instance().setSkin(skin);
    scheduleSave();
}

QModelIndex DeskWindow::current() const
{
    const QModelIndexList rows = tree().selectionModel()->selectedRows();
    return rows.size() == 1 ? rows.first() : QModelIndex();
}

QModelIndex DeskWindow::currentDelivery() const
{
    QModelIndex index = current();
    while (index.parent().isValid())
        index = index.parent();
    return index;
}

void DeskWindow::updateActions()
{
    const QModelIndex item = current();
    const bool isDelivery = item.isValid() && Model::NodeTypeFromIndex(item) == IMF_PackageMgr::Delivery;
    const bool open = item.isValid() && Model::StatusFromIndex(item) == IMF_PackageMgr::Uncommitted;
    const QModelIndex delivery = currentDelivery();
    const bool written = delivery.isValid() && Model::StatusFromIndex(delivery) == IMF_PackageMgr::Committed;
    const bool media = m_bin->view().selectionModel()->hasSelection();
    const QStringList ids = m_bin->view().selectedIds();
    const bool clips = std::any_of(ids.begin(), ids.end(), [this](const QString& id) {
        const auto sequence = m_host->library().find(id);
        return sequence && !media::isTimelineFile(sequence->path);
    });
    const bool watching = m_source->player().sequence() || m_record->player().sequence();

    const struct {
        const char* name;
        bool enabled;
    } states[] = {
        {"removeMedia", media},
        {"addSequence", media},
        {"loadMonitor", media},
        {"transcribe", clips},
        {"transcribeAgain", !selectedClips(speech::ClipState::Stage::Done).isEmpty()},
        {"importTranscript", clips},
        {"playStop", watching},
        {"clearMarks", watching},
        {"transcriptTracks", watching},
        {"newImp", delivery.isValid()},
        {"rename", open && item.flags().testFlag(Qt::ItemIsEditable)},
        {"chooseFolder", open && isDelivery},
        {"remove", open || isDelivery},
        {"refresh", written},
        {"resolveMissing", written},
        {"forgetAbsent", !m_host->absentFolders().isEmpty()},
        {"export", item.isValid() && item.data(Model::BurnableRole).toBool() && (isDelivery || written)},
    };

    for (const auto& state : states)
        action(QLatin1String(state.name))->setEnabled(state.enabled);
}

void DeskWindow::selectNewestDelivery()
{
    const int rows = m_host->model().rowCount();
    if (rows == 0)
        return;
    m_work->setCurrentWidget(m_manager);
    tree().select(m_host->model().index(rows - 1, 0));
    tree().setFocus();
}

void DeskWindow::newOriginal()
{
    const int before = m_host->model().rowCount();
    emit m_manager->newOriginalIMF();
    if (m_host->model().rowCount() > before)
        selectNewestDelivery();
}

void DeskWindow::newSupplemental()
{
    const int before = m_host->model().rowCount();
    emit m_manager->newSupplementalIMF();
    if (m_host->model().rowCount() > before)
        selectNewestDelivery();
}

void DeskWindow::newImp()
{
    const QModelIndex delivery = currentDelivery();
    if (!delivery.isValid())
        return;
    m_work->setCurrentWidget(m_manager);
    Model& model = m_host->model();
    model.addIMPNode(model.FromIndex(delivery));
    tree().expand(delivery);
    tree().select(model.index(model.rowCount(delivery) - 1, 0, delivery));
}

void DeskWindow::explore()
{
    m_manager->findChild<QPushButton*>(QStringLiteral("m_explore"))->click();
}

void DeskWindow::rename()
{
    m_work->setCurrentWidget(m_manager);
    // The tree hides this overload, which is the user's way of asking.
    QAbstractItemView& view = tree();
    view.setFocus();
    view.edit(current());
}

void DeskWindow::chooseFolder()
{
    m_host->controller().onSetPathButtonClicked(current());
}

void DeskWindow::exportSelected()
{
    if (current().isValid())
        m_host->controller().onCommit({current()});
}

void DeskWindow::refreshSelected()
{
    const QModelIndex fresh = m_host->controller().onRefreshIMFItem(currentDelivery());
    if (fresh.isValid())
        tree().select(fresh);
}

void DeskWindow::refreshAll()
{
    m_host->controller().refreshAll();
}

void DeskWindow::focusBin()
{
    m_bin->view().setFocus(Qt::ShortcutFocusReason);
    if (!m_bin->view().currentIndex().isValid() && m_bin->view().model()->rowCount() > 0)
        m_bin->view().setCurrentIndex(m_bin->view().model()->index(0, 0));
}

void DeskWindow::focusPackages()
{
    m_work->setCurrentWidget(m_manager);
    tree().setFocus(Qt::ShortcutFocusReason);
    if (!current().isValid() && m_host->model().rowCount() > 0)
        tree().select(m_host->model().index(0, 0));
}

void DeskWindow::focusParameters()
{
    m_work->setCurrentWidget(m_manager);
    // From the last widget before the parameters the keyboard enters their first field.
    auto* parameters = m_manager->findChild<QWidget*>(QStringLiteral("m_paramsView"));
    const auto fields = parameters->findChildren<QWidget*>();
    for (QWidget* field : fields) {
        if (field->isVisible() && field->isEnabled() && (field->focusPolicy() & Qt::TabFocus))
            return field->setFocus(Qt::ShortcutFocusReason);
    }
}

void DeskWindow::focusJobs()
{
    const auto buttons = m_jobs->findChildren<QPushButton*>();
    for (QPushButton* button : buttons) {
        if (button->isVisible() && button->isEnabled())
            return button->setFocus(Qt::ShortcutFocusReason);
    }
}

void DeskWindow::focusSource()
{
    action(QStringLiteral("showMonitors"))->setChecked(true);
    showMonitors();
    m_source->setFocus(Qt::ShortcutFocusReason);
}

void DeskWindow::focusRecord()
{
    action(QStringLiteral("showMonitors"))->setChecked(true);
    showMonitors();
    m_record->setFocus(Qt::ShortcutFocusReason);
}

void DeskWindow::focusTranscript()
{
    m_work->setCurrentWidget(m_transcript);
    m_transcript->setFocus(Qt::ShortcutFocusReason);
}

void DeskWindow::switchTranscriptMonitor()
{
    focusTranscript();
    m_transcript->window().handleShortcuts(QStringLiteral("ToggleSourceRecord"));
}

void DeskWindow::chooseTracks()
{
    focusTranscript();
    m_transcript->askForTracks();
}

QVector<services::BinItem> DeskWindow::selectedClips(speech::ClipState::Stage stage) const
{
    QVector<services::BinItem> clips;
    const QStringList ids = m_bin->view().selectedIds();
    for (const QString& id : ids) {
        const auto item = m_host->library().find(id);
        if (item && !media::isTimelineFile(item->path) && m_host->transcripts().store().clipState(id).stage == stage)
            clips += *item;
    }
    return clips;
}

void DeskWindow::transcribeSelected()
{
    using Stage = speech::ClipState::Stage;
    const auto clips = selectedClips(Stage::Missing) + selectedClips(Stage::Failed);
    for (const services::BinItem& item : clips)
        m_host->transcripts().transcribe({item.id, item.name, item.path});
    if (clips.isEmpty())
        transcribeAgain();
}

void DeskWindow::importTranscript()
{
    const QStringList ids = m_bin->view().selectedIds();
    const auto item = m_host->library().find(ids.value(0));
    if (!item || media::isTimelineFile(item->path))
        return;
    m_transcript->askForImport({item->id, item->name, item->path});
}

void DeskWindow::showMonitors()
{
    const bool shown = action(QStringLiteral("showMonitors"))->isChecked();
    m_settings.monitors = shown ? WindowSettings::Monitors::Shown : WindowSettings::Monitors::Hidden;
    if (!shown) {
        m_source->player().stop();
        m_record->player().stop();
    }
    m_monitors->setVisible(shown);
    scheduleSave();
}

void DeskWindow::loadSelectedSequence()
{
    const QStringList ids = m_bin->view().selectedIds();
    if (!ids.isEmpty())
        loadInMonitor(ids.first());
}

void DeskWindow::loadInMonitor(const QString& id)
{
    const auto item = m_host->library().find(id);
    if (item)
        loadInMonitor(id, media::isTimelineFile(item->path) ? *m_record : *m_source);
}

void DeskWindow::loadInMonitor(const QString& id, MonitorPane& monitor)
{
    const auto item = m_host->library().find(id);
    if (!item)
        return;
    action(QStringLiteral("showMonitors"))->setChecked(true);
    showMonitors();
    monitor.open(item->path, item->name);
    m_activeMonitor = &monitor;
    monitor.setFocus();
}

void DeskWindow::togglePlayback()
{
    m_activeMonitor->player().togglePlay();
}

void DeskWindow::clearMarks()
{
    m_activeMonitor->player().clearMarks();
}

void DeskWindow::chooseMedia()
{
    const QStringList files = QFileDialog::getOpenFileNames(this, QStringLiteral("Add Media"), m_settings.mediaFolder);
    addMedia(files);
}

} // namespace desk::app
