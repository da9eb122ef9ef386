#include "StratacutUI/IMF_DataParser.h"

#include "NvCore/Assert.h"
#include "StratacutUI/ImfDict.h"

#include <QMetaType>
#include <QRegularExpression>

#include <algorithm>
#include <initializer_list>

namespace
{
bool hasAll(const QJsonObject& object, std::initializer_list<const char*> keys)
{
    return std::all_of(keys.begin(), keys.end(),
                       [&object](const char* key) { return object.contains(QLatin1String(key)); });
}

bool isGroup(const QJsonValue& value)
{
    const QJsonObject group = value.toObject();
    return hasAll(group, {ImfDict::Name, ImfDict::IncludeMasterFader, ImfDict::Tracks}) &&
           group.value(QLatin1String(ImfDict::Tracks)).isArray();
}

bool isBurned(const QJsonObject& document)
{
    return !document.value(QLatin1String(ImfDict::Mutable)).toBool();
}

QVariant multiMixOf(const QJsonObject& document)
{
    const QJsonValue audioRef = document.value(QLatin1String(ImfDict::Audio));
    if (audioRef.isUndefined())
        return QJsonObject();
    NV_ASSERT(audioRef.isObject());
    const QJsonValue multiMix = audioRef.toObject().value(QLatin1String(ImfDict::MultipleAudioMix));
    if (multiMix.isUndefined())
        return QJsonObject();
    if (!multiMix.isObject() || !JSON::VerifyMultiMix(multiMix.toObject(), isBurned(document)))
        return {};
    return multiMix.toObject();
}

// A number by its digits: "A2" is 2. Digits that stand apart are read one behind the other.
int numberOf(const QString& text)
{
    QString digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits), [](QChar c) { return c >= '0' && c <= '9'; });
    return digits.toInt();
}

QString firstRunOfDigits(const QString& text)
{
    static const QRegularExpression digits(QStringLiteral("[0-9]+"));
    const QRegularExpressionMatch match = digits.match(text);
    return match.hasMatch() ? match.captured() : text;
}

QJsonArray sourceNames(const QString& source, const QJsonObject& multiMix)
{
    if (source == QLatin1String("All Active Tracks"))
        return multiMix.value(QLatin1String(ImfDict::AllActiveTracks)).toArray();
    const QJsonArray groups = multiMix.value(QLatin1String(ImfDict::TrackGroups)).toArray();
    for (const QJsonValue& value : groups) {
        const QJsonObject group = value.toObject();
        if (group.value(QLatin1String(ImfDict::Name)) == QJsonValue(source))
            return group.value(QLatin1String(ImfDict::Tracks)).toArray();
    }
    return {firstRunOfDigits(source)};
}

QJsonArray sourceNumbers(const QString& source, const QJsonObject& multiMix)
{
    QJsonArray numbers;
    const QJsonArray names = sourceNames(source, multiMix);
    for (const QJsonValue& name : names)
        numbers.append(name.isDouble() ? name.toInt() : numberOf(name.toString()));
    return numbers;
}

QJsonObject flattened(const QJsonObject& entry, const QJsonObject& multiMix)
{
    const QJsonObject metadata = entry.value(QLatin1String(ImfDict::Metadata)).toObject();
    const auto label = [&metadata](const char* key) { return metadata.value(QLatin1String(key)).toString(); };
    const QString source = entry.value(QLatin1String(ImfDict::SourceTracksGroups)).toString();
    QJsonObject flat;
    flat[ImfDict::Out] = numberOf(entry.value(QLatin1String(ImfDict::TargetTrack)).toString());
    flat[ImfDict::AudioMixdownSettings] = entry.value(QLatin1String(ImfDict::MixMode)).toString();
    flat[ImfDict::AudioIncludeMasterFader] = false;
    flat[ImfDict::RFC5646SpokenLanguage] = label(ImfDict::RFC5646SpokenLanguage);
    flat[ImfDict::AudioContentKind] = label(ImfDict::AudioContentKind);
    flat[ImfDict::In] = sourceNumbers(source, multiMix);
    return flat;
}
} // namespace

