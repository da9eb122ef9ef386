#pragma once

#include "StratacutUI/IMF_PackageMgr.h"
#include "desk/services/ExportJob.h"

#include <QByteArray>
#include <QVector>

namespace desk::services
{

class MediaLibrary;

/// An item's document as it was handed over before a commit, with the output settings of a CPL.
struct AppliedItem {
    IMF_PackageMgr::NodeType type = IMF_PackageMgr::Delivery;
    QByteArray id;
    QJsonObject document;
    QJsonObject settings;
};

/// One IMP to be written.
struct PackagePlan {
    imf::NewPackage package;
    QVector<CompositionOrder> compositions;
};

/// Everything that a commit writes, taken from the documents before it starts: nothing that is edited later changes it.
struct CommitPlan {
    QByteArray deliveryId;
    /// Absolute: the delivery's own folder.
    QString folder;
    /// Whether the folder is still to be made.
    bool newFolder = true;
    imf::DeliveryDescription delivery;
    QVector<PackagePlan> packages;
    qint64 totalFrames = 0;
};

/// What decides about a composition's sound.
enum class SoundChoice {
    /// The audio mapping; "Audio Mix" where it has no rows.
    Mapping,
    AudioMix
};

/// What a plan is made from.
struct CommitRequest {
    /// The item to commit: a delivery or an IMP.
    IMF_PackageMgr::NodeType type = IMF_PackageMgr::Delivery;
    QByteArray id;
    IMF_PackageMgr::Version version = IMF_PackageMgr::None;
    /// In the order in which they were handed over: each delivery or IMP before what is below it.
    QVector<AppliedItem> items;
    Padding padding = Padding::Refuse;
    SoundChoice sound = SoundChoice::Mapping;
};

/// Checks all that can be checked before any work starts. Each failure names the item and the next step: nothing to
/// write, an IMP without composition, a composition without sequence, media that is gone or has no picture, a length
/// that no whole number of samples fits, a name that no folder can have.
Result<CommitPlan> planCommit(const CommitRequest& request, const MediaLibrary& library);

} // namespace desk::services
