#include "desk/app/ItemSettings.h"

#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"
#include "desk/app/SoundDefaults.h"
#include "desk/services/OutputFormat.h"

#include <QJsonDocument>

#include <algorithm>

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;

namespace
{
Error wrong(const Setting& setting, const QString& what, const QString& next)
{
    return Error{{}, setting.first, {}, what, next};
}

int placeOf(const QString& key)
{
    const int place = services::OutputFormat::keys().indexOf(key);
    return place < 0 ? services::OutputFormat::keys().size() : place;
}

QJsonValue parameterOf(const QModelIndex& cpl, const QString& key)
{
    const QJsonObject document = Model::MetadataJsonFromIndex(cpl);
    for (const char* section : {ImfDict::Video, ImfDict::Audio}) {
        const QJsonValue parameter = document[QLatin1String(section)].toObject()[key];
        if (!parameter.toObject()[QLatin1String(ImfDict::values)].toArray().isEmpty())
            return parameter;
    }
    return QJsonValue::Undefined;
}

Error notOffered(const Setting& setting, const QStringList& choices)
{
    return wrong(setting, QStringLiteral("the output does not offer \"%1\"").arg(setting.second),
                 QStringLiteral("choose one of \"%1\"").arg(choices.join(QStringLiteral("\", \""))));
}

QStringList keysOf(const QModelIndex& item)
{
    QStringList keys =
        Model::MetadataJsonFromIndex(item)[QLatin1String(ImfDict::DescriptiveMetadata)].toObject().keys();
    keys.removeAll(QLatin1String(ImfDict::Creator));
    if (Model::NodeTypeFromIndex(item) == IMF_PackageMgr::CPL)
        keys = services::OutputFormat::keys() + QStringList{QLatin1String(ImfDict::MultipleAudioMix)} + keys;
    return keys;
}

void writeIssuer(Model& model, QModelIndex item, const Setting& setting)
{
    do {
        model.setData(item, QVariant::fromValue(setting), Model::IssuerRole);
        item = item.parent();
    } while (item.isValid() && item.data(Model::IssuerRole).toString().isEmpty() && !setting.second.isEmpty());
}

Status applyText(Model& model, const QModelIndex& item, const Setting& setting)
{
    Status known = checkText(setting);
    if (!known)
        return known;
    if (setting.first == QLatin1String(ImfDict::Issuer))
        writeIssuer(model, item, setting);
    else if (setting.first == QLatin1String(ImfDict::ContentTitle))
        model.setData(item, QVariant::fromValue(setting), Model::ContentTitleRole);
    else
        model.setData(item, QVariant::fromValue(setting), Model::MetadataRole);
    const QJsonValue now =
        Model::MetadataJsonFromIndex(item)[QLatin1String(ImfDict::DescriptiveMetadata)].toObject()[setting.first];
    if (now.isString() && now.toString() != setting.second)
        return wrong(setting, QStringLiteral("the item does not take this text"), QStringLiteral("shorten it"));
    return {};
}
} // namespace

Result<Setting> parseSetting(const QString& text)
{
    const int equals = text.indexOf(QLatin1Char('='));
    if (equals <= 0)
        return Error{{}, {}, {}, QStringLiteral("KEY=VALUE is wanted, not \"%1\"").arg(text), {}};
    Setting setting(text.left(equals), text.mid(equals + 1));
    const QStringList known = services::OutputFormat::keys() + QStringList{ImfDict::MultipleAudioMix} + textKeys();
    if (!known.contains(setting.first))
        return wrong(setting, QStringLiteral("there is no such parameter"),
                     QStringLiteral("choose one of %1").arg(known.join(QStringLiteral(", "))));
    return setting;
}

const QStringList& textKeys()
{
    static const QStringList keys{ImfDict::Issuer,       ImfDict::Creator,
                                  ImfDict::Annotation,   ImfDict::ContentOriginator,
                                  ImfDict::ContentTitle, ImfDict::ContentKind};
    return keys;
}

Status checkText(const Setting& setting)
{
    const QStringList labels = ImfDict::contentKindLabels();
    QStringList kinds = labels;
    for (const QString& label : labels)
        kinds += ImfDict::contentKindCode(label);
    if (setting.first == QLatin1String(ImfDict::ContentKind) && !kinds.contains(setting.second))
        return notOffered(setting, labels.mid(1));
    return {};
}

void sortByDependence(QVector<Setting>& settings)
{
    std::stable_sort(settings.begin(), settings.end(),
                     [](const Setting& a, const Setting& b) { return placeOf(a.first) < placeOf(b.first); });
}

Status applyParameter(Model& model, const QModelIndex& cpl, const Setting& setting)
{
    if (setting.first == QLatin1String(ImfDict::MultipleAudioMix)) {
        const QJsonDocument mix = QJsonDocument::fromJson(setting.second.toUtf8());
        if (!mix.isObject())
            return wrong(setting, QStringLiteral("the value is no JSON object"),
                         QStringLiteral("give a multi-mix document"));
        if (!JSON::VerifyMultiMix(mix.object(), false))
            return wrong(setting, QStringLiteral("the value is no multi-mix document"),
                         QStringLiteral("give the lists \"%1\", \"%2\" and \"%3\"")
                             .arg(QLatin1String(ImfDict::AudioMapping), QLatin1String(ImfDict::TrackGroups),
                                  QLatin1String(ImfDict::AllActiveTracks)));
        Status mapped = checkSoundIsMapped();
        if (!mapped)
            return mapped;
        // The groups are kept beside the mix, too: from there the window offers them.
        model.setData(cpl, mix.object()[QLatin1String(ImfDict::TrackGroups)].toArray(), Model::TrackGroupsRole);
        model.setData(cpl, mix.object(), Model::MultiMixRole);
        return {};
    }
    const QJsonValue parameter = parameterOf(cpl, setting.first);
    const QJsonArray choices = parameter[QLatin1String(ImfDict::values)].toArray();
    if (!choices.contains(setting.second)) {
        QStringList names;
        for (const QJsonValue& choice : choices)
            names += choice.toString();
        return notOffered(setting, names);
    }
    model.setData(cpl, QVariant::fromValue(setting), Model::MetadataRole);
    return {};
}

Status applySetting(Model& model, const QModelIndex& item, const Setting& setting)
{
    if (Model::StatusFromIndex(item) == IMF_PackageMgr::Committed)
        return wrong(setting, QStringLiteral("the item is written and keeps what it says"), {});
    const QStringList keys = keysOf(item);
    if (!keys.contains(setting.first))
        return wrong(setting, QStringLiteral("the item has nothing of this name to set"),
                     QStringLiteral("choose one of %1").arg(keys.join(QStringLiteral(", "))));
    return textKeys().contains(setting.first) ? applyText(model, item, setting) : applyParameter(model, item, setting);
}

} // namespace desk::app
