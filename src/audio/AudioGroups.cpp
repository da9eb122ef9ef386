#include "AudioGroups.h"

#include "NvCore/NvText.h"
#include "StratacutUI/ImfDict.h"
#include "ViewDeckQt/DefaultName.h"

#include <QJsonObject>

#include <utility>

namespace
{
AudioGroup fromJson(const QJsonObject& profile)
{
    AudioGroup group;
    group.name = profile.value(QLatin1String(ImfDict::Name)).toString();
    group.includeMasterFader = profile.value(QLatin1String(ImfDict::IncludeMasterFader)).toBool();
    const QJsonArray tracks = profile.value(QLatin1String(ImfDict::Tracks)).toArray();
    for (const QJsonValue& track : tracks) {
        if (track.isString())
            group.tracks += track.toString();
    }
    return group;
}

QString remarkOnName(const QString& former, const QString& name)
{
    if (former.trimmed().isEmpty())
        return stx_func("A group without a name is now \"%1\".").toQString().arg(name);
    return stx_func("A further group \"%1\" is now \"%2\".").toQString().arg(former, name);
}
} // namespace

AudioGroups::Read AudioGroups::read(const QJsonArray& profiles)
{
    Read read;
    QStringList names = reservedNames();
    int unreadable = 0;
    for (const QJsonValue& profile : profiles) {
        AudioGroup group = fromJson(profile.toObject());
        if (group.name.isEmpty() && group.tracks.isEmpty()) {
            ++unreadable;
            continue;
        }
        const QString former = std::exchange(group.name, group.name.trimmed().isEmpty() ? defaultName() : group.name);
        ViewDeckQt::generateDefaultName(group.name, names);
        if (group.name != former)
            read.remarks += remarkOnName(former, group.name);
        names += group.name;
        read.groups += group;
    }
    if (unreadable > 0)
        read.remarks += stx_func("Stored entries that are no groups, left out: %1.").toQString().arg(unreadable);
    return read;
}

QJsonArray AudioGroups::toJson(const QVector<AudioGroup>& groups)
{
    QJsonArray profiles;
    for (const AudioGroup& group : groups) {
        profiles.append(QJsonObject{{QLatin1String(ImfDict::Name), group.name},
                                    {QLatin1String(ImfDict::IncludeMasterFader), group.includeMasterFader},
                                    {QLatin1String(ImfDict::Tracks), QJsonArray::fromStringList(group.tracks)}});
    }
    return profiles;
}

QString AudioGroups::defaultName()
{
    return stx_func("Untitled Group");
}

QStringList AudioGroups::reservedNames()
{
    return {defaultName(), QStringLiteral("Untitled Group"), stx_func("All Active Tracks"),
            QStringLiteral("All Active Tracks"), QStringLiteral("----------")};
}
