#include "desk/services/CompositionBuilder.h"
#include "support/TestMain.h"

using namespace desk;
using namespace desk::services;

class TestCompositionBuilder : public QObject
{
    Q_OBJECT

private slots:

    void theStartTimecodeFollowsTheRate_data()
    {
        QTest::addColumn<QString>("start");
        QTest::addColumn<QVector<qint64>>("sequence");
        QTest::addColumn<QVector<qint64>>("output");
        QTest::addColumn<QString>("expected");
        const QVector<qint64> film{24, 1};
        const QVector<qint64> pal{25, 1};
        const QVector<qint64> ntsc{30000, 1001};
        const QVector<qint64> ntscTwice{60000, 1001};
        QTest::newRow("none") << "" << film << film << "";
        QTest::newRow("same rate") << "01:00:00:23" << film << film << "01:00:00:23 at 24";
        QTest::newRow("same rate, drop-frame") << "00:59:59;29" << ntsc << ntsc << "00:59:59:29 at 30, drop-frame";
        QTest::newRow("fewer frames a second") << "01:00:00:24" << pal << film << "01:00:00:23 at 24";
        QTest::newRow("twice the frames") << "01:01:00;02" << ntsc << ntscTwice << "01:01:00:04 at 60, drop-frame";
        QTest::newRow("a rate that drops none") << "01:00:00;29" << ntsc << pal << "01:00:00:24 at 25";
    }

    void theStartTimecodeFollowsTheRate()
    {
        QFETCH(QVector<qint64>, sequence);
        QFETCH(QVector<qint64>, output);
        QFETCH(QString, start);
        WrittenTracks tracks;
        tracks.startTimecode = start;
        tracks.sequenceRate = {sequence[0], sequence[1]};
        tracks.picture.editRate = {output[0], output[1]};
        const auto timecode = buildComposition(tracks, {}).timecode;
        QString found;
        if (timecode)
            found = QStringLiteral("%1 at %2").arg(timecode->start).arg(timecode->rate) +
                    (timecode->dropFrame ? ", drop-frame" : "");
        QTEST(found, "expected");
    }

    void whatIsSpokenStandsInItsLocale()
    {
        WrittenTracks tracks;
        tracks.picture.editRate = {24, 1};
        tracks.languages = QStringList{"en-US", "", "zxx", "fr", "en-US"};
        QCOMPARE(buildComposition(tracks, {}).locales.value(0).languages, (QStringList{"en-US", "fr"}));
        tracks.languages = QStringList{"und"};
        QVERIFY(buildComposition(tracks, {}).locales.isEmpty());
    }
};

STRATACUT_TEST_MAIN(TestCompositionBuilder)
#include "tst_composition_builder.moc"
