// Commands on saved state: what the window does, one action a command.

#include "desk/app/AudioSettings.h"
#include "desk/app/Command.h"
#include "desk/app/Console.h"
#include "desk/app/ItemSession.h"
#include "desk/app/ItemSettings.h"

#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/ImfDict.h"

#include <QCommandLineParser>
#include <QDir>

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;

namespace
{
int usage(const QString& text)
{
    console::error(text);
    console::note(QStringLiteral("stratacut-desk --help shows what there is."));
    return exitCode::usage;
}

Error refused(const QString& item)
{
    return Error{{}, item, {}, QStringLiteral("the package manager refused"), {}};
}

/// The number by which later commands find the item.
void printNumber(const QModelIndex& item)
{
    console::out(ItemSession::numberOf(item));
}

Status setFolder(ItemSession& session, const QModelIndex& delivery, const QString& folder)
{
    QString refusal;
    QMetaObject::invokeMethod(&session.host().controller(), "setPath", Q_RETURN_ARG(QString, refusal),
                              Q_ARG(QString, QDir::cleanPath(QDir(folder).absolutePath())),
                              Q_ARG(QModelIndex, delivery));
    if (refusal.isEmpty())
        return {};
    return Error{{}, {}, {}, refusal.simplified(), {}};
}

Result<QModelIndex> addImp(ItemSession& session, const QModelIndex& delivery, const QString& name)
{
    Model& model = session.model();
    model.addIMPNode(model.FromIndex(delivery));
    const QModelIndex imp = model.index(model.rowCount(delivery) - 1, 0, delivery);
    if (!name.isEmpty() && imp.data(Model::NameRole) != name && !model.setData(imp, name))
        return refused(name);
    return imp;
}

Status newDelivery(ItemSession& session, IMF_PackageMgr::Version version, const QString& name,
                   const QCommandLineParser& parser)
{
    Model& model = session.model();
    const int before = model.rowCount();
    session.host().controller().onNewIMFDelivery(name, version);
    if (model.rowCount() == before)
        return session.said();
    const QModelIndex delivery = model.index(before, 0);
    Status placed = parser.isSet(QStringLiteral("to"))
                        ? setFolder(session, delivery, parser.value(QStringLiteral("to")))
                        : Status();
    if (!placed)
        return placed;
    // Saved state has no place for a delivery without IMP.
    const auto imp = addImp(session, delivery, parser.value(QStringLiteral("imp")));
    if (!imp)
        return imp.error();
    printNumber(delivery);
    return {};
}

Status newImp(ItemSession& session, const QString& name, const QCommandLineParser& parser)
{
    const auto delivery = session.find(parser.value(QStringLiteral("in")));
    if (!delivery)
        return delivery.error();
    if (Model::NodeTypeFromIndex(*delivery) != IMF_PackageMgr::Delivery)
        return Error{{}, name, {}, QStringLiteral("an IMP stands in a delivery alone"), {}};
    const auto imp = addImp(session, *delivery, name);
    if (!imp)
        return imp.error();
    printNumber(*imp);
    return {};
}

Status mapAudio(ItemSession& session, const QModelIndex& item, const QString& name, const AudioSettings& audio)
{
    if (Model::NodeTypeFromIndex(item) != IMF_PackageMgr::CPL ||
        Model::StatusFromIndex(item) == IMF_PackageMgr::Committed)
        return Error{{},
                     name,
                     {},
                     QStringLiteral("only a composition that is not written has groups and a mapping to set"),
                     QStringLiteral("name another item")};
    const auto sequence =
        session.host().library().find(Model::MetadataJsonFromIndex(item)[QLatin1String(ImfDict::CPLMobID)].toString());
    if (!sequence)
        return Error{{},
                     name,
                     {},
                     QStringLiteral("the bin no longer holds its sequence"),
                     QStringLiteral("add the media to the bin again")};
    return applyAudio(session.model(), item, *sequence, audio);
}

/// For commands that work on one item: finds it first.
int onItem(const QCommandLineParser& parser, const QString& item,
           const std::function<Status(ItemSession&, const QModelIndex&)>& work)
{
    return ItemSession(parser).run([&](ItemSession& session) -> Status {
        const auto found = session.find(item);
        return found ? work(session, *found) : Status(found.error());
    });
}
} // namespace

QList<QCommandLineOption> newOptions()
{
    return {profileOption(),
            {"to", "The folder in which a new delivery will be written.", "FOLDER"},
            {"imp", "Name of the IMP that a new delivery begins with.", "NAME"},
            {"in", "The delivery of a new IMP.", "ITEM"}};
}

int runNew(const QCommandLineParser& parser, const QStringList& arguments)
{
    const QStringList kinds{QStringLiteral("original"), QStringLiteral("supplemental"), QStringLiteral("imp")};
    const int kind = kinds.indexOf(arguments.value(0));
    if (arguments.size() != 2 || kind < 0)
        return usage(QStringLiteral("say what is to be made (%1) and its name").arg(kinds.join(QStringLiteral(", "))));
    if (kind == 2 && !parser.isSet(QStringLiteral("in")))
        return usage(QStringLiteral("say with --in which delivery gets the IMP"));
    return ItemSession(parser).run([&](ItemSession& session) {
        if (kind == 2)
            return newImp(session, arguments[1], parser);
        return newDelivery(session, kind == 0 ? IMF_PackageMgr::Original : IMF_PackageMgr::Supplemental, arguments[1],
                           parser);
    });
}

