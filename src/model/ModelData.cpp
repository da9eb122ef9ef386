// What the item model answers through its roles.

#include "StratacutUI/IMF_PackageMgrQtModel.h"

#include "NodeAccess.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/ImfDict.h"
#include "StratacutUI/MXE_Bridge.h"
#include "ViewDeckQt/NineSlice.h"
#include "ViewDeckQt/PaletteManager.h"

#include <QGuiApplication>
#include <QImage>
#include <QJsonDocument>
#include <QPalette>

using namespace NodeAccess;

namespace
{
constexpr char imageGroup[] = "iconsV2";

enum StatusImage { CommittedImage, UncommittedImage, UnsetImage };

constexpr std::array<int, 3> statusImageIds = {3, 4, 5};

QPixmap recoloured(const char* name, const QColor& color)
{
    QImage image = NineSlice::GetImage(imageGroup, name).toImage();
    NineSlice::ChangeFirstIconColor(image, 0, color);
    return QPixmap::fromImage(image);
}

struct IconImage {
    IMF_PackageMgr::NodeType type;
    QIcon::State state;
    const char* name;
};

constexpr IconImage iconImages[] = {
    {IMF_PackageMgr::Delivery, QIcon::On, "General/folder_open.png"},
    {IMF_PackageMgr::Delivery, QIcon::Off, "General/folder_closed.png"},
    {IMF_PackageMgr::IMP, QIcon::On, "General/imf_imp.png"},
    {IMF_PackageMgr::CPL, QIcon::On, "BinMedia/sequence.png"},
};

const IMF_Deliverable* containingDeliverable(const IMF_Node& node)
{
    if (const IMF_Deliverable* found = deliverable(node))
        return found;
    const std::shared_ptr<IMF_Node> parent = node.getParent();
    return parent ? containingDeliverable(*parent) : nullptr;
}

QVariant version(const IMF_Node& node)
{
    const IMF_Deliverable* container = containingDeliverable(node);
    return int(container ? container->version() : IMF_PackageMgr::None);
}

QVariant commitSettings(const IMF_Node& node)
{
    const IMF_CPL* payload = cpl(node);
    return payload ? QVariant(QJsonDocument::fromJson(payload->settings().toUtf8()).object()) : QVariant();
}

QVariant contentTitle(const IMF_Node& node)
{
    const IMF_CPL* payload = cpl(node);
    return payload ? QVariant(payload->contentTitle()) : QVariant();
}

/// The roles that a node answers by itself.
QVariant nodeRole(const IMF_Node& node, int role)
{
    switch (role) {
    case IMF_PackageMgrQtModel::NameRole:
        return name(node);
    case IMF_PackageMgrQtModel::MetadataRole:
        return document(node);
    case IMF_PackageMgrQtModel::CommitSettingsRole:
        return commitSettings(node);
    case IMF_PackageMgrQtModel::StatusRole:
        return int(*status(node));
    case IMF_PackageMgrQtModel::NodeTypeRole:
        return int(type(node));
    case IMF_PackageMgrQtModel::VersionRole:
        return version(node);
    case IMF_PackageMgrQtModel::ValidRole:
        return isValid(node);
    case IMF_PackageMgrQtModel::IssuerRole:
        return property(node, ImfDict::Issuer);
    case IMF_PackageMgrQtModel::CreatorRole:
        return property(node, ImfDict::Creator);
    case IMF_PackageMgrQtModel::ContentTitleRole:
        return contentTitle(node);
    default:
        return {};
    }
}
} // namespace

QVariant IMF_PackageMgrQtModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const IMF_Node& node = *FromInternalPointer(index.internalPointer());
    switch (role) {
    case Qt::DisplayRole:
        return index.column() == 0 ? QVariant(displayName(node)) : QVariant();
    case Qt::DecorationRole:
        return decoration(node, index.column());
    case Qt::EditRole:
        return node.data(index.column());
    case ComponentIdRole:
        return getComponendID(index);
    case PathRole:
        return getIMFPath(index);
    case BurnableRole:
        return IsBurnable(index);
    case AudioGroupingRole:
        return audioGrouping(index);
    case TrackGroupsRole:
        return trackGroups(index);
    default:
        return nodeRole(node, role);
    }
}

QVariant IMF_PackageMgrQtModel::decoration(const IMF_Node& node, int column) const
{
    if (column == 0)
        return m_icons.at(type(node));
    const std::optional<IMF_PackageMgr::Status> known = status(node);
    if (!known)
        return m_statusImages[UnsetImage];
    switch (*known) {
    case IMF_PackageMgr::Committed:
        return m_statusImages[CommittedImage];
    case IMF_PackageMgr::Uncommitted:
        return m_statusImages[UncommittedImage];
    }
    return QPixmap();
}

