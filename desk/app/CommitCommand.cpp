#include "desk/app/CommitWait.h"

#include "desk/app/Command.h"
#include "desk/app/Console.h"
#include "desk/app/ItemSession.h"
#include "desk/app/SoundDefaults.h"

#include "StratacutUI/IMF_Controller.h"

#include <QCommandLineParser>

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;

namespace
{
/// The user has mapped the sound of a composition otherwise than it would be written now.
Status checkMappings(const QModelIndex& item, const QList<CompositionKey>& mappedAnew)
{
    if (Model::NodeTypeFromIndex(item) == IMF_PackageMgr::CPL &&
        mappedAnew.contains(compositionKey(Model::MetadataJsonFromIndex(item))))
        return Error{{},
                     QStringLiteral("composition %1").arg(ItemSession::numberOf(item)),
                     {},
                     QStringLiteral("its audio mapping cannot be read, and nothing is written without it"),
                     QStringLiteral("map its tracks again with \"set %1 --map ...\"").arg(ItemSession::numberOf(item))};
    Status all;
    for (int row = 0; all && row < item.model()->rowCount(item); ++row)
        all = checkMappings(item.model()->index(row, 0, item), mappedAnew);
    return all;
}
} // namespace

QList<QCommandLineOption> commitOptions()
{
    return {profileOption(),
            {"pad", "Adds black and silence where a composition must last a multiple of five frames (29.97, 59.94)."}};
}

int runCommit(const QCommandLineParser& parser, const QStringList& arguments)
{
    if (arguments.size() != 1) {
        console::error(QStringLiteral("name one delivery or one IMP"));
        return exitCode::usage;
    }
    bool cancelled = false;
    const auto work = [&](ItemSession& session) -> Status {
        const auto item = session.find(arguments[0]);
        if (!item)
            return item.error();
        if (!item->data(Model::BurnableRole).toBool())
            return Error{{},
                         arguments[0],
                         {},
                         QStringLiteral("this cannot be written"),
                         QStringLiteral("name a delivery or an IMP that is not written and misses nothing")};
        Status mapped = checkMappings(*item, session.host().mappedAnew());
        if (!mapped)
            return mapped;
        if (parser.isSet(QStringLiteral("pad")))
            session.host().output().setPadding(services::Padding::BlackAndSilence);
        const QPersistentModelIndex row = *item;
        QModelIndex delivery = row;
        while (delivery.parent().isValid())
            delivery = delivery.parent();
        CommitWait wait(&session.host().output(), Model::ComponentIDFromIndex(delivery));
        session.host().controller().onCommit({row});
        const CommitWait::End end = wait.wait();
        cancelled = end == CommitWait::End::Cancelled;
        Status said = session.said();
        if (said)
            console::out(delivery.data(Model::PathRole).toString());
        return said;
    };
    const int code = ItemSession(parser).run(work);
    return cancelled ? exitCode::cancelled : code;
}

} // namespace desk::app
