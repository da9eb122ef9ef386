#include "desk/services/CommitPlan.h"

#include "StratacutUI/ImfDict.h"
#include "desk/services/AudioMapping.h"
#include "desk/services/FolderName.h"
#include "desk/services/MediaLibrary.h"
#include "desk/services/SoundPlan.h"

#include <QDir>
#include <QFileInfo>

namespace desk::services
{

namespace
{
QString nameOf(const AppliedItem& item)
{
    return item.document[QLatin1String(ImfDict::Name)].toString();
}

QString quoted(const AppliedItem& item)
{
    return QStringLiteral("\"%1\"").arg(nameOf(item));
}

/// The last mention of an item: what a selection that was not committed has left before it does not count.
int lastOf(const CommitRequest& request, IMF_PackageMgr::NodeType type, const QByteArray& id)
{
    for (int i = request.items.size() - 1; i >= 0; --i) {
        if (request.items[i].type == type && (id.isEmpty() || request.items[i].id == id))
            return i;
    }
    return -1;
}

template <class Description>
void setTexts(Description& description, const AppliedItem& item)
{
    const QJsonObject metadata = item.document[QLatin1String(ImfDict::DescriptiveMetadata)].toObject();
    description.name = nameOf(item);
    description.annotation = metadata[QLatin1String(ImfDict::Annotation)].toString();
    description.issuer = metadata[QLatin1String(ImfDict::Issuer)].toString();
    description.creator = metadata[QLatin1String(ImfDict::Creator)].toString();
}

/// The document says what is mapped: only it tells groups and tracks by their names.
Status settleSound(CompositionOrder& order, const BinItem& sequence, SoundChoice choice)
{
    auto mapping = choice == SoundChoice::Mapping ? flatAudioMappingOf(order.document, sequence) : QJsonArray();
    if (!mapping)
        return mapping.error();
    order.format.mapping = *mapping;
    auto plans = planSound(sequence, order.format);
    return plans ? Status() : Status(plans.error());
}

Result<CompositionOrder> orderFor(const AppliedItem& cpl, const CommitRequest& request, const MediaLibrary& library)
{
    const QString id = cpl.document[QLatin1String(ImfDict::CPLMobID)].toString();
    const auto item = library.find(id);
    if (!item)
        return Error{{},
                     quoted(cpl),
                     {},
                     QStringLiteral("the bin no longer holds its sequence"),
                     QStringLiteral("add the media to the bin again or remove the composition")};
    const auto fail = [&](const QString& what, const QString& next) {
        return Error{item->path, quoted(cpl), {}, what, next};
    };
    if (!QFileInfo(item->path).isFile())
        return fail(QStringLiteral("the media file is not there"), QStringLiteral("bring it back or choose another"));
    if (!item->frameRate.isValid() || item->frames <= 0)
        return fail(QStringLiteral("it has no picture, and a composition needs one"),
                    QStringLiteral("choose a file with a picture"));
    CompositionOrder order;
    order.mediaPath = item->path;
    order.sequenceId = item->id;
    order.format = OutputFormat::fromJson(cpl.settings);
    order.document = cpl.document;
    order.padding = request.padding;
    Status sound = settleSound(order, *item, request.sound);
    if (!sound)
        return sound.error();
    return order;
}

Result<qint64> framesOf(const CompositionOrder& order, const MediaLibrary& library)
{
    const BinItem item = *library.find(order.sequenceId);
    return compositionFrames(outputFrames(item.frames, item.frameRate, order.format.rate), order.format.rate,
                             order.padding, item.path);
}

/// Adds the IMP at `place` and the CPLs that follow it.
Status addPackage(CommitPlan& plan, int place, const CommitRequest& request, const MediaLibrary& library)
{
    const AppliedItem& imp = request.items[place];
    PackagePlan package;
    package.package.id = QUuid::createUuid();
    setTexts(package.package, imp);
    for (int i = place + 1; i < request.items.size() && request.items[i].type == IMF_PackageMgr::CPL; ++i) {
        auto order = orderFor(request.items[i], request, library);
        if (!order)
            return order.error();
        auto frames = framesOf(*order, library);
        if (!frames)
            return frames.error();
        plan.totalFrames += *frames;
        package.compositions += *order;
    }
    if (package.compositions.isEmpty())
        return Error{{},
                     quoted(imp),
                     {},
                     QStringLiteral("the IMP has no composition"),
                     QStringLiteral("add a sequence to it or remove it")};
    plan.packages += package;
    return {};
}

Status addPackages(CommitPlan& plan, int delivery, const CommitRequest& request, const MediaLibrary& library)
{
    if (request.type == IMF_PackageMgr::IMP) {
        const int imp = lastOf(request, IMF_PackageMgr::IMP, request.id);
        return imp < 0 ? Status(Error{{},
                                      QString::fromUtf8(request.id),
                                      {},
                                      QStringLiteral("its description was not handed over"),
                                      QStringLiteral("export it again")})
                       : addPackage(plan, imp, request, library);
    }
    for (int i = delivery + 1; i < request.items.size(); ++i) {
        if (request.items[i].type != IMF_PackageMgr::IMP)
            continue;
        Status added = addPackage(plan, i, request, library);
        if (!added)
            return added;
    }
    if (!plan.packages.isEmpty())
        return {};
    return Error{{},
                 quoted(request.items[delivery]),
                 {},
                 QStringLiteral("the delivery has no IMP to be written"),
                 QStringLiteral("add an IMP with a sequence to it")};
}

Status setDelivery(CommitPlan& plan, const AppliedItem& delivery, IMF_PackageMgr::Version version)
{
    setTexts(plan.delivery, delivery);
    plan.deliveryId = delivery.id;
    plan.delivery.version =
        version == IMF_PackageMgr::Supplemental ? imf::DeliveryVersion::Supplemental : imf::DeliveryVersion::Original;
    plan.newFolder = delivery.document[QLatin1String(ImfDict::Mutable)].toBool();
    plan.folder = delivery.document[QLatin1String(ImfDict::Path)].toString();
    if (plan.folder.isEmpty())
        return Error{{}, quoted(delivery), {}, QStringLiteral("it has no folder"), QStringLiteral("choose one")};
    // Typed, it would mean another place wherever the desk is started from.
    if (QDir::isRelativePath(plan.folder))
        return Error{plan.folder,
                     quoted(delivery),
                     {},
                     QStringLiteral("this is no full path"),
                     QStringLiteral("choose the folder in which the delivery is to be made")};
    if (plan.newFolder) {
        Status name = checkFolderName(plan.delivery.name);
        if (!name)
            return name;
        plan.folder += QLatin1Char('/') + plan.delivery.name;
    }
    plan.folder = QDir::cleanPath(QDir(plan.folder).absolutePath());
    return {};
}
} // namespace

Result<CommitPlan> planCommit(const CommitRequest& request, const MediaLibrary& library)
{
    const QByteArray deliveryId = request.type == IMF_PackageMgr::Delivery ? request.id : QByteArray();
    const int delivery = lastOf(request, IMF_PackageMgr::Delivery, deliveryId);
    if (delivery < 0)
        return Error{{},
                     QString::fromUtf8(request.id),
                     {},
                     QStringLiteral("its description was not handed over"),
                     QStringLiteral("export it again")};
    CommitPlan plan;
    Status described = setDelivery(plan, request.items[delivery], request.version);
    if (!described)
        return described.error();
    Status packed = addPackages(plan, delivery, request, library);
    if (!packed)
        return packed.error();
    return plan;
}

} // namespace desk::services