void IMF_PackageMgrQtModel::updateIcons()
{
    const QColor normal = Palette::PaletteManager::Instance().color(QStringLiteral("IconFirstColor"));
    const QColor selected = QGuiApplication::palette().color(QPalette::Active, QPalette::HighlightedText);
    m_icons.clear();
    for (const IconImage& image : iconImages) {
        QIcon& icon = m_icons[image.type];
        icon.addPixmap(recoloured(image.name, normal), QIcon::Normal, image.state);
        icon.addPixmap(recoloured(image.name, selected), QIcon::Selected, image.state);
    }
    for (std::size_t i = 0; i < statusImageIds.size(); ++i)
        m_statusImages[i] = NineSlice::GetImage(imageGroup, NineSlice::GetResourceIDString(statusImageIds[i]));
}

QVariant IMF_PackageMgrQtModel::audioGrouping(const QModelIndex& index) const
{
    const IMF_CPL* payload = cpl(*FromInternalPointer(index.internalPointer()));
    if (!payload)
        return {};
    QAbstractItemModel* model = payload->getAudioGroupingModel();
    MXE_Bridge* engine = IMF_MXE_bridge::Instance();
    if (model && !engine->isAudioGroupingModelPopulated(model))
        engine->fillAudioGroupingModel(model, payload->jsonObject().value(ImfDict::CPLMobID).toString());
    return QVariant::fromValue(model);
}

QVariant IMF_PackageMgrQtModel::trackGroups(const QModelIndex& index) const
{
    const auto found = m_trackGroups.constFind(getComponendID(index));
    return found == m_trackGroups.constEnd() ? QVariant() : QVariant(*found);
}

QByteArray IMF_PackageMgrQtModel::getComponendID(const QModelIndex& index) const
{
    return index.isValid() ? getComponendID(FromIndex(index)) : QByteArray();
}

QByteArray IMF_PackageMgrQtModel::getComponendID(const std::shared_ptr<IMF_Node>& node) const
{
    if (!node)
        return {};
    if (const IMF_Deliverable* payload = deliverable(std::as_const(*node)))
        return payload->compID();
    return boost::apply_visitor(IMF_Utils::GetIdVisitor(), node->value()).toUtf8();
}

QString IMF_PackageMgrQtModel::getIMFPath(const QModelIndex& index) const
{
    const IMF_Deliverable* payload =
        index.isValid() ? deliverable(std::as_const(*FromInternalPointer(index.internalPointer()))) : nullptr;
    if (!payload)
        return {};
    const QString path = payload->path();
    if (payload->status() == IMF_PackageMgr::Committed || path.isEmpty())
        return path;
    return path + (path.endsWith(QLatin1Char('/')) ? QString() : QStringLiteral("/")) + payload->name();
}

QVariant IMF_PackageMgrQtModel::IsBurnable(const QModelIndex& index) const
{
    if (!index.isValid())
        return false;
    const IMF_Node& node = *FromInternalPointer(index.internalPointer());
    const std::optional<IMF_PackageMgr::Status> known = status(node);
    return type(node) != IMF_PackageMgr::CPL && known && *known != IMF_PackageMgr::Committed && hasUncommitted(node);
}

bool IMF_PackageMgrQtModel::IsDroppingOnCommitedItem(int row, int column, const QModelIndex& parent) const
{
    if (!parent.isValid())
        return false;
    const QModelIndex below = index(row, column, parent);
    const QModelIndex target = below.isValid() ? below : parent;
    const IMF_Node& node = *FromInternalPointer(target.internalPointer());
    return type(node) != IMF_PackageMgr::Delivery && status(node) == IMF_PackageMgr::Committed;
}

QJsonObject IMF_PackageMgrQtModel::serializeIndexToJson(const QModelIndex& index) const
{
    if (!index.isValid())
        return {};
    const IMF_Node& node = *FromInternalPointer(index.internalPointer());
    QJsonObject json = document(node);
    json[ImfDict::Name] = name(node);
    json[ImfDict::Mutable] = status(node) == IMF_PackageMgr::Uncommitted;
    if (const IMF_Deliverable* payload = deliverable(node)) {
        if (payload->version() != IMF_PackageMgr::None)
            json[ImfDict::Original] = payload->version() == IMF_PackageMgr::Original;
    }
    if (const IMF_CPL* payload = cpl(node)) {
        const CPL_TokenInfo& info = payload->tokenInfo();
        json[ImfDict::CPLMobID] = info.mobID;
        json[ImfDict::CPLProjectName] = info.projectName;
        json[ImfDict::CPLBin] = info.bin;
        json[ImfDict::CPLFPSValue] = info.frameRate;
        json[ImfDict::CPLToken] = QString::fromStdString(info.token);
        json[ImfDict::CPLGroups] = m_trackGroups.value(getComponendID(index));
    }
    return json;
}