namespace JSON
{

bool VerifyAudioGroups(const QJsonArray& groups)
{
    return std::all_of(groups.begin(), groups.end(), isGroup);
}

bool VerifyAudioMapping(const QJsonArray& mapping, bool burned)
{
    return std::all_of(mapping.begin(), mapping.end(), [burned](const QJsonValue& value) {
        const QJsonObject entry = value.toObject();
        return hasAll(entry, {ImfDict::MixMode, ImfDict::TargetTrack}) &&
               (burned || hasAll(entry, {ImfDict::SourceTracksGroups}));
    });
}

bool VerifyMultiMix(const QJsonObject& multiMix, bool burned)
{
    const QJsonValue mapping = multiMix.value(QLatin1String(ImfDict::AudioMapping));
    if (!mapping.isArray())
        return false;
    const bool ok = VerifyAudioMapping(mapping.toArray(), burned);
    if (burned)
        return ok;
    const QJsonValue groups = multiMix.value(QLatin1String(ImfDict::TrackGroups));
    if (!groups.isArray() || !hasAll(multiMix, {ImfDict::AllActiveTracks}))
        return false;
    return ok && VerifyAudioGroups(groups.toArray());
}

QJsonObject DefaultMultiMix()
{
    static const QJsonObject json{{QLatin1String(ImfDict::TrackGroups), QJsonArray()},
                                  {QLatin1String(ImfDict::AudioMapping), QJsonArray()},
                                  {QLatin1String(ImfDict::AllActiveTracks), QJsonArray()}};
    NV_ASSERT(VerifyAudioGroups(json[ImfDict::TrackGroups].toArray()));
    NV_ASSERT(VerifyAudioGroups(json[ImfDict::AudioMapping].toArray()));
    return json;
}

QJsonObject MakeMultiMix(const QJsonArray& audioMapping, const QJsonArray& groups, const QJsonArray& allActiveTracks)
{
    QJsonObject json;
    json[ImfDict::AudioMapping] = audioMapping;
    json[ImfDict::TrackGroups] = groups;
    json[ImfDict::AllActiveTracks] = allActiveTracks;
    VerifyMultiMix(json, false);
    return json;
}

QVariant GetAudioValue(const QJsonValue& root, const QString& key)
{
    if (key == QLatin1String(ImfDict::MultipleAudioMix)) {
        NV_ASSERT(root.isObject());
        return multiMixOf(root.toObject());
    }
    if (key == QLatin1String(ImfDict::Audio)) {
        NV_ASSERT(root.isObject());
        NV_ASSERT(root.toObject().contains(ImfDict::Audio));
        const QJsonValue audioRef = root.toObject().value(QLatin1String(ImfDict::Audio));
        NV_ASSERT(audioRef.isObject());
        return audioRef.toObject();
    }
    NV_ASSERT(false);
    return {};
}

QJsonArray GetAudioMapping(const QJsonValue& root)
{
    const QVariant variant = GetAudioValue(root, QString::fromLatin1(ImfDict::MultipleAudioMix));
    // Qt numbers both enumerations alike but gives them no common type.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_GCC("-Wenum-compare")
    QT_WARNING_DISABLE_CLANG("-Wenum-compare")
    NV_ASSERT(variant.type() == QMetaType::QJsonObject);
    QT_WARNING_POP
    const QJsonObject multiMix = variant.toJsonObject();
    const bool burned = isBurned(root.toObject());
    const QJsonArray mapping = multiMix.value(QLatin1String(ImfDict::AudioMapping)).toArray();
    return VerifyMultiMix(multiMix, burned) && VerifyAudioMapping(mapping, burned) ? mapping : QJsonArray();
}

QJsonArray MigrateLegacyMapping(const QJsonArray& legacy)
{
    QJsonArray mapping;
    for (const QJsonValue& value : legacy) {
        const QJsonObject entry = value.toObject();
        QJsonObject metadata;
        metadata[ImfDict::AudioContentKind] = entry.value(QLatin1String(ImfDict::AudioContentKind)).toString();
        metadata[ImfDict::RFC5646SpokenLanguage] =
            entry.value(QLatin1String(ImfDict::RFC5646SpokenLanguage)).toString();
        QJsonObject migrated;
        migrated[ImfDict::MixMode] = entry.value(QLatin1String(ImfDict::AudioMixdownSettings)).toString();
        migrated[ImfDict::Metadata] = metadata;
        migrated[ImfDict::TargetTrack] = QStringLiteral("A%1").arg(mapping.size() + 1);
        mapping.append(migrated);
    }
    return mapping;
}

QJsonArray FlattenMultiMix(const QJsonObject& multiMix)
{
    QJsonArray list;
    const QJsonArray mapping = multiMix.value(QLatin1String(ImfDict::AudioMapping)).toArray();
    for (const QJsonValue& entry : mapping)
        list.append(flattened(entry.toObject(), multiMix));
    return list;
}

} // namespace JSON
