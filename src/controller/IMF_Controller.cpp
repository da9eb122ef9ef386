#include "StratacutUI/IMF_Controller.h"

#include "CommitMailbox.h"
#include "Messages.h"
#include "MissingAssets.h"

#include "NvCore/NvText.h"
#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_DataModelSerializer.h"
#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/IMF_Node.h"
#include "StratacutUI/IMF_PackageDeliveryReader.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ISettingsStorage.h"
#include "StratacutUI/ImfDict.h"
#include "StratacutUI/MXE_Bridge.h"

#include <QJsonDocument>
#include <QSet>

#include <vector>

namespace
{
using Model = IMF_PackageMgrQtModel;

constexpr char visitedKey[] = "VISITED_IMF_SETTINGS_KEY";
constexpr char unburnedKey[] = "UNBURNED_ITEMS_KEY";

QString compactText(const QJsonObject& json)
{
    return QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

QSet<QString> foldersOf(const Model& model)
{
    QSet<QString> folders;
    model.deliveriesVisitor([&folders](const IMF_Deliverable& delivery) { folders.insert(delivery.path()); });
    return folders;
}

QModelIndexList rowsOf(const Model& model, const QModelIndex& parent)
{
    QModelIndexList rows;
    for (int row = 0; row < model.rowCount(parent); ++row)
        rows.append(model.index(row, 0, parent));
    return rows;
}

bool hasCommittedChild(const Model& model, const QModelIndex& index)
{
    const QModelIndexList children = rowsOf(model, index);
    for (const QModelIndex& child : children) {
        if (Model::StatusFromIndex(child) == IMF_PackageMgr::Committed)
            return true;
    }
    return false;
}

/// Whether the deliverable can be read from its folder at the next start: it was committed, or one of its IMPs was.
bool existsOnDisk(const Model& model, const QModelIndex& delivery)
{
    return Model::StatusFromIndex(delivery) == IMF_PackageMgr::Committed || hasCommittedChild(model, delivery);
}

QJsonObject newDeliveryDocument(IMF_PackageMgr::Version version)
{
    QJsonObject document = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::Delivery);
    document[ImfDict::Original] = version == IMF_PackageMgr::Original;
    QJsonObject metadata = document[ImfDict::DescriptiveMetadata].toObject();
    metadata[ImfDict::Creator] = IMF_MXE_bridge::Instance()->creator();
    document[ImfDict::DescriptiveMetadata] = metadata;
    return document;
}
} // namespace

IMF_Controller::IMF_Controller(IMF_PackageMgrQtModel* model, IMFO_Bridge* bridge,
                               std::unique_ptr<ISettingsStorage> settings, QObject* parent)
    : QObject(parent),
      m_bridge(bridge),
      m_settings(std::move(settings)),
      m_model(model),
      m_mailbox(std::make_shared<Mailbox>(
          this, [this](quint64 ticket, const IMFO_Bridge::Error& error) { finishCommit(ticket, error); }))
{
    setObjectName(QStringLiteral("IMF_Controller"));
    // Under the name that the slots' signatures use, so that they can be called by name over a queue.
    qRegisterMetaType<IMFO_Bridge::Error>("IMFO_Bridge::Error");
    loadModelFromSettings();
    loadUncommitedModelState();
    if (!m_model)
        return;
    connect(m_model, &IMF_PackageMgrQtModel::notifyNewIMPCreated, this, &IMF_Controller::NewIMP, Qt::DirectConnection);
    connect(m_model, &IMF_PackageMgrQtModel::notifyNewCPLCreated, this, &IMF_Controller::NewCPL, Qt::DirectConnection);
}

IMF_Controller::~IMF_Controller()
{
    m_mailbox->close();
}

void IMF_Controller::setSettings(std::unique_ptr<ISettingsStorage> settings)
{
    m_settings = std::move(settings);
}

