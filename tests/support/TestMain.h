#pragma once

#include <QApplication>
#include <QString>
#include <QTest>
#include <QtGlobal>

namespace support
{

/// Announces one message of the running test whose text contains `part`. A warning or worse that was not announced
/// fails the test, and so does an announced one that never comes. Safe from any thread.
void expectMessage(QtMsgType type, const QString& part);

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
