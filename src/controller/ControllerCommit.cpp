// How the controller commits an item and takes its completion.

#include "StratacutUI/IMF_Controller.h"

#include "CommitMailbox.h"
#include "Messages.h"

#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/IMF_Node.h"
#include "StratacutUI/IMF_PackageDeliveryReader.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"

#include <algorithm>

namespace
{
using Model = IMF_PackageMgrQtModel;

QString nameOf(const QJsonValue& document)
{
    return document.toObject().value(ImfDict::Name).toString();
}

QJsonArray childrenOf(const QJsonObject& document)
{
    return document.value(ImfDict::Children).toArray();
}

/// The document as it would be after a commit that changed nothing but the status.
QJsonObject committedDocument(const IMF_Node& node)
{
    QJsonObject document = boost::apply_visitor(IMF_Utils::GetJsonVisitor(), node.value());
    document[ImfDict::Mutable] = false;
    QJsonArray children;
    for (const std::shared_ptr<IMF_Node>& child : node)
        children.append(committedDocument(*child));
    document[ImfDict::Children] = children;
    return document;
}

/// Which of the rows below `parent` with the same name this one is, counted from 0.
int namesakesBefore(const QModelIndex& index)
{
    const QString name = index.data(Model::NameRole).toString();
    int count = 0;
    for (int row = 0; row < index.row(); ++row)
        count += index.siblingAtRow(row).data(Model::NameRole).toString() == name;
    return count;
}

/// The child document of the row's name; among several the one at the row's place among its namesakes.
QJsonObject documentOfRow(const QJsonArray& documents, const QModelIndex& index)
{
    const QString name = index.data(Model::NameRole).toString();
    QVector<QJsonObject> named;
    for (const QJsonValue& document : documents) {
        if (nameOf(document) == name)
            named.append(document.toObject());
    }
    return named.isEmpty() ? QJsonObject() : named[std::min(namesakesBefore(index), named.size() - 1)];
}

/// Whether the document and the row hold the same number of children, all the way down.
bool sameShape(const Model& model, const QModelIndex& index, const QJsonObject& document)
{
    const QJsonArray children = childrenOf(document);
    if (children.size() != model.rowCount(index))
        return false;
    for (int row = 0; row < children.size(); ++row) {
        if (!sameShape(model, model.index(row, 0, index), children[row].toObject()))
            return false;
    }
    return true;
}

/// For a tree that was edited while the commit ran: refreshes the rows that the document names, and leaves the others.
void refreshByName(Model& model, const QModelIndex& index, const QJsonObject& document)
{
    std::shared_ptr<IMF_Node> node = model.FromIndex(index);
    IMF_PackageDeliveryReader::udpateNodeFromJson(node, document);
    const QJsonArray children = childrenOf(document);
    for (int row = 0; row < model.rowCount(index); ++row) {
        const QModelIndex child = model.index(row, 0, index);
        const QJsonObject found = documentOfRow(children, child);
        if (!found.isEmpty())
            refreshByName(model, child, found);
    }
}

void announceSubtree(Model& model, const QModelIndex& index)
{
    const int rows = model.rowCount(index);
    if (rows == 0)
        return;
    emit model.dataChanged(model.index(0, 0, index), model.index(rows - 1, model.columnCount() - 1, index));
    for (int row = 0; row < rows; ++row)
        announceSubtree(model, model.index(row, 0, index));
}
} // namespace

void IMF_Controller::Mailbox::post(quint64 ticket, const IMFO_Bridge::Error& error)
{
    // A copy of the plain class: the host's own may be gone when the call is delivered.
    const IMFO_Bridge::Error copy(error.code(), error.message());
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_context)
        QMetaObject::invokeMethod(
            m_context, [receiver = m_receiver, ticket, copy] { receiver(ticket, copy); }, Qt::QueuedConnection);
}

void IMF_Controller::Mailbox::close()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_context = nullptr;
}

void IMF_Controller::onCommit(const QModelIndexList& selectedItems)
{
    if (selectedItems.isEmpty() || !selectedItems.first().isValid())
        return;
    const QPersistentModelIndex row = selectedItems.first().siblingAtColumn(0);
    if (!applyAllNeededSettingsAndDescriptiveMetadata(row) || !row.isValid())
        return;
    const IMFO_ItemInfo info = itemInfo(row);
    if (info.nodeType == IMF_PackageMgr::CPL)
        return;
    IMFO_Bridge::Error error;
    if (info.nodeType == IMF_PackageMgr::IMP && row.parent().isValid()) {
        const IMFO_ItemInfo parentInfo = itemInfo(row.parent());
        m_bridge->applyDescriptiveMetadata(error, parentInfo.metadataJson, parentInfo);
        if (Messages::showIfFailed(error) || !row.isValid())
            return;
    }
    const quint64 ticket = m_nextTicket++;
    m_commits.emplace(ticket, row);
    m_bridge->commit(error, info, [mailbox = m_mailbox, ticket](const IMFO_Bridge::Error& outcome) {
        mailbox->post(ticket, outcome);
    });
    if (error.isError())
        m_commits.erase(ticket);
    Messages::showIfFailed(error);
}