IMFO_ItemInfo IMF_Controller::itemInfo(const QModelIndex& index)
{
    if (!index.isValid())
        return {};
    return {Model::ComponentIDFromIndex(index), compactText(Model::MetadataJsonFromIndex(index)),
            compactText(Model::CommitSettingsJsonFromIndex(index)), Model::NodeTypeFromIndex(index),
            Model::VersionFromIndex(index)};
}

void IMF_Controller::loadModelFromSettings()
{
    const boost::optional<QJsonArray> folders = m_settings ? m_settings->get(visitedKey) : boost::none;
    if (!folders)
        return;
    // Asking the tree for each folder would take a time that grows with the square of their number.
    QSet<QString> loaded;
    int rows = -1;
    for (const QJsonValue& folder : *folders) {
        // The application may end, and the tree change, while the user reads why a folder was not loaded.
        if (!m_model)
            return;
        if (m_model->rowCount() != rows) {
            loaded = foldersOf(*m_model);
            rows = m_model->rowCount();
        }
        if (loaded.contains(folder.toString()))
            continue;
        addDeliveryFromFolder(folder.toString(), nullptr);
        if (m_model && m_model->rowCount() == rows + 1)
            loaded.insert(m_model->getIMFPath(m_model->index(rows++, 0)));
    }
}

void IMF_Controller::loadUncommitedModelState()
{
    const boost::optional<QJsonArray> state = m_settings ? m_settings->get(unburnedKey) : boost::none;
    if (state && m_model)
        IMF_DataModelSerializer(m_model, m_bridge).loadUnCommitedState(*state);
}

void IMF_Controller::onSaveSettings()
{
    if (!m_settings)
        return;
    QJsonArray folders;
    const QModelIndexList deliveries = rowsOf(*m_model, {});
    for (const QModelIndex& delivery : deliveries) {
        if (existsOnDisk(*m_model, delivery))
            folders.append(m_model->getIMFPath(delivery));
    }
    m_settings->set(visitedKey, folders);
    m_settings->set(unburnedKey, IMF_DataModelSerializer(m_model, m_bridge).saveUnCommitedState());
}

bool IMF_Controller::NewIMP(const QByteArray& impCompID)
{
    const QJsonObject document = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::IMP);
    IMFO_Bridge::Error error;
    m_bridge->createIMP(error, impCompID, compactText(document[ImfDict::DescriptiveMetadata].toObject()).toUtf8());
    return Messages::showIfFailed(error);
}

bool IMF_Controller::NewCPL(const QByteArray& cplCompID, const QByteArray& token)
{
    IMFO_Bridge::Error error;
    m_bridge->createCPL(error, cplCompID, token, {});
    return Messages::showIfFailed(error);
}

void IMF_Controller::loadNewDelivery(const QString& path, bool* hasMissing, bool refresh)
{
    QModelIndex index = m_model->getDeliveryModelIndex(path);
    // Of several in one folder, what is on disk is meant, also right after another was added.
    if (index.isValid() && Model::StatusFromIndex(index) != IMF_PackageMgr::Committed) {
        const QModelIndex committed = m_model->getCommittedDeliveryModelIndex(path);
        index = committed.isValid() ? committed : index;
    }
    if (!index.isValid())
        return addDeliveryFromFolder(path, hasMissing);
    if (refresh)
        index = onRefreshIMFItem(index);
    if (!hasMissing || !index.isValid())
        return;
    IMFO_Bridge::Error error;
    QJsonObject info;
    m_bridge->getDeliveryInfo(error, Model::ComponentIDFromIndex(index), info, true);
    if (!Messages::showIfFailed(error))
        *hasMissing = namesMissingAssets(info);
}

void IMF_Controller::addDeliveryFromFolder(const QString& path, bool* hasMissing)
{
    IMFO_Bridge::Error error;
    std::pair<QByteArray, QJsonObject> read;
    m_bridge->readDelivery(error, path, read);
    if (Messages::showIfFailed(error))
        return;
    read.second[ImfDict::Mutable] = false;
    addDeliveryToModel(IMF_PackageDeliveryReader::getDeliveryNodeFromJson(read.second, read.first));
    if (hasMissing && namesMissingAssets(read.second))
        *hasMissing = true;
}

