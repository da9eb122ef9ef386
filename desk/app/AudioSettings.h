#pragma once

#include "desk/base/Result.h"
#include "desk/services/MediaLibrary.h"

#include <QCommandLineOption>
#include <QModelIndex>
#include <QStringList>

class IMF_PackageMgrQtModel;
class QCommandLineParser;

namespace desk::app
{

/// Groups and mapping as the command line gives them, in the order in which they were given.
struct AudioSettings {
    /// "NAME=A1,A3-A5"; without tracks the group goes.
    QStringList groups;
    /// "A1=SOURCE:MODE[:LANGUAGE[:KIND]]"; without a source the row goes.
    QStringList rows;

    bool isEmpty() const { return groups.isEmpty() && rows.isEmpty(); }

    static AudioSettings from(const QCommandLineParser& parser);
};

/// --group and --map.
QList<QCommandLineOption> audioOptions();

/// Sets a composition's groups and its audio mapping, all or nothing. The error says what the sequence or the output
/// does not have, as a commit would.
Status applyAudio(IMF_PackageMgrQtModel& model, const QModelIndex& cpl, const services::BinItem& sequence,
                  const AudioSettings& settings);

} // namespace desk::app
