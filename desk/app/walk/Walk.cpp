#include "desk/app/walk/Walk.h"

#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/IMF_TreeView.h"
#include "StratacutUI/ImfDict.h"
#include "ViewDeckQt/AbstractParamWidget.h"
#include "desk/app/Host.h"
#include "desk/app/window/BinModel.h"
#include "desk/app/window/BinPane.h"
#include "desk/app/window/DeskWindow.h"
#include "desk/app/window/JobPane.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QUrl>

#include <algorithm>

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;

namespace
{
const QString deliveryName = QStringLiteral("Evening by the Sea");
const QString issuer = QStringLiteral("Stratacut Pictures");
const QString groupName = QStringLiteral("Dialogue");
const QString contentTitle = QStringLiteral("Evening by the Sea");

QJsonObject timeOf(int frames)
{
    return {{"OTIO_SCHEMA", "RationalTime.1"}, {"rate", 24.0}, {"value", frames}};
}

QJsonObject rangeOf(int start, int frames)
{
    return {{"OTIO_SCHEMA", "TimeRange.1"}, {"start_time", timeOf(start)}, {"duration", timeOf(frames)}};
}

QJsonObject clipOf(const QString& media, int start, int frames)
{
    return {{"OTIO_SCHEMA", "Clip.1"},
            {"name", QFileInfo(media).completeBaseName()},
            {"source_range", rangeOf(start, frames)},
            {"media_reference", QJsonObject{{"OTIO_SCHEMA", "ExternalReference.1"}, {"target_url", media}}}};
}

QJsonObject trackOf(const char* kind, const QJsonArray& children)
{
    return {{"OTIO_SCHEMA", "Track.1"}, {"kind", kind}, {"children", children}};
}

/// A timeline of the second and the first part of a clip with black between them, and the sound of another clip.
QByteArray trailer(const QString& media, const QString& second)
{
    const auto gap = [](int frames) {
        return QJsonObject{{"OTIO_SCHEMA", "Gap.1"}, {"source_range", rangeOf(0, frames)}};
    };
    const QJsonArray children{clipOf(media, 72, 48), gap(24), clipOf(media, 0, 96)};
    const QJsonArray tracks{trackOf("Video", children), trackOf("Audio", children),
                            trackOf("Audio", {gap(48), clipOf(second, 0, 24)})};
    return QJsonDocument(QJsonObject{{"OTIO_SCHEMA", "Timeline.1"},
                                     {"global_start_time", timeOf(86400)},
                                     {"tracks", QJsonObject{{"OTIO_SCHEMA", "Stack.1"}, {"children", tracks}}}})
        .toJson();
}

bool isCommitted(const QModelIndex& index)
{
    return Model::StatusFromIndex(index) == IMF_PackageMgr::Committed;
}

void chooseIn(QWidget* dialog, const QString& folder)
{
    dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(folder);
    auto* buttons = dialog->findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
    Hand::click(buttons->button(QDialogButtonBox::Open));
}
} // namespace

Walk::Walk(const WalkRequest& request) : m_request(request) {}

Walk::~Walk()
{
    m_watch.stop();
}

Status Walk::open()
{
    m_host = std::make_unique<Host>(m_request.profile);
    Status claimed = m_host->claim();
    if (!claimed)
        return claimed;
    watchForSurprises();
    DeskWindow::prepareLook(m_host->profile());
    m_host->load();
    m_host->output().setDefaultFolder(m_request.folder);
    QDir().mkpath(cinemaFolder());
    // Dialogs open where the work is.
    QDir::setCurrent(m_request.folder);
    m_window = std::make_unique<DeskWindow>(m_host.get());
    m_window->show();
    QApplication::setActiveWindow(m_window.get());
    m_hand = std::make_unique<Hand>(m_window.get(), m_request.pictures, m_request.firstPicture);
    return {};
}

/// Nobody is here to answer what nobody expected: it is noted and closed.
void Walk::watchForSurprises()
{
    constexpr int patience = 20000;
    m_watch.setInterval(patience / 2);
    QObject::connect(&m_watch, &QTimer::timeout, &m_watch, [this, last = QPointer<QWidget>()]() mutable {
        QWidget* open = QApplication::activePopupWidget();
        open = open ? open : QApplication::activeModalWidget();
        if (open && open == last) {
            const auto* box = qobject_cast<QMessageBox*>(open);
            m_surprise = box ? box->text() : open->windowTitle();
            open->close();
        }
        last = open;
    });
    m_watch.start();
}