void IMF_Controller::addDeliveryToModel(const std::shared_ptr<IMF_Node>& node)
{
    m_model->push_back(m_model->rootIndex(), node);
    emit newDeliveryAdded(m_model->index(m_model->rowCount() - 1, 0));
}

void IMF_Controller::onNewIMFDelivery(const QString& name, IMF_PackageMgr::Version version)
{
    IMFO_Bridge::Error error;
    QString path;
    QString componentId;
    m_bridge->createDelivery(error, name, path, version == IMF_PackageMgr::Original, componentId);
    if (Messages::showIfFailed(error))
        return;
    const std::shared_ptr<IMF_Node> node = IMF_Node::Create();
    node->value() = IMF_Deliverable(node, path, name, componentId.toUtf8(), newDeliveryDocument(version));
    boost::get<IMF_Deliverable>(node->value()).setVersion(version);
    addDeliveryToModel(node);
}

QModelIndex IMF_Controller::onRefreshIMFItem(const QModelIndex& imfIndex)
{
    // A deliverable is read as a whole: what is below it is refreshed with it.
    QPersistentModelIndex delivery = imfIndex;
    while (delivery.parent().isValid())
        delivery = delivery.parent();
    if (!delivery.isValid())
        return {};
    IMFO_Bridge::Error error;
    std::pair<QByteArray, QJsonObject> read;
    m_bridge->readDelivery(error, m_model->getIMFPath(delivery), read);
    if (Messages::showIfFailed(error))
        return {};
    read.second[ImfDict::Mutable] = false;
    const QPersistentModelIndex fresh =
        m_model->replace(delivery, IMF_PackageDeliveryReader::getDeliveryNodeFromJson(read.second, read.first));
    if (fresh.isValid())
        emit newDeliveryAdded(fresh);
    return fresh;
}

void IMF_Controller::refreshAll()
{
    // Nodes, not persistent indexes: each replaced row would have to carry all of those along.
    std::vector<std::weak_ptr<IMF_Node>> committed;
    const QModelIndexList deliveries = rowsOf(*m_model, {});
    for (const QModelIndex& delivery : deliveries) {
        if (Model::StatusFromIndex(delivery) == IMF_PackageMgr::Committed)
            committed.push_back(m_model->FromIndex(delivery));
    }
    const QPointer<IMF_Controller> self(this);
    for (const std::weak_ptr<IMF_Node>& delivery : committed) {
        const std::shared_ptr<IMF_Node> node = self ? delivery.lock() : nullptr;
        if (node)
            onRefreshIMFItem(m_model->indexOf(node.get()));
    }
}

bool IMF_Controller::onRename(const QModelIndex& index, const QString& name, QString& newCmpId)
{
    IMFO_Bridge::Error error;
    m_bridge->renameItem(error, itemInfo(index), name, newCmpId);
    return !Messages::showIfFailed(error);
}

void IMF_Controller::onRemoveIMFItem(const QModelIndex& imfIndex)
{
    if (!imfIndex.isValid())
        return;
    const QPersistentModelIndex row = imfIndex.siblingAtColumn(0);
    const QString shown = row.data().toString();
    if (Model::StatusFromIndex(row) == IMF_PackageMgr::Committed &&
        Model::NodeTypeFromIndex(row) != IMF_PackageMgr::Delivery) {
        Messages::show(QMessageBox::Warning, stx_func("Can't remove committed element: ") + shown);
        return;
    }
    IMFO_Bridge::Error error;
    m_bridge->removeItem(error, Model::ComponentIDFromIndex(row));
    if (error.isError() && !error.message().isEmpty()) {
        Messages::show(QMessageBox::Critical,
                       stx_func("Failed to remove : ") + error.message() + QLatin1Char(' ') + shown);
        return;
    }
    m_model->removeTracksData(row);
    m_model->removeIndex(row);
}
