#include "StratacutUI/ImfDict.h"
#include "desk/services/ExportJob.h"
#include "desk/services/FolderName.h"
#include "desk/services/FormatBuilder.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QRandomGenerator>

using namespace desk;
using namespace desk::services;

class TestOutputFormat : public QObject
{
    Q_OBJECT

    static OutputFormat stored(const FormatBuilder& builder)
    {
        return OutputFormat::fromJson(QJsonDocument::fromJson(builder.settings().toUtf8()).object());
    }

private slots:

    void everyWalkThroughTheChoicesStaysConsistent()
    {
        QRandomGenerator random(support::seed());
        FormatBuilder builder{OutputFormat()};
        for (int step = 0; step < 3000; ++step) {
            const QString key = builder.keys().at(random.bounded(builder.keys().size()));
            const QStringList choices = builder.choices(key);
            const QString& value = choices.at(random.bounded(choices.size()));
            QVERIFY(builder.setValue(key, value));
            QCOMPARE(builder.value(key), value);
            const QStringList keys = builder.keys();
            for (const QString& each : keys)
                QVERIFY2(builder.choices(each).contains(builder.value(each)), qPrintable(each));
            // What is offered can be written, and survives storing.
            const OutputFormat format = stored(builder);
            QVERIFY(imf::chooseProfile(format.picture(), format.j2k()).ok());
            QCOMPARE(QJsonDocument(format.toJson()).toJson(QJsonDocument::Compact), builder.settings().toUtf8());
        }
    }

    void aValueThatIsNotOfferedChangesNothing()
    {
        FormatBuilder builder{OutputFormat()};
        const QString before = builder.settings();
        const QStringList keys = builder.keys() + QStringList{QStringLiteral("Shoe Size")};
        for (const QString& key : keys)
            QVERIFY(!builder.setValue(key, QStringLiteral("11 1/2")));
        QCOMPARE(builder.settings(), before);
        QVERIFY(builder.choices(QStringLiteral("Shoe Size")).isEmpty());
        QCOMPARE(builder.value(QStringLiteral("Shoe Size")), QString());
    }

    void aChoiceThatExcludesAnotherChangesTheOfferedList()
    {
        FormatBuilder builder{OutputFormat()};
        QVERIFY(builder.setValue(ImfDict::FrameRate, QStringLiteral("60")));
        const QStringList fast = builder.choices(ImfDict::CompressionProfile);
        QVERIFY(builder.setValue(ImfDict::CompressionProfile, fast.last()));
        QVERIFY(builder.setValue(ImfDict::FrameRate, QStringLiteral("24")));
        const QStringList slow = builder.choices(ImfDict::CompressionProfile);
        QVERIFY(slow != fast);
        // The rate that the level no longer allows gives way to the highest one that it does.
        QCOMPARE(builder.value(ImfDict::CompressionProfile), slow.last());
        QVERIFY(builder.setValue(ImfDict::Compression, QStringLiteral("JPEG 2000 reversible")));
        QCOMPARE(builder.choices(ImfDict::CompressionProfile).size(), 1);
    }

    void theAudioMappingTravelsWithTheSettings()
    {
        FormatBuilder builder{OutputFormat()};
        const QJsonArray mapping{QJsonObject{{"Out", 1}, {"In", QJsonArray{2}}}};
        builder.setAudioMapping(mapping);
        QCOMPARE(stored(builder).mapping, mapping);
    }

    void lengthsThatNoWholeNumberOfSamplesFitsAreRefusedOrPadded_data()
    {
        const support::Rows<QString, int> row;
        const QMap<QString, int> multiples{{"23.976", 1}, {"24", 1}, {"25", 1},    {"29.97", 5},
                                           {"30", 1},     {"50", 1}, {"59.94", 5}, {"60", 1}};
        for (auto one = multiples.begin(); one != multiples.end(); ++one)
            row(qPrintable(one.key()), one.key(), one.value());
    }

    void lengthsThatNoWholeNumberOfSamplesFitsAreRefusedOrPadded()
    {
        const auto [rate, multiple] = support::fetched<QString, int>();
        for (qint64 frames = 1; frames <= 11; ++frames) {
            const Rational exact = words::frameRate(rate);
            const auto plain = compositionFrames(frames, exact, Padding::Refuse, QStringLiteral("clip"));
            QCOMPARE(plain.ok(), frames % multiple == 0);
            const auto padded = compositionFrames(frames, exact, Padding::BlackAndSilence, QStringLiteral("clip"));
            QVERIFY(padded.ok());
            QCOMPARE(*padded % multiple, 0);
            QVERIFY(*padded >= frames && *padded < frames + multiple);
            QCOMPARE(firstSampleOfFrame(*padded, exact, 48000) * exact.num, *padded * 48000 * exact.den);
        }
    }

    void anotherFrameRateKeepsTheRunningTime()
    {
        QCOMPARE(outputFrames(24, {24, 1}, {60, 1}), 60);
        QCOMPARE(outputFrames(60, {60, 1}, {24, 1}), 24);
        QCOMPARE(outputFrames(1001, {24, 1}, {24000, 1001}), 1000);
        QCOMPARE(outputFrames(1, {60, 1}, {24, 1}), 1);
    }

    void namesThatNoFolderCanHaveAreRefused_data()
    {
        const support::Rows<QString, bool> row;
        const QStringList good{"Feature", "Große Übersicht", "a.b", "...a", "con1", "影片"};
        const QStringList bad{"",
                              " ",
                              ".",
                              "..",
                              "a/b",
                              "a\\b",
                              "a\nb",
                              QString::fromLatin1("a\0b", 3),
                              QString(QChar(0xa0)) + QChar(0x200b),
                              "a.",
                              "a ",
                              " a",
                              "a:b",
                              "what?",
                              "NUL",
                              "com1.x",
                              ".stratacut-commit-1",
                              QString(256, 'a'),
                              QString(100, QChar(0x5f71))};
        for (const QString& name : good)
            row(qPrintable("good " + name), name, true);
        for (const QString& name : bad)
            row(qPrintable(QStringLiteral("bad %1").arg(bad.indexOf(name))), name, false);
    }

    void namesThatNoFolderCanHaveAreRefused()
    {
        const auto [name, fit] = support::fetched<QString, bool>();
        QCOMPARE(checkFolderName(name).ok(), fit);
    }
};

STRATACUT_TEST_MAIN(TestOutputFormat)
#include "tst_output_format.moc"