Status Walk::expect(bool held, const QString& what) const
{
    if (held && m_surprise.isEmpty())
        return {};
    const QString seen = m_surprise.isEmpty() ? QString() : QStringLiteral(" (the desk said: %1)").arg(m_surprise);
    return Error{{}, {}, {}, what + QStringLiteral(" did not happen") + seen, {}};
}

Status Walk::takeSteps(const QVector<Status (Walk::*)()>& steps)
{
    for (const auto step : steps) {
        Status taken = (this->*step)();
        if (!taken)
            return taken;
    }
    return {};
}

Status Walk::work()
{
    return takeSteps({&Walk::open,
                      &Walk::start,
                      &Walk::fillBin,
                      &Walk::createDelivery,
                      &Walk::dropSequence,
                      &Walk::renameDelivery,
                      &Walk::fillIn,
                      &Walk::chooseFolder,
                      &Walk::describeComposition,
                      &Walk::groupTracks,
                      &Walk::exportDelivery,
                      &Walk::readCommitted,
                      &Walk::cancelExport,
                      &Walk::openTranscript,
                      &Walk::watchClip,
                      &Walk::transcribeClip,
                      &Walk::followTranscript,
                      &Walk::searchTranscript,
                      &Walk::nameSpeaker,
                      &Walk::watchTimeline,
                      &Walk::transcribeTimeline,
                      &Walk::failToTranscribe,
                      &Walk::changeSkin,
                      &Walk::refuseToForget,
                      &Walk::quit});
}

/// The place that is chosen for the delivery.
QString Walk::cinemaFolder() const
{
    return m_request.folder + QStringLiteral("/Cinema");
}

QModelIndex Walk::delivery(int row) const
{
    return m_host->model().index(row, 0);
}

QModelIndex Walk::composition(int row) const
{
    return m_host->model().index(0, 0, m_host->model().index(0, 0, delivery(row)));
}

ViewDeckQt::AbstractParamWidget* Walk::shownParameter(const QString& id) const
{
    const auto all = m_window->findChildren<ViewDeckQt::AbstractParamWidget*>();
    const auto found =
        std::find_if(all.begin(), all.end(), [&id](const auto* one) { return one->getId() == id && one->isVisible(); });
    return found == all.end() ? nullptr : *found;
}

Status Walk::type(const QString& parameter, const QString& text)
{
    auto* shown = shownParameter(parameter);
    auto* field = shown ? shown->findChild<QLineEdit*>() : nullptr;
    if (!field)
        return expect(false, QStringLiteral("showing %1").arg(parameter));
    Hand::type(field, text);
    Hand::key(field, Qt::Key_Tab);
    return expect(shown->getValue().toString() == text, QStringLiteral("typing into %1").arg(parameter));
}

/// The box that the next call opens.
void Walk::answerBox(const QString& button, const QString& picture)
{
    Hand::whenOpen([this, button, picture](QWidget* open) {
        (void)m_hand->shoot(picture);
        const auto buttons = open->findChildren<QPushButton*>();
        for (QPushButton* one : buttons) {
            if (one->text().remove(QLatin1Char('&')) == button)
                return Hand::click(one);
        }
    });
}

Status Walk::start()
{
    return m_hand->shoot(QStringLiteral("first-start"));
}

Status Walk::fillBin()
{
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(m_request.media)});
    Hand::drop(&m_window->bin(), files, m_window->bin().rect().center(), Qt::CopyAction);
    const QAbstractItemModel* bin = m_window->bin().view().model();
    const bool added = Hand::waitFor(
        [bin] { return bin->rowCount() == 1 && !bin->index(0, 0).data(Qt::DecorationRole).value<QImage>().isNull(); });
    Hand::click(&m_window->bin().view(), bin->index(0, 0));
    Status seen = expect(added, QStringLiteral("taking the media into the bin"));
    return seen ? m_hand->shoot(QStringLiteral("media-in-the-bin")) : seen;
}

Status Walk::watch(int row, MonitorPane& monitor)
{
    BinView& bin = m_window->bin().view();
    Hand::doubleClick(&bin, bin.model()->index(row, 0));
    const bool shown = Hand::waitFor([&] { return monitor.player().picture() && monitor.message().isEmpty(); });
    return expect(shown, QStringLiteral("showing a sequence in its monitor"));
}

