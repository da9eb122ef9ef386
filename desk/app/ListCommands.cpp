// What the profile holds: its packages and its bin.

#include "desk/app/Command.h"
#include "desk/app/Console.h"
#include "desk/app/ItemSession.h"
#include "desk/app/window/BinModel.h"

#include "StratacutUI/ImfDict.h"

#include <QCommandLineParser>
#include <QJsonDocument>

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;

namespace
{
QString kindOf(const QModelIndex& item)
{
    switch (Model::NodeTypeFromIndex(item)) {
    case IMF_PackageMgr::IMP:
        return QStringLiteral("IMP");
    case IMF_PackageMgr::CPL:
        return QStringLiteral("CPL");
    case IMF_PackageMgr::Delivery:
        break;
    }
    return Model::VersionFromIndex(item) == IMF_PackageMgr::Original ? QStringLiteral("IMF Original")
                                                                     : QStringLiteral("IMF Supplemental");
}

bool isWritten(const QModelIndex& item)
{
    return Model::StatusFromIndex(item) == IMF_PackageMgr::Committed;
}

QJsonObject jsonOf(const Model& model, const QModelIndex& item)
{
    QJsonObject json = Model::MetadataJsonFromIndex(item);
    QJsonArray children;
    for (int row = 0; row < model.rowCount(item); ++row)
        children += jsonOf(model, model.index(row, 0, item));
    json[QLatin1String(ImfDict::Children)] = children;
    json[QLatin1String("Number")] = ItemSession::numberOf(item);
    json[QLatin1String("Written")] = isWritten(item);
    if (Model::NodeTypeFromIndex(item) == IMF_PackageMgr::Delivery)
        json[QLatin1String(ImfDict::Path)] = item.data(Model::PathRole).toString();
    return json;
}

void print(const Model& model, const QModelIndex& item, const QString& indent)
{
    QString line = QStringLiteral("%1%2  %3 \"%4\", %5")
                       .arg(indent, ItemSession::numberOf(item), kindOf(item), item.data().toString(),
                            isWritten(item) ? QStringLiteral("written") : QStringLiteral("not written"));
    const QString path = item.data(Model::PathRole).toString();
    if (!path.isEmpty())
        line += QStringLiteral(", ") + path;
    console::out(line);
    for (int row = 0; row < model.rowCount(item); ++row)
        print(model, model.index(row, 0, item), indent + QStringLiteral("  "));
}
} // namespace

QList<QCommandLineOption> listOptions()
{
    return {profileOption(), {"json", "Prints the documents that the package manager works on."}};
}

int runList(const QCommandLineParser& parser, const QStringList& arguments)
{
    return ItemSession(parser).run(
        [&](ItemSession& session) -> Status {
            Model& model = session.model();
            QModelIndexList items;
            for (int row = 0; arguments.isEmpty() && row < model.rowCount(); ++row)
                items += model.index(row, 0);
            for (const QString& argument : arguments) {
                const auto found = session.find(argument);
                if (!found)
                    return found.error();
                items += *found;
            }
            QJsonArray documents;
            for (const QModelIndex& item : qAsConst(items)) {
                if (parser.isSet(QStringLiteral("json")))
                    documents += jsonOf(model, item);
                else
                    print(model, item, {});
            }
            if (parser.isSet(QStringLiteral("json")))
                console::out(QString::fromUtf8(QJsonDocument(documents).toJson()).trimmed());
            return {};
        },
        ItemSession::Keeping::Nothing);
}

QList<QCommandLineOption> binOptions()
{
    return {profileOption(),
            {"remove", "Takes a sequence out of the bin; its file stays.", "NAME"},
            {"force", "Also where a composition that is not written needs the sequence."}};
}

namespace
{
Status checkUnused(ItemSession& session, const QString& name, const QString& sequence)
{
    const QModelIndex cpl = session.model().mobToIndex(sequence);
    if (!cpl.isValid())
        return {};
    return Error{
        {},
        name,
        {},
        QStringLiteral("composition %1 is made from it and is not written yet").arg(ItemSession::numberOf(cpl)),
        QStringLiteral("remove the composition first, or give --force")};
}
} // namespace

int runBin(const QCommandLineParser& parser, const QStringList& arguments)
{
    return ItemSession(parser).run(
        [&](ItemSession& session) -> Status {
            for (const QString& media : arguments) {
                const auto id = session.sequence(media);
                if (!id)
                    return id.error();
            }
            const QStringList removed = parser.values(QStringLiteral("remove"));
            for (const QString& name : removed) {
                const auto id = session.sequence(name);
                if (!id)
                    return id.error();
                if (!parser.isSet(QStringLiteral("force"))) {
                    const Status unused = checkUnused(session, name, *id);
                    if (!unused)
                        return unused;
                }
                session.host().library().remove(*id);
            }
            const auto& items = session.host().library().items();
            for (const services::BinItem& item : items)
                console::out(
                    QStringLiteral("%1, %2, %3").arg(item.name, factsOf(item).join(QStringLiteral(", ")), item.path));
            return {};
        },
        ItemSession::Keeping::Nothing);
}

} // namespace desk::app
