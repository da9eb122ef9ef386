#pragma once

#include "desk/app/Host.h"
#include "desk/base/Result.h"

#include <QModelIndex>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class QCommandLineParser;

namespace desk::app
{

/// One command on the saved state of a profile, with what the window would do: opens it, does the work, keeps it.
/// Message boxes become lines of the error stream, and questions get their default answer.
class ItemSession
{
public:
    explicit ItemSession(const QCommandLineParser& parser);
    ~ItemSession();
    ItemSession(const ItemSession&) = delete;
    ItemSession& operator=(const ItemSession&) = delete;

    enum class Keeping { Nothing, Work };

    /// Runs the work on the loaded state and keeps the state where the work went well. Answers an exit code.
    int run(const std::function<Status(ItemSession&)>& work, Keeping keeping = Keeping::Work);

    Host& host() { return *m_host; }

    IMF_PackageMgrQtModel& model() { return m_host->model(); }

    /// An item by its number in the list ("1.2.1") or by the names on the way to it ("Harbour/Main/Reel 1"). Names win.
    /// The error says so where none or several are meant.
    Result<QModelIndex> find(const QString& item) const;
    /// The sequence of the bin with this name or file; a media file that the bin does not hold is added.
    Result<QString> sequence(const QString& media);

    /// What message boxes have said since the last call. The empty status where they said nothing.
    Status said();

    /// "1.2.1".
    static QString numberOf(const QModelIndex& item);

private:
    Status open();

    std::unique_ptr<Host> m_host;
    QStringList m_messages;
};

} // namespace desk::app
