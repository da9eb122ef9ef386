#include "desk/app/SoundDefaults.h"

#include "NvCore/Toggles.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"
#include "desk/services/DefaultMapping.h"

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;

namespace
{
constexpr char mappingToggle[] = "/Stratacut/IMFMultipleAudioMix";

bool isMapped(const QJsonObject& document)
{
    const QJsonObject audio = document[QLatin1String(ImfDict::Audio)].toObject();
    const QJsonObject mix = audio[QLatin1String(ImfDict::MultipleAudioMix)].toObject();
    return !mix[QLatin1String(ImfDict::AudioMapping)].toArray().isEmpty();
}

void mapSound(Model& model, const QModelIndex& cpl, const services::MediaLibrary& library)
{
    if (Model::StatusFromIndex(cpl) == IMF_PackageMgr::Committed)
        return;
    const QJsonObject document = Model::MetadataJsonFromIndex(cpl);
    if (isMapped(document))
        return;
    const auto sequence = library.find(document[QLatin1String(ImfDict::CPLMobID)].toString());
    if (!sequence)
        return;
    const auto format = services::OutputFormat::fromJson(Model::CommitSettingsJsonFromIndex(cpl));
    const auto mapping = services::defaultMapping(*sequence, format, cpl.data(Model::TrackGroupsRole).toJsonArray());
    if (!mapping)
        return;
    model.setData(cpl, (*mapping)[QLatin1String(ImfDict::TrackGroups)].toArray(), Model::TrackGroupsRole);
    model.setData(cpl, *mapping, Model::MultiMixRole);
}

void mapRows(Model& model, const services::MediaLibrary& library, const QModelIndex& parent, int first, int last)
{
    for (int row = first; row <= last && row < model.rowCount(parent); ++row) {
        const QModelIndex item = model.index(row, 0, parent);
        if (Model::NodeTypeFromIndex(item) == IMF_PackageMgr::CPL)
            mapSound(model, item, library);
        else
            mapRows(model, library, item, 0, model.rowCount(item) - 1);
    }
}
} // namespace

services::SoundChoice soundChoice()
{
    for (const char* toggle : {mappingToggle, "/Stratacut/IMFMCAMetadata"})
        TGL_SetDefault(toggle, true);
    return TGL_GetToggle(mappingToggle) ? services::SoundChoice::Mapping : services::SoundChoice::AudioMix;
}

Status checkSoundIsMapped()
{
    if (soundChoice() == services::SoundChoice::Mapping)
        return {};
    return Error{{},
                 {},
                 {},
                 QStringLiteral("groups and the audio mapping are turned off"),
                 QStringLiteral("set \"Audio Mix\", or turn the toggle %1 on").arg(QLatin1String(mappingToggle))};
}

void mapUnmappedSound(IMF_PackageMgrQtModel& model, const services::MediaLibrary& library, const QModelIndex& parent,
                      int first, int last)
{
    if (soundChoice() == services::SoundChoice::Mapping)
        mapRows(model, library, parent, first, last);
}

} // namespace desk::app
