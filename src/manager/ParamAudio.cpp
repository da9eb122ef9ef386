// The audio tools of the parameters view: the groups of a sequence's tracks and the mapping made from them.

#include "StratacutUI/IMF_PackageParamsView.h"

#include "ParamIds.h"
#include "ParamValues.h"

#include "StratacutUI/AudioMappingWidget.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"
#include "audio/AudioGroups.h"
#include "audio/IMFAudioGroupDialog.h"
#include "audio/IMF_TrackGroupingManager.h"

#include <QJsonObject>
#include <QPointer>
#include <QSignalBlocker>

using Model = IMF_PackageMgrQtModel;

namespace
{
QAbstractItemModel* trackModelOf(const QModelIndex& cpl)
{
    return cpl.data(Model::AudioGroupingRole).value<QAbstractItemModel*>();
}

QJsonArray groupsOf(const QModelIndex& cpl)
{
    return cpl.data(Model::TrackGroupsRole).toJsonArray();
}
} // namespace

void IMF_PackageParamsView::updateAudioMapping(ViewDeckQt::AbstractParamWidget* widget)
{
    auto* mapping = qobject_cast<AudioMappingWidget*>(widget);
    if (!mapping)
        return;
    // Without tracks, too: what the item shown before could choose from is none of this one's business. What comes
    // back from the mapping is checked: groups that saved state brings in another shape are put right here.
    const QJsonArray groups = AudioGroups::toJson(AudioGroups::read(groupsOf(m_current)).groups);
    mapping->setTrackGroupingManager(std::make_unique<IMF_TrackGroupingManager>(trackModelOf(m_current), groups));
}

void IMF_PackageParamsView::showMapping(AudioMappingWidget& mapping, const QJsonObject& document)
{
    updateAudioMapping(&mapping);
    // A mapping without rows reports the row that it makes up. That is a choice only where there is one.
    const bool isChoice = document.value(QLatin1String(ImfDict::Mutable)).toBool() &&
                          IMF_TrackGroupingManager::hasSequence(trackModelOf(m_current));
    const QSignalBlocker blocker(isChoice ? nullptr : &mapping);
    ParamValues::show(mapping, id2jsonKey(mapping.getId()), document);
}

void IMF_PackageParamsView::openAudioTrackGrouping()
{
    const QPersistentModelIndex cpl = m_current;
    QAbstractItemModel* tracks = trackModelOf(cpl);
    if (!tracks)
        return;
    // On the heap: the view may be destroyed while the dialog runs, and takes the dialog with it.
    const QPointer<IMFAudioGroupDialog> dialog = new IMFAudioGroupDialog(this, tracks, groupsOf(cpl));
    const int answer = dialog->exec();
    if (!dialog)
        return;
    const QJsonArray groups = dialog->profiles();
    delete dialog;
    if (answer != QDialog::Accepted || !cpl.isValid())
        return;
    m_model->setData(cpl, groups, Model::TrackGroupsRole);
    // The stored mapping holds the groups that it is made from.
    const auto* mapping = findChild<AudioMappingWidget*>();
    if (mapping && cpl == m_current)
        onValueChanged(mapping->getId(), mapping->getValue());
}
