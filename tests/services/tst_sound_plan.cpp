#include "desk/services/SoundPlan.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QJsonObject>

using namespace desk;
using namespace desk::services;

class TestSoundPlan : public QObject
{
    Q_OBJECT

    static media::Sequence sequenceOf(const QStringList& labels)
    {
        media::Sequence sequence;
        sequence.path = QStringLiteral("/clip.mov");
        for (const QString& label : labels) {
            media::AudioTrackInfo track;
            track.label = label;
            track.language = QStringLiteral("eng");
            sequence.audio += track;
        }
        return sequence;
    }

    /// Every source holds 100 times its number; what each track file then holds.
    static QString mixed(const media::Sequence& sequence, const OutputFormat& format)
    {
        const auto plans = planSound(sequence, format);
        if (!plans)
            return plans.error().sentence();
        QStringList files;
        for (const SoundPlan& plan : *plans) {
            media::SoundBlock block;
            for (int source : plan.sources)
                block.tracks.push_back({100 * (source + 1)});
            std::vector<std::int32_t> samples;
            plan.mix(block, samples);
            QStringList values{plan.format.soundfield};
            for (std::int32_t sample : samples)
                values += QString::number(sample);
            files += values.join(' ');
        }
        return files.join(QStringLiteral(" | "));
    }

    static QJsonObject mapped(int out, const QString& mode, const QJsonArray& in)
    {
        return {{"Out", out},
                {"AudioMixdownSettings", mode},
                {"In", in},
                {"RFC5646SpokenLanguage", "fr"},
                {"AudioContentKind", "None"}};
    }

private slots:

    void unmappedTracksGoWhereTheirLabelsAndTheModeSay_data()
    {
        const support::Rows<QStringList, QString, QString> row;
        const QString m = QStringLiteral("Mono");
        row("none", QStringList(), "Stereo", "");
        row("one", QStringList{m}, "Mono", "sgM 100");
        row("one to stereo", QStringList{m}, "Stereo", "sgST 100 100");
        row("pair", QStringList{m, m}, "Stereo", "sgST 100 200");
        row("pair the wrong way round", QStringList{"R", "L"}, "Stereo", "sgST 200 100");
        row("pair to mono", QStringList{"L", "R"}, "Mono", "sgM 150");
        row("two monos", QStringList{m, m}, "Mono", "sgM 100 | sgM 200");
        row("three", QStringList{m, m, m}, "Stereo", "sgST 100 200 | sgM 300");
        row("film order", QStringList{"L", "C", "R", "Ls", "Rs", "LFE"}, "5.1", "sg51 100 300 200 600 400 500");
        row("eight", QStringList{m, m, m, m, m, m, m, m}, "5.1", "sg51 100 200 300 400 500 600 | sgST 700 800");
        row("stereo, then 5.1", QStringList{"L", "R", "L", "R", "C", "LFE", "Ls", "Rs"}, "5.1",
            "sgST 100 200 | sg51 300 400 500 600 700 800");
        // L + 0.707 (C + Ls), lowered so that the sum of the gains is one.
        row("5.1 to stereo", QStringList{"L", "R", "C", "LFE", "Ls", "Rs"}, "Stereo", "sgST 276 346");
        row("pair to 5.1", QStringList{"L", "R"}, "5.1", "sg51 100 200 0 0 0 0");
    }

    void unmappedTracksGoWhereTheirLabelsAndTheModeSay()
    {
        const auto [labels, mode, expected] = support::fetched<QStringList, QString, QString>();
        OutputFormat format;
        format.audioMix = mode;
        QCOMPARE(mixed(sequenceOf(labels), format), expected);
    }

    void languagesAreNotMixedUnasked()
    {
        media::Sequence sequence = sequenceOf({"Mono", "Mono", "Mono", "Mono"});
        sequence.audio[1].language = QStringLiteral("fra");
        sequence.audio[2].language.clear();
        OutputFormat format;
        format.audioMix = QStringLiteral("Stereo");
        QCOMPARE(mixed(sequence, format), QStringLiteral("sgM 100 | sgST 200 300 | sgM 400"));
        format.mapping = {mapped(1, "Stereo", {1, 2})};
        QCOMPARE(mixed(sequence, format), QStringLiteral("sgST 100 200"));
    }

    void tracksThatAreHeardNowhereAreKnown()
    {
        const media::Sequence sequence = sequenceOf({"L", "R", "LFE"});
        OutputFormat format;
        format.audioMix = QStringLiteral("Stereo");
        QCOMPARE(silentTracks(sequence, *planSound(sequence, format)), QVector<int>{2});
        format.mapping = {mapped(1, "Stereo", {2, 1}), mapped(2, "Mono", {3})};
        QCOMPARE(silentTracks(sequence, *planSound(sequence, format)), QVector<int>());
        QCOMPARE(silentTracks(sequence, {}), (QVector<int>{0, 1, 2}));
    }

    void eachRowOfTheMappingBecomesATrackFile()
    {
        OutputFormat format;
        format.mapping = {mapped(1, "Stereo", {3, 1}), mapped(2, "Mono", {2})};
        const media::Sequence sequence = sequenceOf({"Mono", "Mono", "Mono"});
        QCOMPARE(mixed(sequence, format), QStringLiteral("sgST 300 100 | sgM 200"));
        QCOMPARE(planSound(sequence, format)->first().format.language, QStringLiteral("fr"));
        format.mapping = {};
        QCOMPARE(planSound(sequence, format)->first().format.language, QStringLiteral("en"));
    }

    void aRowThatCannotBeMadeIsNamed_data()
    {
        const support::Rows<QJsonObject> row;
        row("unknown mode", mapped(2, "7.1", {1}));
        row("no source", mapped(2, "Mono", {}));
        row("source beyond the last", mapped(2, "Mono", {3}));
        row("source zero", mapped(2, "Mono", {0}));
    }

    void aRowThatCannotBeMadeIsNamed()
    {
        const auto [entry] = support::fetched<QJsonObject>();
        OutputFormat format;
        format.mapping = {mapped(1, "Mono", {1}), entry};
        const auto plans = planSound(sequenceOf({"Mono", "Mono"}), format);
        QVERIFY(!plans);
        QCOMPARE(plans.error().item, QStringLiteral("IMF track A2"));
        QVERIFY(!plans.error().next.isEmpty());
    }

    void soundThatIsTooLoudIsLimited()
    {
        SoundPlan plan;
        plan.gains = {{1, 1}};
        media::SoundBlock block;
        block.tracks = {{8388607, -8388608}, {8388607, -8388608}};
        std::vector<std::int32_t> samples;
        plan.mix(block, samples);
        QCOMPARE(samples, (std::vector<std::int32_t>{8388607, -8388608}));
    }
};

STRATACUT_TEST_MAIN(TestSoundPlan)
#include "tst_sound_plan.moc"
