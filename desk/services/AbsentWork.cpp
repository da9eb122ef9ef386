#include "desk/services/AbsentWork.h"

#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"
#include "desk/imf/package/Folder.h"
#include "desk/services/SettingsStorage.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

namespace desk::services
{

namespace
{
constexpr char foldersKey[] = "VISITED_IMF_SETTINGS_KEY";
constexpr char workKey[] = "UNBURNED_ITEMS_KEY";

QSet<QString> loadedFolders(const IMF_PackageMgrQtModel& model)
{
    QSet<QString> folders;
    for (int row = 0; row < model.rowCount(); ++row)
        folders += imf::canonicalFolder(model.index(row, 0).data(IMF_PackageMgrQtModel::PathRole).toString());
    return folders;
}

/// The folder of the written delivery that an element of saved work belongs to; until it was written itself, the
/// element names the folder above.
bool belongsTo(const QJsonObject& element, const QString& folder)
{
    if (element[QLatin1String(ImfDict::NewDelivery)].toBool())
        return false;
    const QString path = element[QLatin1String(ImfDict::Path)].toString();
    const QString name = element[QLatin1String(ImfDict::Name)].toString();
    return !path.isEmpty() &&
           (imf::canonicalFolder(path) == folder || imf::canonicalFolder(path + QLatin1Char('/') + name) == folder);
}

QJsonArray workOf(const QJsonArray& work, const QString& folder)
{
    QJsonArray found;
    for (const QJsonValue& element : work) {
        if (belongsTo(element.toObject(), folder))
            found.append(element);
    }
    return found;
}

/// A folder that stands there or whose place is not there either: its disk is not connected. Where the place holds
/// other things somebody has removed the delivery.
bool mayComeBack(const QString& folder)
{
    return QFileInfo::exists(folder) || QDir(QFileInfo(folder).path()).isEmpty();
}
} // namespace

void keepAbsentWork(SettingsStorage& settings, const IMF_PackageMgrQtModel& model)
{
    const QSet<QString> loaded = loadedFolders(model);
    const QJsonArray folders = settings.get(foldersKey).value_or(QJsonArray());
    const QJsonArray work = settings.get(workKey).value_or(QJsonArray());
    for (const QJsonValue& value : folders) {
        const QString folder = imf::canonicalFolder(value.toString());
        if (value.toString().isEmpty() || loaded.contains(folder))
            continue;
        const QJsonArray begun = workOf(work, folder);
        if (begun.isEmpty() && !mayComeBack(folder))
            continue;
        settings.keep(foldersKey, {value});
        settings.keep(workKey, begun);
    }
}

QStringList absentFolders(const SettingsStorage& settings)
{
    QStringList folders;
    const QJsonArray kept = settings.kept(foldersKey);
    for (const QJsonValue& folder : kept)
        folders += folder.toString();
    return folders;
}

bool forgetAbsentWork(SettingsStorage& settings, const QString& folder)
{
    const QString wanted = imf::canonicalFolder(folder);
    bool isForgotten = false;
    for (const char* key : {foldersKey, workKey}) {
        const QJsonArray kept = settings.kept(key);
        for (const QJsonValue& value : kept) {
            const QString path = value.toString();
            if (path.isEmpty() ? belongsTo(value.toObject(), wanted) : imf::canonicalFolder(path) == wanted)
                isForgotten = settings.letGo(key, value) || isForgotten;
        }
    }
    return isForgotten;
}

} // namespace desk::services
