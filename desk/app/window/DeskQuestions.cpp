// Where the desk takes media in, adds it to packages, and asks before anything is lost.

#include "desk/app/window/DeskWindow.h"

#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/IMF_TreeView.h"
#include "ViewDeckQt/ManagedDialog.h"
#include "ViewDeckQt/ManagedMessageBox.h"
#include "desk/app/Host.h"
#include "desk/app/window/BinPane.h"
#include "desk/app/window/JobPane.h"
#include "desk/app/window/MediaLoader.h"
#include "desk/app/window/RecogniserDialog.h"
#include "desk/services/MediaEngine.h"
#include "desk/services/TranscriptService.h"

#include <QApplication>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QPushButton>
#include <QStatusBar>

#include <algorithm>

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;
using ViewDeckQt::ManagedMessageBox::messageBox;

namespace
{
const QString programName = QStringLiteral("Stratacut Desk");

QString quoted(const QString& name)
{
    return QString::fromUtf8("\xE2\x80\x9C%1\xE2\x80\x9D").arg(name);
}

QString quoted(const QModelIndex& index)
{
    return quoted(index.data(Model::NameRole).toString());
}

QString quotedNames(const QModelIndexList& items)
{
    QStringList names;
    for (const QModelIndex& item : items)
        names += quoted(item);
    return names.join(QStringLiteral(", "));
}

struct Choice {
    const char* text;
    QMessageBox::ButtonRole role;
};

/// Asks with buttons that say what they do. The number of the choice; the last one for Escape.
int ask(QWidget* parent, const QString& text, const QVector<Choice>& choices)
{
    const QPointer<ViewDeckQt::ManagedDialog<QMessageBox>> box = new ViewDeckQt::ManagedDialog<QMessageBox>(
        QMessageBox::Question, programName, text, QMessageBox::NoButton, parent);
    box->setTextFormat(Qt::PlainText);
    QVector<QAbstractButton*> buttons;
    for (const Choice& choice : choices)
        buttons += box->addButton(QString::fromLatin1(choice.text), choice.role);
    box->setEscapeButton(buttons.last());
    box->setDefaultButton(qobject_cast<QPushButton*>(buttons.last()));
    ViewDeckQt::ManagedMessageBox::keepOnScreen(*box);
    box->exec();
    const int answer = box ? buttons.indexOf(box->clickedButton()) : choices.size() - 1;
    delete box;
    return answer < 0 ? choices.size() - 1 : answer;
}

/// Deliveries that nothing keeps, as a sentence of their own.
QString unkeptText(const QModelIndexList& items)
{
    const QString names = quotedNames(items);
    return items.size() == 1
               ? QStringLiteral("%1 holds no IMP yet, and only deliveries with an IMP are kept.").arg(names)
               : QStringLiteral("%1 hold no IMP yet, and only deliveries with an IMP are kept.").arg(names);
}
} // namespace

void DeskWindow::addMedia(const QStringList& paths)
{
    if (paths.isEmpty())
        return;
    m_settings.mediaFolder = QFileInfo(paths.first()).absolutePath();
    m_loader->open(paths);
    scheduleSave();
}

void DeskWindow::showErrors()
{
    const QStringList errors = std::exchange(m_errors, {}) + m_host->takeNotices();
    if (!errors.isEmpty())
        messageBox(this, QMessageBox::Warning, programName, errors.join(QStringLiteral("\n\n")), QMessageBox::Ok,
                   QMessageBox::Ok);
}

void DeskWindow::addSelectedSequences()
{
    const QStringList ids = m_bin->view().selectedIds();
    if (ids.isEmpty())
        return;
    QModelIndex target = current();
    if (target.isValid() && Model::NodeTypeFromIndex(target) == IMF_PackageMgr::CPL)
        target = target.parent();
    const std::unique_ptr<QMimeData> dragged(services::MediaEngine::mimeData(ids));
    if (m_host->model().canDropMimeData(dragged.get(), Qt::MoveAction, -1, -1, target)) {
        m_host->model().dropMimeData(dragged.get(), Qt::MoveAction, -1, -1, target);
        return;
    }
    const QString text = target.isValid()
                             ? QStringLiteral("%1 is written and takes no sequences. Select its delivery, which gets a "
                                              "new IMP, or a package that is not written yet.")
                                   .arg(quoted(target))
                             : QStringLiteral("None of the selected sequences can be used: their files are not there.");
    messageBox(this, QMessageBox::Warning, programName, text, QMessageBox::Ok, QMessageBox::Ok);
}

void DeskWindow::removeSelectedSequences()
{
    const QStringList ids = m_bin->view().selectedIds();
    const bool used = std::any_of(ids.begin(), ids.end(),
                                  [this](const QString& id) { return m_host->model().mobToIndex(id).isValid(); });
    const QString text =
        QStringLiteral("A package is made from a sequence that you are about to remove. Without it, the "
                       "package cannot be exported.");
    if (used && ask(this, text, {{"Remove", QMessageBox::DestructiveRole}, {"Keep", QMessageBox::RejectRole}}) != 0)
        return;
    for (const QString& id : ids)
        m_host->library().remove(id);
}

void DeskWindow::removeSelected()
{
    if (current().isValid())
        askAndRemove(current());
}

