#include "desk/app/SoundDefaults.h"

#include "NvCore/Toggles.h"
#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"
#include "desk/services/DefaultMapping.h"

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;

namespace
{
constexpr char mappingToggle[] = "/Stratacut/IMFMultipleAudioMix";
constexpr char metadataToggle[] = "/Stratacut/IMFMCAMetadata";

void setDefaults()
{
    for (const char* toggle : {mappingToggle, metadataToggle})
        TGL_SetDefault(toggle, true);
}

bool isMapped(const QJsonObject& document)
{
    const QJsonObject audio = document[QLatin1String(ImfDict::Audio)].toObject();
    const QJsonObject mix = audio[QLatin1String(ImfDict::MultipleAudioMix)].toObject();
    return !mix[QLatin1String(ImfDict::AudioMapping)].toArray().isEmpty();
}

/// Saved state may bring groups of any shape; a mapping with one of them would be read as none.
QJsonArray wellFormed(const QJsonArray& groups)
{
    QJsonArray kept;
    for (const QJsonValue& group : groups) {
        if (JSON::VerifyAudioGroups({group}))
            kept += group;
    }
    return kept;
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
    QJsonArray groups = cpl.data(Model::TrackGroupsRole).toJsonArray();
    const auto mapping = services::defaultMapping(*sequence, format, wellFormed(groups));
    if (!mapping)
        return;
    const QJsonArray mapped = (*mapping)[QLatin1String(ImfDict::TrackGroups)].toArray();
    for (const QJsonValue& group : mapped) {
        if (!groups.contains(group))
            groups += group;
    }
    model.setData(cpl, groups, Model::TrackGroupsRole);
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
    setDefaults();
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

bool hasTrackMetadata()
{
    setDefaults();
    return TGL_GetToggle(metadataToggle);
}

void mapUnmappedSound(IMF_PackageMgrQtModel& model, const services::MediaLibrary& library, const QModelIndex& parent,
                      int first, int last)
{
    if (soundChoice() == services::SoundChoice::Mapping)
        mapRows(model, library, parent, first, last);
}

CompositionKey compositionKey(const QJsonObject& document)
{
    return {document[QLatin1String(ImfDict::CPLMobID)].toString(), document[QLatin1String(ImfDict::Name)].toString()};
}

QMap<CompositionKey, QString> unreadableMappings(const QJsonArray& documents, const QString& file)
{
    QMap<CompositionKey, QString> told;
    for (const QJsonValue& value : documents) {
        const QJsonObject document = value.toObject();
        const QJsonValue mix = document[QLatin1String(ImfDict::Audio)][QLatin1String(ImfDict::MultipleAudioMix)];
        const bool burned = !document[QLatin1String(ImfDict::Mutable)].toBool();
        if (!mix.isUndefined() && !JSON::VerifyMultiMix(mix.toObject(), burned))
            told[compositionKey(document)] = Error{file,
                                                   QStringLiteral("\"%1\"").arg(compositionKey(document).second),
                                                   {},
                                                   QStringLiteral("its audio mapping cannot be read and starts anew"),
                                                   QStringLiteral("map its tracks again")}
                                                 .sentence();
        const auto inner = unreadableMappings(document[QLatin1String(ImfDict::Children)].toArray(), file);
        for (auto one = inner.begin(); one != inner.end(); ++one)
            told[one.key()] = one.value();
    }
    return told;
}

} // namespace desk::app