bool IMF_Controller::applyAllNeededSettingsAndDescriptiveMetadata(const QModelIndex& index)
{
    // A host may let events through while it stores something: rows may go behind each call, and need nothing then.
    const QPersistentModelIndex row = index;
    const IMFO_ItemInfo info = itemInfo(row);
    IMFO_Bridge::Error error;
    if (info.nodeType == IMF_PackageMgr::CPL) {
        m_bridge->applyCommitSettings(error, info.commitSettingsJson, info);
        if (Messages::showIfFailed(error))
            return false;
        if (!row.isValid())
            return true;
    }
    m_bridge->applyDescriptiveMetadata(error, info.metadataJson, info);
    if (Messages::showIfFailed(error))
        return false;
    if (!row.isValid())
        return true;
    const QModelIndexList found = m_model->getUnBurnedIndexes(row);
    const QVector<QPersistentModelIndex> uncommitted(found.begin(), found.end());
    return std::all_of(uncommitted.begin(), uncommitted.end(), [this](const QPersistentModelIndex& child) {
        return !child.isValid() || applyAllNeededSettingsAndDescriptiveMetadata(child);
    });
}

void IMF_Controller::finishCommit(quint64 ticket, const IMFO_Bridge::Error& error)
{
    const auto found = m_commits.find(ticket);
    if (found == m_commits.end())
        return;
    const QPersistentModelIndex index = found->second;
    m_commits.erase(found);
    if (index.isValid())
        onCommitComplete(index, error);
}

void IMF_Controller::onCommitComplete(const QModelIndex& imfIndex, const IMFO_Bridge::Error& error)
{
    if (error.isError()) {
        Messages::show(error.code() == IMFO_Bridge::Error::WarningOnly ? QMessageBox::Warning : QMessageBox::Critical,
                       error.message());
        return;
    }
    if (!imfIndex.isValid())
        return;
    const QPointer<IMF_Controller> self(this);
    const QPersistentModelIndex row = imfIndex;
    updateDelivery(row);
    // A message may have been shown, and much may have happened behind it.
    if (self && row.isValid())
        emit commitCompleted();
}

void IMF_Controller::updateDelivery(const QModelIndex& index)
{
    QModelIndex delivery = index.siblingAtColumn(0);
    while (delivery.parent().isValid())
        delivery = delivery.parent();
    if (!delivery.isValid())
        return;
    const QPersistentModelIndex row = index;
    IMFO_Bridge::Error error;
    std::pair<QByteArray, QJsonObject> read;
    m_bridge->readDelivery(error, m_model->getIMFPath(delivery), read);
    const QPointer<IMF_Controller> self(this);
    Messages::showIfFailed(error);
    if (!self || !row.isValid())
        return;
    read.second[ImfDict::Mutable] = false;
    m_model->keepTrackGroups(m_model->FromIndex(row), [&] {
        if (Model::NodeTypeFromIndex(row) == IMF_PackageMgr::Delivery)
            updateDeliverable(row, read.second);
        else
            updateIMP(row, read.second);
    });
    emit m_model->dataChanged(row, row, {Model::StatusRole});
    announceSubtree(*m_model, row);
}

void IMF_Controller::updateDeliverable(const QModelIndex& delivery, const QJsonObject& document)
{
    if (sameShape(*m_model, delivery, document))
        IMF_PackageDeliveryReader::updateDeliveryNodeFromJson(m_model.data(), delivery, document);
    else
        refreshByName(*m_model, delivery, document);
}

void IMF_Controller::updateIMP(const QModelIndex& imp, const QJsonObject& delivery)
{
    if (Model::NodeTypeFromIndex(imp) != IMF_PackageMgr::IMP)
        return;
    QJsonObject document = documentOfRow(childrenOf(delivery), imp);
    // The host has written the IMP: it is committed, also where the folder could not be read.
    if (document.isEmpty())
        document = committedDocument(*m_model->FromIndex(imp));
    if (sameShape(*m_model, imp, document))
        IMF_PackageDeliveryReader::updateIMPtoDelivery(m_model, imp, document);
    else
        refreshByName(*m_model, imp, document);
}