Status Walk::watchClip()
{
    MonitorPane& monitor = m_window->monitor(MonitorPane::Kind::Source);
    Status shown = watch(0, monitor);
    if (!shown)
        return shown;
    auto* view = monitor.findChild<QWidget*>(QStringLiteral("m_view"));
    const media::Player& player = monitor.player();
    const qint64 frames = player.frames();
    Hand::key(view, Qt::Key_L);
    bool played = Hand::waitFor([&] { return player.position() >= frames / 4; });
    Hand::key(view, Qt::Key_I);
    played = played && Hand::waitFor([&] { return player.position() >= frames / 2; });
    Status pictured = m_hand->shoot(QStringLiteral("playing"));
    Hand::key(view, Qt::Key_O);
    Hand::key(view, Qt::Key_K);
    Status done = expect(played && player.markIn() > 0 && player.markOut() > player.markIn() && !player.isPlaying(),
                         QStringLiteral("playing and marking a clip"));
    return done ? pictured : done;
}

/// The second part of the clip, a second of black, the first part.
Status Walk::watchTimeline()
{
    const QString file = m_request.folder + QStringLiteral("/trailer.otio");
    QFile timeline(file);
    if (!timeline.open(QIODevice::WriteOnly))
        return expect(false, QStringLiteral("writing a timeline"));
    QFile::copy(m_request.media, secondMedia());
    timeline.write(trailer(m_request.media, secondMedia()));
    timeline.close();
    m_window->addMedia({file});
    const QAbstractItemModel* bin = m_window->bin().view().model();
    Status added = expect(Hand::waitFor([bin] { return bin->rowCount() == 2; }), QStringLiteral("taking a timeline"));
    if (!added)
        return added;
    MonitorPane& monitor = m_window->monitor(MonitorPane::Kind::Record);
    Status shown = watch(1, monitor);
    Hand::key(monitor.findChild<QWidget*>(QStringLiteral("m_view")), Qt::Key_Right, Qt::ShiftModifier);
    Hand::waitFor([&] { return monitor.player().picture() && monitor.player().picture()->frame == 10; });
    return shown ? m_hand->shoot(QStringLiteral("timeline")) : shown;
}

Status Walk::createDelivery()
{
    Hand::whenOpen([this](QWidget* menu) {
        Hand::key(menu, Qt::Key_Down);
        (void)m_hand->shoot(QStringLiteral("new-imf"));
        Hand::key(menu, Qt::Key_Return);
    });
    Hand::click(m_window->findChild<QPushButton*>(QStringLiteral("m_newIMF")));
    Status made = expect(m_host->model().rowCount() == 1, QStringLiteral("making an IMF Original"));
    return made ? m_hand->shoot(QStringLiteral("new-delivery")) : made;
}

Status Walk::dropSequence()
{
    const bool taken = Hand::drag(&m_window->bin().view(), &m_window->tree(), delivery(0));
    Status dropped = expect(taken && composition(0).isValid() && m_window->bin().view().model()->rowCount() == 1,
                            QStringLiteral("dropping a sequence on the delivery"));
    return dropped ? m_hand->shoot(QStringLiteral("dropped-sequence")) : dropped;
}

Status Walk::renameDelivery()
{
    IMF_TreeView& tree = m_window->tree();
    Hand::click(&tree, delivery(0));
    Hand::key(&tree, Qt::Key_F2);
    auto* editor = tree.viewport()->findChild<QLineEdit*>();
    if (!editor)
        return expect(false, QStringLiteral("opening an editor for the name"));
    Hand::type(editor, deliveryName);
    Status pictured = m_hand->shoot(QStringLiteral("rename"));
    Hand::key(editor, Qt::Key_Return);
    const bool renamed = Hand::waitFor([this] { return delivery(0).data(Model::NameRole) == deliveryName; }, 2000);
    return renamed ? pictured : expect(false, QStringLiteral("renaming the delivery"));
}

Status Walk::fillIn()
{
    Status typed = type(QStringLiteral("id_issuer"), issuer);
    return typed ? expect(delivery(0).data(Model::IssuerRole) == issuer, QStringLiteral("writing the issuer")) : typed;
}

