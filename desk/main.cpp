#include "desk/app/Command.h"
#include "desk/app/Console.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

using namespace desk::app;

namespace
{
const Command commands[] = {
    {"window", "[MEDIA...]", "open the desk's window, with the media in its bin; also without any command",
     windowOptions, runWindow},
    {"list", "[ITEM...]", "show the packages of the profile, with the numbers that other commands take", listOptions,
     runList},
    {"bin", "[MEDIA...]", "put media into the bin, and show what it holds", binOptions, runBin},
    {"new", "original|supplemental|imp NAME", "make a delivery with an IMP, or a further IMP", newOptions, runNew},
    {"add", "ITEM MEDIA...", "make a composition of each sequence, in an IMP or in a new IMP of a delivery",
     itemOptions, runAdd},
    {"rename", "ITEM NAME", "give an item that is not written another name", itemOptions, runRename},
    {"set", "ITEM KEY=VALUE...", "set texts and parameters of an item, groups and audio mapping of a composition",
     setOptions, runSet},
    {"folder", "ITEM FOLDER", "choose the folder in which a delivery will be written", itemOptions, runFolder},
    {"remove", "ITEM", "remove an item that is not written, or forget a delivery; its files stay", itemOptions,
     runRemove},
    {"refresh", "", "read every written delivery again", itemOptions, runRefresh},
    {"explore", "FOLDER...", "link to deliveries that are there already", itemOptions, runExplore},
    {"commit", "ITEM", "write a delivery, or a new IMP of one", commitOptions, runCommit},
    {"export", "MEDIA... --to FOLDER", "write media files as an IMF package", exportOptions, runExport},
    {"transcribe", "CLIP...", "recognise what is said in clips, and put them into the bin", transcribeOptions,
     runTranscribe},
    {"transcript", "CLIP", "show, write or read the transcript of a clip or a timeline", transcriptOptions,
     runTranscript},
    {"speakers", "[list | rename NUMBER NAME]", "show who speaks, or name a speaker", itemOptions, runSpeakers},
    {"recogniser", "", "show what recognises speech, or choose it", recogniserOptions, runRecogniser},
    {"walk", "MEDIA --to FOLDER", "use the window by itself, from the first start to a written delivery", walkOptions,
     runWalk},
    {"show", "FOLDER", "show what a delivery holds", showOptions, runShow},
    {"verify", "FOLDER", "check every file, size, hash and reference of a delivery", verifyOptions, runVerify},
};

const char exitCodes[] = "Exit codes: 0 success, 1 the command failed, 2 the command line is wrong,\n"
                         "3 verify has found errors, 130 interrupted.";

QString overview()
{
    QString text = QStringLiteral("Usage: stratacut-desk [COMMAND] [OPTIONS]\n\nCommands:\n");
    for (const Command& command : commands)
        text += QStringLiteral("  %1 %2\n      %3\n").arg(command.name, command.arguments, command.summary);
    text +=
        QStringLiteral("\nITEM is a number (1.2.1) or a path of names (Harbour/Main/Reel 1) as \"list\" shows them.\n"
                       "Packages, bin and window are kept in your profile; --profile DIR takes another one.\n"
                       "\nOptions:\n  --help     show this text; after a command, that of the command\n"
                       "  --version  show the version\n\n%1")
            .arg(exitCodes);
    return text;
}

int usageError(const QString& text)
{
    console::error(text);
    console::note(QStringLiteral("stratacut-desk --help shows what there is."));
    return exitCode::usage;
}

/// Without the first line of the parser, which names the program by the path that the caller has taken.
QString helpOf(const Command& command, const QCommandLineParser& parser)
{
    return QStringLiteral("Usage: stratacut-desk %1 %2 [OPTIONS]\n%3.\n\n%4\n%5")
        .arg(command.name, command.arguments, command.summary,
             parser.helpText().section(QLatin1Char('\n'), 2).trimmed(), QLatin1Char('\n') + QLatin1String(exitCodes));
}

int runCommand(const Command& command, const QStringList& arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption help({"h", "help"}, "Shows this text.");
    parser.addOption(help);
    parser.addOptions(command.options());
    if (!parser.parse(QStringList{QStringLiteral("stratacut-desk ") + command.name} + arguments))
        return usageError(parser.errorText());
    if (parser.isSet(help)) {
        console::out(helpOf(command, parser));
        return exitCode::success;
    }
    return command.run(parser, parser.positionalArguments());
}

/// A file manager that opens media with the desk names the files alone.
bool isMedia(const QString& argument)
{
    return !argument.startsWith(QLatin1Char('-')) && QFileInfo(argument).isFile();
}

bool asksForHelp(int argc, char** argv)
{
    return std::any_of(argv + 1, argv + argc, [](const char* one) { return qstrcmp(one, "--help") == 0; });
}

bool opensWindow(int argc, char** argv)
{
    if (argc < 2)
        return true;
    return !asksForHelp(argc, argv) && (qstrcmp(argv[1], "window") == 0 || isMedia(QFile::decodeName(argv[1])));
}

bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

/// All commands but one open no window: they run where there is no display and no session.
void fixEnvironment(bool wantsDisplay)
{
    if (!wantsDisplay && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsSet("XDG_RUNTIME_DIR"))
        return;
    // The place that would be taken anyhow, but not without a warning to the user.
    const QByteArray runtime = "/tmp/runtime-" + QByteArray::number(getuid());
    mkdir(runtime.constData(), 0700);
    qputenv("XDG_RUNTIME_DIR", runtime);
}

/// Everything as large as the screens are set to, at 150 % too, and images as fine as the screen can show them.
void followScreenScale()
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}

QtMessageHandler formerHandler = nullptr;

/// The offscreen platform says of every window what it cannot do with it; nobody can act on that.
void passOnWhatMatters(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (!text.startsWith(QLatin1String("This plugin does not support")))
        formerHandler(type, context, text);
}
} // namespace

int main(int argc, char** argv)
{
    const bool wantsDisplay = opensWindow(argc, argv);
    if (wantsDisplay && !hasDisplay()) {
        console::error(QStringLiteral("there is no display to open a window on."));
        console::note(QStringLiteral("stratacut-desk --help shows the commands that need none."));
        return exitCode::failure;
    }
    fixEnvironment(wantsDisplay);
    formerHandler = qInstallMessageHandler(passOnWhatMatters);
    followScreenScale();
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Stratacut Desk"));
    QApplication::setApplicationVersion(QStringLiteral(STRATACUT_VERSION));
    QStringList arguments = QApplication::arguments().mid(1);
    if (arguments.isEmpty() || isMedia(arguments.first()))
        arguments.prepend(QStringLiteral("window"));
    const QString& first = arguments.first();
    if (first == QLatin1String("--help") || first == QLatin1String("-h") || first == QLatin1String("help")) {
        console::out(overview());
        return exitCode::success;
    }
    if (first == QLatin1String("--version")) {
        console::out(QStringLiteral("Stratacut Desk ") + QApplication::applicationVersion());
        return exitCode::success;
    }
    const auto command = std::find_if(std::begin(commands), std::end(commands),
                                      [&first](const Command& one) { return first == QLatin1String(one.name); });
    if (command == std::end(commands))
        return usageError(QStringLiteral("there is no command \"%1\"").arg(first));
    return runCommand(*command, arguments.mid(1));
}
