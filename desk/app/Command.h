#pragma once

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>

class QCommandLineParser;

namespace desk::app
{

/// One word of the command line and what stands behind it.
struct Command {
    const char* name;
    /// What follows the name, for the help: "FOLDER".
    const char* arguments;
    const char* summary;
    QList<QCommandLineOption> (*options)();
    /// Answers an exit code. The parser has parsed without an error.
    int (*run)(const QCommandLineParser& parser, const QStringList& arguments);
};

/// The option of every command that works on saved state.
QCommandLineOption profileOption();

QList<QCommandLineOption> windowOptions();
/// Opens the desk's window with the media in its bin; answers when it is closed.
int runWindow(const QCommandLineParser& parser, const QStringList& media);
QList<QCommandLineOption> walkOptions();
int runWalk(const QCommandLineParser& parser, const QStringList& media);

// Commands on saved state. ITEM is a number or a path of names as "list" shows them.

QList<QCommandLineOption> listOptions();
int runList(const QCommandLineParser& parser, const QStringList& items);
QList<QCommandLineOption> binOptions();
int runBin(const QCommandLineParser& parser, const QStringList& media);
QList<QCommandLineOption> newOptions();
int runNew(const QCommandLineParser& parser, const QStringList& arguments);
/// Those of the commands that have no option of their own.
QList<QCommandLineOption> itemOptions();
int runAdd(const QCommandLineParser& parser, const QStringList& arguments);
int runRename(const QCommandLineParser& parser, const QStringList& arguments);
QList<QCommandLineOption> setOptions();
int runSet(const QCommandLineParser& parser, const QStringList& arguments);
int runFolder(const QCommandLineParser& parser, const QStringList& arguments);
int runRemove(const QCommandLineParser& parser, const QStringList& arguments);
int runRefresh(const QCommandLineParser& parser, const QStringList& arguments);
int runExplore(const QCommandLineParser& parser, const QStringList& arguments);
QList<QCommandLineOption> commitOptions();
int runCommit(const QCommandLineParser& parser, const QStringList& arguments);

// Commands on transcripts. CLIP is a name in the bin or a file.

QList<QCommandLineOption> transcribeOptions();
int runTranscribe(const QCommandLineParser& parser, const QStringList& clips);
QList<QCommandLineOption> transcriptOptions();
int runTranscript(const QCommandLineParser& parser, const QStringList& clips);
QList<QCommandLineOption> recogniserOptions();
int runRecogniser(const QCommandLineParser& parser, const QStringList& arguments);
/// Its options are those of items.
int runSpeakers(const QCommandLineParser& parser, const QStringList& arguments);

// Commands that need no saved state.

QList<QCommandLineOption> exportOptions();
int runExport(const QCommandLineParser& parser, const QStringList& arguments);
QList<QCommandLineOption> showOptions();
int runShow(const QCommandLineParser& parser, const QStringList& arguments);
QList<QCommandLineOption> verifyOptions();
int runVerify(const QCommandLineParser& parser, const QStringList& arguments);

} // namespace desk::app