Status Walk::chooseFolder()
{
    Hand::whenOpen([this](QWidget* dialog) {
        (void)m_hand->shoot(QStringLiteral("choose-folder"));
        chooseIn(dialog, cinemaFolder());
    });
    m_window->action(QStringLiteral("chooseFolder"))->trigger();
    Status chosen = expect(delivery(0).data(Model::PathRole) == cinemaFolder() + QLatin1Char('/') + deliveryName,
                           QStringLiteral("choosing the folder"));
    return chosen ? m_hand->shoot(QStringLiteral("delivery")) : chosen;
}

Status Walk::describeComposition()
{
    Hand::click(&m_window->tree(), composition(0));
    Status typed = type(QStringLiteral("id_content_title"), contentTitle);
    return typed ? m_hand->shoot(QStringLiteral("composition")) : typed;
}

namespace
{
void nameGroup(QWidget* asks)
{
    Hand::type(asks->findChild<QLineEdit*>(QStringLiteral("GroupName")), groupName);
    Hand::click(asks->findChild<QPushButton*>(QStringLiteral("OK")));
}

void saveGroupAs(QComboBox* groups)
{
    Hand::whenOpen([groups](QWidget*) {
        // From the default group over the others and "Save" to "Save As..."; a separator is no stop.
        for (int stop = 3; stop < groups->count(); ++stop)
            Hand::key(groups->view(), Qt::Key_Down);
        Hand::whenOpen(nameGroup);
        Hand::key(groups->view(), Qt::Key_Return);
    });
    Hand::click(groups);
}
} // namespace

Status Walk::groupTracks()
{
    auto* button = m_window->findChild<QPushButton*>(QStringLiteral("ATGbtn"));
    if (!button)
        return {};
    const auto groups = [this] {
        QStringList names;
        const QJsonArray profiles = composition(0).data(Model::TrackGroupsRole).toJsonArray();
        for (const QJsonValue& profile : profiles)
            names += profile.toObject()[QLatin1String(ImfDict::Name)].toString();
        return names;
    };
    const QStringList before = groups();
    Hand::whenOpen([this](QWidget* dialog) {
        auto* tracks = dialog->findChild<QAbstractItemView*>(QStringLiteral("m_tracks"));
        for (int row = 0; row < 2; ++row)
            Hand::click(tracks, tracks->model()->index(row, 1));
        saveGroupAs(dialog->findChild<QComboBox*>(QStringLiteral("m_groups")));
        (void)m_hand->shoot(QStringLiteral("audio-groups"));
        Hand::click(dialog->findChild<QPushButton*>(QStringLiteral("m_save")));
    });
    Hand::click(button);
    Status grouped = expect(groups() == before + QStringList{groupName}, QStringLiteral("grouping tracks"));
    auto* mapping = shownParameter(QStringLiteral("id_multiple_audio_mix"));
    for (QWidget* above = mapping; above; above = above->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(above))
            area->ensureWidgetVisible(mapping);
    }
    return grouped ? m_hand->shoot(QStringLiteral("audio-mapping")) : grouped;
}

Status Walk::exportDelivery()
{
    constexpr int atMost = 30 * 60 * 1000;
    Hand::click(&m_window->tree(), delivery(0));
    Hand::click(m_window->findChild<QPushButton*>(QStringLiteral("m_burn")));
    const auto& rows = m_window->jobs().rows();
    if (rows.isEmpty())
        return expect(false, QStringLiteral("starting the export"));
    JobRow* job = rows.first();
    Hand::waitFor([job] { return job->isOver() || job->share() > 0.4; }, atMost);
    Status pictured = m_hand->shoot(QStringLiteral("export"));
    const bool over = Hand::waitFor([&] { return job->isOver() && isCommitted(delivery(0)); }, atMost);
    if (!over || job->state() != JobRow::State::Done)
        return expect(false, QStringLiteral("writing the delivery"));
    return pictured ? m_hand->shoot(QStringLiteral("committed")) : pictured;
}

Status Walk::readCommitted()
{
    m_window->tree().expandAll();
    Hand::click(&m_window->tree(), composition(0));
    Status read = expect(isCommitted(composition(0)), QStringLiteral("turning the composition committed"));
    return read ? m_hand->shoot(QStringLiteral("committed-composition")) : read;
}

