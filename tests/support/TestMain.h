#pragma once

// What nearly every test uses stands here once.
#include "support/Files.h"
#include "support/Rows.h"

#include <QApplication>
#include <QDir>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QRandomGenerator>
#include <QSet>
#include <QSignalSpy>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>
#include <QVector>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace support
{

/// Announces one message of the running test whose text contains `part`. A warning or worse that was not announced
/// fails the test, and so does an announced one that never comes. Safe from any thread.
void expectMessage(QtMsgType type, const QString& part);

/// The seed of a random test, which it prints: another one each time, or that of STRATACUT_TEST_SEED.
quint32 seed();

/// Sets the environment that every test runs in: application font "DejaVu Sans" 10 pt, C locale, UTC.
void fixEnvironment();

/// Runs the object's tests with messages and assertion checks watched.
/// @return the number of failures
int runTests(QObject& tests, int argc, char** argv);

} // namespace support

/// The main function of a test program: STRATACUT_TEST_MAIN(TestNode), then the include of the moc file.
#define STRATACUT_TEST_MAIN(Class)                                                                                     \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))                                                            \
            qputenv("QT_QPA_PLATFORM", "offscreen");                                                                   \
        qputenv("TZ", "UTC");                                                                                          \
        QApplication application(argc, argv);                                                                          \
        support::fixEnvironment();                                                                                     \
        Class tests;                                                                                                   \
        return support::runTests(tests, argc, argv);                                                                   \
    }
