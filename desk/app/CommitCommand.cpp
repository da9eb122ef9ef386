#include "desk/app/CommitWait.h"

#include "desk/app/Command.h"
#include "desk/app/Console.h"
#include "desk/app/ItemSession.h"

#include "StratacutUI/IMF_Controller.h"

#include <QCommandLineParser>

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;

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
