#include "support/TestMain.h"

#include "NvCore/Assert.h"

#include <QFont>
#include <QLocale>
#include <QMutex>
#include <QThread>

#include <cstdio>

namespace
{
struct Expectation {
    QtMsgType type;
    QString part;
    QByteArray test;
};

// Spoken by the offscreen platform about its own limits, and by an X server about a dialog's focus where no window
// manager hands it on.
const char* const platformNoise[] = {"This plugin does not support propagateSizeHints()",
                                     "This plugin does not support raise()",
                                     "This plugin does not support grabbing the keyboard", "(SetInputFocus)"};

struct Heard {
    QMutex mutex;
    std::vector<Expectation> expectations;
    QStringList foreignThreadMessages;
};
Q_GLOBAL_STATIC(Heard, heard)
QtMessageHandler qtestHandler = nullptr;

QByteArray runningTest()
{
    return QTest::currentTestFunction();
}

bool isAnnounced(QtMsgType type, const QString& text)
{
    const QMutexLocker locker(&heard->mutex);
    const auto found =
        std::find_if(heard->expectations.begin(), heard->expectations.end(), [&](const Expectation& expected) {
            return expected.type == type && text.contains(expected.part) && expected.test == runningTest();
        });
    if (found == heard->expectations.end())
        return false;
    heard->expectations.erase(found);
    return true;
}

bool isPlatformNoise(const QString& text)
{
    return std::any_of(std::begin(platformNoise), std::end(platformNoise),
                       [&text](const char* noise) { return text.contains(QLatin1String(noise)); });
}

// A failure can be filed with the running test only on its own thread; others are counted at the end.
void fail(const QString& text)
{
    if (QThread::currentThread() == qApp->thread()) {
        QTest::qFail(qPrintable(text), __FILE__, __LINE__);
        return;
    }
    const QMutexLocker locker(&heard->mutex);
    heard->foreignThreadMessages += QString::fromLatin1(runningTest()) + QStringLiteral(": ") + text;
}

void watchMessages(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (isPlatformNoise(text) || isAnnounced(type, text))
        return;
    qtestHandler(type, context, text);
    if (type == QtWarningMsg || type == QtCriticalMsg)
        fail(QStringLiteral("unannounced message: ") + text);
}

int reportLeftovers()
{
    for (const Expectation& expected : heard->expectations)
        std::fprintf(stderr, "FAIL!  : %s() announced a message that never came: %s\n", expected.test.constData(),
                     qPrintable(expected.part));
    for (const QString& message : qAsConst(heard->foreignThreadMessages))
        std::fprintf(stderr, "FAIL!  : %s\n", qPrintable(message));
    return static_cast<int>(heard->expectations.size()) + heard->foreignThreadMessages.size();
}
} // namespace

void support::expectMessage(QtMsgType type, const QString& part)
{
    const QMutexLocker locker(&heard->mutex);
    heard->expectations.push_back({type, part, runningTest()});
}

quint32 support::seed()
{
    bool isGiven = false;
    const quint32 given = qEnvironmentVariable("STRATACUT_TEST_SEED").toUInt(&isGiven);
    const quint32 chosen = isGiven ? given : QRandomGenerator::global()->generate();
    qInfo("STRATACUT_TEST_SEED=%u", chosen);
    return chosen;
}

void support::fixEnvironment()
{
    QLocale::setDefault(QLocale::c());
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    QApplication::setStyle(QStringLiteral("Fusion"));
}

int support::runTests(QObject& tests, int argc, char** argv)
{
    QTest::qInit(&tests, argc, argv);
    qtestHandler = qInstallMessageHandler(watchMessages);
    nvSetAssertHandler([](const QByteArray& expression, const QByteArray& source) {
        fail(QStringLiteral("unannounced assertion in %1: %2")
                 .arg(QString::fromUtf8(source), QString::fromUtf8(expression)));
    });
    const int failures = QTest::qRun();
    nvSetAssertHandler({});
    qInstallMessageHandler(qtestHandler);
    QTest::qCleanup();
    return failures + reportLeftovers();
}