void DeskWindow::askAndRemove(const QModelIndex& index)
{
    const QPersistentModelIndex item = index;
    const bool open = Model::StatusFromIndex(index) == IMF_PackageMgr::Uncommitted;
    QString text = QStringLiteral("Remove %1 and all that it holds? It is not written yet.").arg(quoted(index));
    if (open && ask(this, text, {{"Remove", QMessageBox::DestructiveRole}, {"Keep", QMessageBox::RejectRole}}) != 0)
        return;
    if (item.isValid())
        m_host->controller().onRemoveIMFItem(item);
}

void DeskWindow::askForMissing(const QModelIndex& delivery)
{
    if (m_asking || Model::StatusFromIndex(delivery) != IMF_PackageMgr::Committed)
        return;
    // Answering loads further deliveries, which are not asked about in turn.
    QTimer::singleShot(0, this, [this, item = QPersistentModelIndex(delivery)] {
        if (m_asking || !item.isValid())
            return;
        m_asking = true;
        m_host->controller().resolveMissingAssetsIfNeeded(item);
        m_asking = false;
    });
}

void DeskWindow::resolveMissing()
{
    m_asking = true;
    m_host->controller().resolveMissingAssetsIfNeeded(currentDelivery());
    m_asking = false;
}

void DeskWindow::forgetAbsent()
{
    const QStringList folders = m_host->absentFolders();
    for (const QString& folder : folders) {
        const QString text = QStringLiteral("%1 could not be read when the program started, say because its disk is "
                                            "not connected. What was begun in it is kept until it is back.\n\nForget "
                                            "the delivery and what was begun in it? Its files stay.")
                                 .arg(folder);
        if (ask(this, text, {{"Forget", QMessageBox::DestructiveRole}, {"Keep", QMessageBox::RejectRole}}) == 0)
            m_host->forget(folder);
    }
    updateActions();
    scheduleSave();
}

void DeskWindow::updateHint()
{
    const QModelIndexList items = m_host->unkept();
    m_hint->setText(items.isEmpty() ? QString()
                                    : unkeptText(items) + QStringLiteral(" Drop a sequence on it, or press Ctrl+P."));
}

bool DeskWindow::mayCloseWithJobs()
{
    const int jobs = m_jobs->active();
    if (jobs == 0)
        return true;
    const QString text = jobs == 1 ? QStringLiteral("An export is running.")
                                   : QStringLiteral("%1 exports are running or waiting.").arg(jobs);
    const int answer = ask(this, text,
                           {{"Quit When Finished", QMessageBox::AcceptRole},
                            {"Cancel and Quit", QMessageBox::DestructiveRole},
                            {"Do Not Quit", QMessageBox::RejectRole}});
    m_quitWhenIdle = answer != 2;
    if (!m_quitWhenIdle)
        return false;
    if (answer == 1)
        m_jobs->cancelAll();
    statusBar()->showMessage(QStringLiteral("Quitting when the exports have ended"));
    if (m_jobs->active() == 0)
        closeWhenIdle();
    return false;
}

bool DeskWindow::mayLoseDeliveries()
{
    const QModelIndexList items = m_host->unkept();
    if (items.isEmpty())
        return true;
    const QString text = unkeptText(items) + QStringLiteral("\n\nQuit and let go of what is not kept?");
    return ask(this, text, {{"Quit", QMessageBox::DestructiveRole}, {"Do Not Quit", QMessageBox::RejectRole}}) == 0;
}

bool DeskWindow::mayLoseWork()
{
    const Status kept = save();
    if (kept)
        return true;
    const QString text = kept.error().what + QStringLiteral("\n\nQuit and lose what could not be saved?");
    return ask(this, text, {{"Quit", QMessageBox::DestructiveRole}, {"Do Not Quit", QMessageBox::RejectRole}}) == 0;
}

void DeskWindow::transcribeAgain()
{
    const QVector<services::BinItem> clips = selectedClips(speech::ClipState::Stage::Done);
    if (clips.isEmpty())
        return;
    const QString names = clips.size() == 1 ? quoted(clips.first().name) + QStringLiteral(" has a transcript.")
                                            : QStringLiteral("%1 clips have transcripts.").arg(clips.size());
    const QString text = names + QStringLiteral("\n\nTranscribe again? The present words stay until the new ones are "
                                                "complete, and are replaced then. Names and corrections of speakers "
                                                "stay.");
    if (ask(this, text, {{"Transcribe Again", QMessageBox::DestructiveRole}, {"Keep", QMessageBox::RejectRole}}) != 0)
        return;
    for (const services::BinItem& clip : clips)
        m_host->transcripts().transcribeAgain({clip.id, clip.name, clip.path});
}

void DeskWindow::chooseRecogniser()
{
    auto* dialog = new RecogniserDialog(m_host->transcripts().settings().recogniser, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        services::TranscriptService& service = m_host->transcripts();
        services::TranscriptSettings settings = service.settings();
        settings.recogniser = dialog->settings();
        const Status kept = service.change(settings);
        if (!kept)
            statusBar()->showMessage(kept.error().sentence());
    });
    dialog->open();
}

void DeskWindow::about()
{
    messageBox(this, QMessageBox::Information, programName,
               QStringLiteral("Stratacut Desk %1\n\nMakes, reads and checks IMF packages.\n\nWork is kept in %2")
                   .arg(QApplication::applicationVersion(), m_host->profile().folder()),
               QMessageBox::Ok, QMessageBox::Ok);
}

} // namespace desk::app
