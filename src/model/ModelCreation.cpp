// New IMPs and CPLs.

#include "StratacutUI/IMF_PackageMgrQtModel.h"

#include "NodeAccess.h"

#include "NvCore/NvText.h"
#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/IMF_PackageDeliveryReader.h"
#include "StratacutUI/ImfDict.h"
#include "StratacutUI/MXE_Bridge.h"
#include "ViewDeckQt/DefaultName.h"

#include <QPersistentModelIndex>
#include <QPointer>

namespace
{
QJsonObject defaultImp(const QString& name)
{
    QJsonObject document = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::IMP);
    document[ImfDict::Name] = name;
    QJsonObject metadata = document[ImfDict::DescriptiveMetadata].toObject();
    metadata[ImfDict::Creator] = IMF_MXE_bridge::Instance()->creator();
    document[ImfDict::DescriptiveMetadata] = metadata;
    return document;
}

QJsonObject namedCpl(const QString& name)
{
    QJsonObject document = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::CPL);
    document[ImfDict::Name] = name;
    QJsonObject metadata = document[ImfDict::DescriptiveMetadata].toObject();
    metadata[ImfDict::Creator] = IMF_MXE_bridge::Instance()->creator();
    if (metadata.contains(ImfDict::ContentTitle))
        metadata[ImfDict::ContentTitle] = name;
    document[ImfDict::DescriptiveMetadata] = metadata;
    return document;
}

struct NewCpl {
    QJsonObject document;
    QByteArray token;
};

NewCpl cplOfSequence(const QString& mobId)
{
    MXE_Bridge* engine = IMF_MXE_bridge::Instance();
    NewCpl cpl{namedCpl(engine->sequenceName(mobId)), {}};
    std::string frameRate;
    std::string token;
    QString project;
    QString bin;
    engine->sequenceFrameRate(frameRate, mobId);
    engine->sequenceToken(token, mobId);
    engine->projectName(project);
    engine->sequenceBin(bin, mobId);
    cpl.document[ImfDict::CPLMobID] = mobId;
    cpl.document[ImfDict::CPLProjectName] = project;
    cpl.document[ImfDict::CPLBin] = bin;
    cpl.document[ImfDict::CPLToken] = QString::fromStdString(token);
    cpl.document[ImfDict::CPLFPSValue] = QString::fromStdString(frameRate);
    cpl.token = QByteArray::fromStdString(token);
    return cpl;
}
} // namespace

void IMF_PackageMgrQtModel::append(const std::shared_ptr<IMF_Node>& parent, const std::shared_ptr<IMF_Node>& node)
{
    const QModelIndex row = indexOf(parent.get());
    if (row.isValid() && !m_dropAnnouncements) {
        push_back(row, node);
        return;
    }
    parent->push_back(node);
    m_justAppended = node;
}

/// A host may answer with a message box: it must not open while rows are being inserted.
void IMF_PackageMgrQtModel::announce(const std::shared_ptr<IMF_Node>& item, Announcement announcement)
{
    if (m_dropAnnouncements)
        m_dropAnnouncements->emplace_back(item, std::move(announcement));
    else
        announcement(getComponendID(item));
}

std::shared_ptr<IMF_Node> IMF_PackageMgrQtModel::addIMPNode(const std::shared_ptr<IMF_Node>& deliverable)
{
    QStringList taken;
    for (const std::shared_ptr<IMF_Node>& child : *deliverable)
        taken.append(NodeAccess::displayName(*child));
    QString name = stx_func("Untitled IMP");
    ViewDeckQt::generateDefaultName(name, taken);
    const std::shared_ptr<IMF_Node> imp = IMF_PackageDeliveryReader::impFromJson(defaultImp(name), deliverable);
    append(deliverable, imp);
    announce(imp, [this](const QByteArray& componentId) { emit notifyNewIMPCreated(componentId); });
    return imp;
}

void IMF_PackageMgrQtModel::addCPLNode(const QString& mobId, const std::shared_ptr<IMF_Node>& imp)
{
    const NewCpl source = cplOfSequence(mobId);
    const std::shared_ptr<IMF_Node> cpl = IMF_PackageDeliveryReader::cplFromJson(source.document, imp);
    append(imp, cpl);
    const QByteArray id = getComponendID(cpl);
    // Two CPLs of one name share an identifier, and so their groups: the second must not empty those of the first.
    if (!m_trackGroups.contains(id) || !isIdentifierShared(cpl))
        addTrackGroups(id, {});
    registerTrackModel(cpl, mobId);
    announce(cpl, [this, token = source.token](const QByteArray& componentId) {
        emit notifyNewCPLCreated(componentId, token);
    });
}

void IMF_PackageMgrQtModel::createCPLFromMobs(const QStringList& mobIds, const QModelIndex& impIndex)
{
    if (!impIndex.isValid() || mobIds.isEmpty())
        return;
    // The host's refusals are shown to the user: the IMP or the model may go behind a message.
    const QPointer<IMF_PackageMgrQtModel> self(this);
    std::shared_ptr<IMF_Node> imp = FromIndex(impIndex);
    if (NodeAccess::type(*imp) == IMF_PackageMgr::Delivery)
        imp = addIMPNode(imp);
    if (!self || NodeAccess::type(*imp) != IMF_PackageMgr::IMP)
        return;
    const QPersistentModelIndex row = indexOf(imp.get());
    for (const QString& mobId : mobIds) {
        if (self && row.isValid())
            addCPLNode(mobId, imp);
    }
}