Status Walk::cancelExport()
{
    Hand::whenOpen([](QWidget* menu) {
        Hand::key(menu, Qt::Key_Down);
        Hand::key(menu, Qt::Key_Down);
        Hand::key(menu, Qt::Key_Return);
    });
    Hand::click(m_window->findChild<QPushButton*>(QStringLiteral("m_newIMF")));
    Hand::click(&m_window->bin().view(), m_window->bin().view().model()->index(0, 0));
    Hand::drag(&m_window->bin().view(), &m_window->tree(), delivery(1));
    Hand::click(&m_window->tree(), delivery(1));
    Hand::click(m_window->findChild<QPushButton*>(QStringLiteral("m_burn")));
    JobRow* job = m_window->jobs().rows().first();
    Hand::waitFor([job] { return job->share() > 0; });
    bool answered = false;
    Hand::whenOpen([&](QWidget* box) {
        Hand::waitFor([job] { return job->isOver(); });
        (void)m_hand->shoot(QStringLiteral("cancelled-export"));
        answered = true;
        Hand::key(box, Qt::Key_Return);
    });
    Hand::click(job->findChild<QPushButton*>(QStringLiteral("m_cancelJob")));
    const bool over = Hand::waitFor([&] { return answered && job->state() == JobRow::State::Cancelled; });
    Status cancelled = expect(over && !isCommitted(delivery(1)), QStringLiteral("cancelling an export"));
    const bool isInView = job->visibleRegion().boundingRect().top() == 0;
    return cancelled ? expect(isInView, QStringLiteral("keeping the cancelled export in view")) : cancelled;
}

Status Walk::changeSkin()
{
    Hand::click(&m_window->tree(), composition(1));
    m_window->action(QStringLiteral("light"))->trigger();
    Status pictured = m_hand->shoot(QStringLiteral("light"));
    m_window->action(QStringLiteral("dark"))->trigger();
    return pictured;
}

Status Walk::refuseToForget()
{
    m_window->action(QStringLiteral("newOriginal"))->trigger();
    answerBox(QStringLiteral("Do Not Quit"), QStringLiteral("asks-before-quitting"));
    const bool closed = m_window->close();
    Status stayed = expect(!closed && delivery(2).isValid(), QStringLiteral("asking before a delivery is let go"));
    if (!stayed)
        return stayed;
    m_window->action(QStringLiteral("newImp"))->trigger();
    return expect(m_host->model().rowCount(delivery(2)) == 1, QStringLiteral("making an IMP"));
}

Status Walk::quit()
{
    const bool closed = m_window->close();
    m_nextPicture = m_hand->nextNumber();
    m_watch.stop();
    m_window.reset();
    m_host.reset();
    return expect(closed, QStringLiteral("quitting"));
}

Status Walk::look()
{
    Status done = open();
    if (!done)
        return done;
    m_window->tree().expandAll();
    Hand::click(&m_window->tree(), composition(1));
    const int percent = qRound(100 * m_window->devicePixelRatioF());
    for (const char* skin : {"light", "dark"}) {
        m_window->action(QLatin1String(skin))->trigger();
        if (done)
            done = m_hand->shoot(QStringLiteral("%1-percent-%2").arg(percent).arg(QLatin1String(skin)));
    }
    m_nextPicture = m_hand->nextNumber();
    m_window->close();
    m_watch.stop();
    return done;
}

Result<QString> Walk::comeBack()
{
    hideTranscripts();
    const Status opened = open();
    if (!opened)
        return opened.error();
    const QAbstractItemModel* bin = m_window->bin().view().model();
    Hand::waitFor([bin] { return !bin->index(0, 0).data(Qt::DecorationRole).value<QImage>().isNull(); });
    m_window->tree().expandAll();
    if (m_host->model().rowCount() == 3)
        Hand::click(&m_window->tree(), delivery(0));
    Status found = expect(m_host->model().rowCount() == 3 && bin->rowCount() == 2,
                          QStringLiteral("finding three deliveries and two sequences after the restart"));
    if (found)
        found = expect(isCommitted(delivery(0)) && delivery(0).data(Model::NameRole) == deliveryName &&
                           composition(1).isValid() && !isCommitted(delivery(1)),
                       QStringLiteral("finding the written delivery and the work on the next one"));
    if (found)
        found = m_hand->shoot(QStringLiteral("after-the-restart"));
    if (found)
        found = loseTranscripts();
    if (!found)
        return found.error();
    const QString folder = delivery(0).data(Model::PathRole).toString();
    m_window->close();
    m_watch.stop();
    return folder;
}

} // namespace desk::app
