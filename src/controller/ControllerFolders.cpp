// Where the controller asks for folders: the target of a deliverable, and the deliverables that another one needs.

#include "StratacutUI/IMF_Controller.h"

#include "Messages.h"
#include "MissingAssets.h"

#include "NvCore/NvText.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "ViewDeckQt/ManagedDialog.h"
#include "ViewDeckQt/ManagedMessageBox.h"

#include <QFileDialog>
#include <QJsonObject>
#include <QPointer>

namespace
{
using Model = IMF_PackageMgrQtModel;

/// Asks for a folder, starting at the remembered one. @return empty when the user gave up.
QString askForFolder(QString& remembered)
{
    const QString folder = QFileDialog::getExistingDirectory(nullptr, stx_func("Select Delivery Folder"), remembered,
                                                             QFileDialog::ShowDirsOnly);
    if (!folder.isEmpty())
        remembered = folder;
    return folder;
}

QString refusal(const IMFO_Bridge::Error& error, const QString& shown, const QString& folder)
{
    if (error.code() != IMFO_Bridge::Error::ItemExists)
        return error.message();
    return shown + stx_func(" already exists at path:\n") + folder + QStringLiteral("\n\n\t") +
           stx_func("Please choose a new path");
}

/// Whether the user wants to choose another folder.
bool wantsAnotherFolder(const QString& text)
{
    constexpr auto windowFlags = Qt::WindowFlags(0x200100b);
    ViewDeckQt::ManagedDialog<QMessageBox> box(QMessageBox::Warning, QString::fromLatin1(Messages::title), text,
                                               QMessageBox::Ok | QMessageBox::Cancel);
    box.setWindowFlags(windowFlags);
    box.setContentsMargins(20, 10, 20, 10);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(QMessageBox::Ok);
    return box.exec() == QMessageBox::Ok;
}

enum class LoadAnswer { Yes, No };

LoadAnswer askToLoad(bool& neverAskAgain)
{
    static const QString question = stx_func("The associated IMF deliverable was not found. Would you like to load the "
                                             "dependent IMF deliverable?");
    const QMessageBox::StandardButton answer = ViewDeckQt::ManagedMessageBox::messageBox(
        nullptr, QMessageBox::Question, Messages::title, question, QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer == QMessageBox::Ignore)
        neverAskAgain = true;
    return answer == QMessageBox::Yes ? LoadAnswer::Yes : LoadAnswer::No;
}
} // namespace

void IMF_Controller::onSetPathButtonClicked(const QModelIndex& index)
{
    static QString remembered;
    const QPointer<IMF_Controller> self(this);
    const QPersistentModelIndex row = index;
    while (row.isValid()) {
        const QString folder = askForFolder(remembered);
        if (folder.isEmpty() || !self || !row.isValid())
            return;
        QString message;
        if (tryPath(folder, row, message) || !wantsAnotherFolder(message) || !self)
            return;
    }
}

QString IMF_Controller::setPath(const QString& path, const QModelIndex& index)
{
    QString message;
    tryPath(path, index, message);
    return message;
}

bool IMF_Controller::tryPath(const QString& path, const QModelIndex& index, QString& message)
{
    const QString shown = index.siblingAtColumn(0).data().toString();
    IMFO_Bridge::Error error;
    QString actualPath;
    m_bridge->setItemPath(error, itemInfo(index), path, actualPath);
    if (error.isError()) {
        message = refusal(error, shown, path);
        return false;
    }
    m_model->setData(index, path, Model::PathRole);
    return true;
}

bool IMF_Controller::hasMissingAssets(const QModelIndex& index)
{
    IMFO_Bridge::Error error;
    QJsonObject info;
    m_bridge->getDeliveryInfo(error, Model::ComponentIDFromIndex(index), info, true);
    return !Messages::showIfFailed(error) && namesMissingAssets(info);
}

void IMF_Controller::resolveMissingAssetsIfNeeded(const QModelIndex& index)
{
    const QPersistentModelIndex row = index;
    if (!hasMissingAssets(index))
        return;
    QModelIndex delivery = row;
    while (delivery.isValid() && Model::NodeTypeFromIndex(delivery) != IMF_PackageMgr::Delivery)
        delivery = delivery.parent();
    if (delivery.isValid())
        resolveMissingAssets(m_model->getIMFPath(delivery));
}

void IMF_Controller::resolveMissingAssets(const QString& path)
{
    static QString remembered;
    static bool neverAskAgain = false;
    const QPointer<IMF_Controller> self(this);
    bool resolved = false;
    while (self && !resolved && !neverAskAgain && askToLoad(neverAskAgain) == LoadAnswer::Yes) {
        const QString folder = self ? askForFolder(remembered) : QString();
        if (folder.isEmpty() || !self)
            break;
        resolved = folder != path && loadMissingDelivery(folder, path);
    }
    // However the questions end: what was loaded for one deliverable may be what others miss.
    if (resolved && self)
        refreshAll();
}

bool IMF_Controller::loadMissingDelivery(const QString& folder, const QString& path)
{
    // Where the host cannot tell, something is still missing.
    const QPointer<IMF_Controller> self(this);
    bool missing = true;
    loadNewDelivery(folder, &missing, false);
    if (!self)
        return false;
    missing = true;
    loadNewDelivery(path, &missing, true);
    return !missing;
}

void IMF_Controller::onExploreNewDelivery(const QString& fullPath)
{
    static const QString text = stx_func("The supplemental deliverable  from an associated IMF deliverable was not "
                                         "found. Would you like to load the dependent IMF deliverable?");
    Q_UNUSED(text);
    bool missing = false;
    loadNewDelivery(fullPath, &missing, false);
}