QList<QCommandLineOption> itemOptions()
{
    return {profileOption()};
}

QList<QCommandLineOption> setOptions()
{
    return itemOptions() + audioOptions();
}

int runAdd(const QCommandLineParser& parser, const QStringList& arguments)
{
    if (arguments.size() < 2)
        return usage(QStringLiteral("name an item, and sequences of the bin or media files"));
    return onItem(parser, arguments[0], [&](ItemSession& session, const QModelIndex& item) -> Status {
        QStringList ids;
        const QStringList all = arguments.mid(1);
        for (const QString& media : all) {
            const auto id = session.sequence(media);
            if (!id)
                return id.error();
            ids += *id;
        }
        Model& model = session.model();
        if (Model::NodeTypeFromIndex(item) == IMF_PackageMgr::CPL || model.IsDroppingOnCommitedItem(-1, -1, item))
            return Error{{},
                         arguments[0],
                         {},
                         QStringLiteral("sequences go to a delivery, or to an IMP that is not written"),
                         QStringLiteral("name another item")};
        const QPersistentModelIndex target = item;
        model.createCPLFromMobs(ids, target);
        const QModelIndex last = model.index(model.rowCount(target) - 1, 0, target);
        printNumber(last);
        return {};
    });
}

int runRename(const QCommandLineParser& parser, const QStringList& arguments)
{
    if (arguments.size() != 2)
        return usage(QStringLiteral("name an item and its new name"));
    return onItem(parser, arguments[0], [&](ItemSession& session, const QModelIndex& item) -> Status {
        if (Model::StatusFromIndex(item) == IMF_PackageMgr::Committed)
            return Error{{}, arguments[0], {}, QStringLiteral("the item is written and keeps its name"), {}};
        if (session.model().setData(item, arguments[1]))
            return {};
        const Status said = session.said();
        return said ? refused(arguments[0]) : said;
    });
}

int runSet(const QCommandLineParser& parser, const QStringList& arguments)
{
    QVector<Setting> settings;
    const QStringList texts = arguments.mid(1);
    for (const QString& text : texts) {
        const auto setting = parseSetting(text);
        if (!setting)
            return usage(setting.error().sentence());
        settings += *setting;
    }
    const AudioSettings audio = AudioSettings::from(parser);
    if (arguments.isEmpty() || (settings.isEmpty() && audio.isEmpty()))
        return usage(QStringLiteral("name an item and what is to be set, as KEY=VALUE, --group or --map"));
    sortByDependence(settings);
    return onItem(parser, arguments[0], [&](ItemSession& session, const QModelIndex& item) -> Status {
        for (const Setting& setting : qAsConst(settings)) {
            Status applied = applySetting(session.model(), item, setting);
            if (!applied)
                return applied;
        }
        return audio.isEmpty() ? Status() : mapAudio(session, item, arguments[0], audio);
    });
}

int runFolder(const QCommandLineParser& parser, const QStringList& arguments)
{
    if (arguments.size() != 2)
        return usage(QStringLiteral("name a delivery and the folder in which it will be written"));
    return onItem(parser, arguments[0], [&](ItemSession& session, const QModelIndex& item) -> Status {
        if (Model::NodeTypeFromIndex(item) != IMF_PackageMgr::Delivery ||
            Model::StatusFromIndex(item) == IMF_PackageMgr::Committed)
            return Error{{}, arguments[0], {}, QStringLiteral("only a delivery that is not written has a choice"), {}};
        return setFolder(session, item, arguments[1]);
    });
}

int runRemove(const QCommandLineParser& parser, const QStringList& arguments)
{
    if (arguments.size() != 1)
        return usage(QStringLiteral("name one item"));
    return ItemSession(parser).run([&](ItemSession& session) -> Status {
        const auto found = session.find(arguments[0]);
        if (!found)
            return session.host().forget(arguments[0]) ? Status() : Status(found.error());
        session.host().controller().onRemoveIMFItem(*found);
        return session.said();
    });
}

int runRefresh(const QCommandLineParser& parser, const QStringList& arguments)
{
    if (!arguments.isEmpty())
        return usage(QStringLiteral("refresh takes no item: it reads every written delivery again"));
    return ItemSession(parser).run([](ItemSession& session) {
        session.host().controller().refreshAll();
        return session.said();
    });
}

int runExplore(const QCommandLineParser& parser, const QStringList& arguments)
{
    if (arguments.isEmpty())
        return usage(QStringLiteral("name the folder of a delivery, and after it those that it completes"));
    return ItemSession(parser).run([&](ItemSession& session) -> Status {
        for (const QString& folder : arguments) {
            session.host().controller().onExploreNewDelivery(QDir::cleanPath(QDir(folder).absolutePath()));
            Status said = session.said();
            if (!said)
                return said;
        }
        session.host().controller().refreshAll();
        Model& model = session.model();
        for (int row = 0; row < model.rowCount(); ++row) {
            const QModelIndex delivery = model.index(row, 0);
            if (Model::StatusFromIndex(delivery) == IMF_PackageMgr::Committed &&
                session.host().controller().hasMissingAssets(delivery))
                console::note(
                    QStringLiteral("%1 refers to files that no loaded delivery holds; explore its original too.")
                        .arg(delivery.data(Model::PathRole).toString()));
        }
        return {};
    });
}

} // namespace desk::app
