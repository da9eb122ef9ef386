#pragma once

#include <QByteArray>
#include <QProcess>
#include <QTest>

/// Checks a document with xmllint against one of the schemas that STRATACUT_IMF_XSD names the folder of; skips the
/// test, saying so, where either is not there.
inline void validate(const QByteArray& xml, const char* schema)
{
    const QString schemas = qEnvironmentVariable("STRATACUT_IMF_XSD");
    if (schemas.isEmpty())
        QSKIP("STRATACUT_IMF_XSD is not set: documents are not validated");
    QProcess lint;
    lint.start(QStringLiteral("xmllint"),
               {"--nonet", "--noout", "--schema", schemas + QLatin1Char('/') + QLatin1String(schema), "-"});
    if (!lint.waitForStarted())
        QSKIP("xmllint is not installed: documents are not validated");
    lint.write(xml);
    lint.closeWriteChannel();
    QVERIFY(lint.waitForFinished());
    QVERIFY2(lint.exitCode() == 0, lint.readAllStandardError().constData());
}
