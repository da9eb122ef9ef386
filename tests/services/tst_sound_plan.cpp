#include "StratacutUI/IMF_DataParser.h"
#include "desk/base/Timecode.h"
#include "desk/services/AudioMapping.h"
#include "desk/services/DefaultMapping.h"
#include "desk/services/SoundMixer.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QJsonObject>
#include <QRegularExpression>

using namespace desk;
using namespace desk::services;

class TestSoundPlan : public QObject
{
    Q_OBJECT

    static BinItem sequenceOf(const QStringList& labels)
    {
        BinItem sequence;
        sequence.path = QStringLiteral("/clip.mov");
        for (const QString& label : labels)
            sequence.audio += BinTrack{QStringLiteral("A%1").arg(sequence.audio.size() + 1), label, {}, "eng"};
        return sequence;
    }

    /// Every source holds 100 times its number; what each track file then holds.
    static QString mixed(const BinItem& sequence, const OutputFormat& format)
    {
        const auto plans = planSound(sequence, format);
        if (!plans)
            return plans.error().sentence();
        QStringList files;
        for (const SoundPlan& plan : *plans) {
            media::SoundBlock block;
            for (int source : plan.sources)
                block.tracks.push_back({100 * (source + 1)});
            SoundMixer mixer(plan, plan.sources);
            QStringList values{plan.format.soundfield};
            for (const std::int32_t* channel : mixer.mix(block))
                values += QString::number(*channel);
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

    static QJsonObject with(QJsonObject object, const char* key, const QJsonValue& value)
    {
        object[QLatin1String(key)] = value;
        return object;
    }

    static QJsonObject row(const QString& target, const QString& source)
    {
        return {{"TargetTrack", target}, {"MixMode", "Mono"}, {"SourceTracksGroups", source}};
    }

    static QJsonObject group(const QString& name, const QJsonArray& tracks)
    {
        return {{"Name", name}, {"Include Master Fader", true}, {"Tracks", tracks}};
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
        row("7.1 as files have it", QStringList{"L", "R", "C", "LFE", "Lrs", "Rrs", "Ls", "Rs"}, "7.1",
            "sg71 100 200 300 400 700 800 500 600");
        // Ls + 0.707 Lrs, lowered.
        row("7.1 to 5.1", QStringList{"L", "R", "C", "LFE", "Ls", "Rs", "Lrs", "Rrs"}, "5.1",
            "sg51 59 117 176 234 583 683");
        row("5.0, then stereo", QStringList{"L", "R", "C", "Ls", "Rs", "L", "R"}, "5.0",
            "sg50 100 200 300 400 500 | sgST 600 700");
        row("6.1", QStringList{"L", "R", "C", "LFE", "Cs", "Ls", "Rs"}, "6.1", "sg61 100 200 300 400 600 700 500");
        row("4.0", QStringList{"L", "R", "C", "Cs"}, "4.0", "sg40 100 200 300 400");
        row("7.1 with screen channels", QStringList{"L", "R", "C", "LFE", "Ls", "Rs", "Lc", "Rc"}, "7.1 SDS",
            "sgSDS 100 700 300 800 200 400 500 600");
        row("five without labels", QStringList{m, m, m, m, m}, "5.0", "sg50 100 200 300 400 500");
        // C and half of Cs on both sides, lowered.
        row("4.0 to stereo", QStringList{"L", "R", "C", "Cs"}, "Stereo", "sgST 232 277");
        row("pair to 5.1", QStringList{"L", "R"}, "5.1",
            "/clip.mov, IMF track A1: \"5.1\" needs 6 tracks and gets 2 (A1, A2); map 6 tracks or choose another mix "
            "mode.");
    }

    void unmappedTracksGoWhereTheirLabelsAndTheModeSay()
    {
        const auto [labels, mode, expected] = support::fetched<QStringList, QString, QString>();
        OutputFormat format;
        format.audioMix = mode;
        const BinItem sequence = sequenceOf(labels);
        QCOMPARE(mixed(sequence, format), expected);
        // Where every track goes into a channel of its own, rows say the same.
        const auto rows = defaultMapping(sequence, format, {group("A1-A6", {"A2"})});
        const int own = expected.count(QRegularExpression(QStringLiteral(" [0-9]+00\\b")));
        QCOMPARE(rows.has_value(), !labels.isEmpty() && own == labels.size());
        if (rows)
            format.mapping = *flatAudioMapping(*rows, sequence);
        QCOMPARE(mixed(sequence, format), expected);
    }

    void aModeMakesOfItsTracksWhatItSays_data()
    {
        const support::Rows<QStringList, QString, QString> row;
        const QString m = QStringLiteral("Mono");
        const QStringList six{m, m, m, m, m, m};
        const QStringList film{"L", "C", "R", "Ls", "Rs", "LFE"};
        row("sum", QStringList{m, m, m}, "Mono", "sgM 600");
        row("sum without LFE", QStringList{"L", "LFE"}, "Mono", "sgM 100");
        row("LFE alone", QStringList{"LFE"}, "Mono", "sgM 100");
        row("sides by turns", QStringList{m, m, m}, "Stereo", "sgST 400 200");
        row("places", QStringList{"L", "R", "C"}, "Stereo", "sgST 312 412");
        row("fold by order", six, "5.1 to Stereo", "sgST 666 836");
        row("fold by label", film, "5.1 to Stereo", "sgST 524 795");
        row("dual mono", QStringList{m, m}, "Dual Mono", "sgDM 100 200");
        row("Lt-Rt", QStringList{m, m}, "Lt-Rt", "sgLtRt 100 200");
        row("5.0", QStringList{"L", "R", "C", "Ls", "Rs"}, "5.0", "sg50 100 200 300 400 500");
        row("5.1 by label", film, "5.1", "sg51 100 300 200 600 400 500");
        row("two layers", six + six, "5.1", "sg51 800 1000 1200 1400 1600 1800");
        row("labelled layers", film + QStringList{"C"}, "5.1", "sg51 100 300 900 600 400 500");
        row("7.1", six + QStringList{m, m}, "7.1", "sg71 100 200 300 400 500 600 700 800");
        row("discrete", QStringList{m, m, m}, "Discrete", "sgDNS 100 200 300");
        const QString needs = QStringLiteral("/clip.mov, IMF track A1: \"%1\" needs %2 tracks and gets %3 (%4); map %2 "
                                             "tracks or choose another mix mode.");
        row("two for six", QStringList{m, m}, "5.1", needs.arg("5.1", "6", "2", "A1, A2"));
        row("two to be folded", QStringList{m, m}, "5.1 to Stereo", needs.arg("5.1 to Stereo", "6", "2", "A1, A2"));
        row("three for two", QStringList{m, m, m}, "Dual Mono", needs.arg("Dual Mono", "2", "3", "A1, A2, A3"));
    }

    void aModeMakesOfItsTracksWhatItSays()
    {
        const auto [labels, mode, expected] = support::fetched<QStringList, QString, QString>();
        OutputFormat format;
        QJsonArray all;
        for (int track = 1; track <= labels.size(); ++track)
            all += track;
        format.mapping = {mapped(1, mode, all)};
        QCOMPARE(mixed(sequenceOf(labels), format), expected);
    }

    void languagesAreNotMixedUnasked()
    {
        BinItem sequence = sequenceOf({"Mono", "Mono", "Mono", "Mono"});
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
        const BinItem sequence = sequenceOf({"L", "R", "LFE"});
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
        const BinItem sequence = sequenceOf({"Mono", "Mono", "Mono"});
        QCOMPARE(mixed(sequence, format), QStringLiteral("sgST 300 100 | sgM 200"));
        QCOMPARE(planSound(sequence, format)->first().format.language, QStringLiteral("fr"));
        format.mapping = {};
        QCOMPARE(planSound(sequence, format)->first().format.language, QStringLiteral("en"));
    }

    void aRowThatCannotBeMadeIsNamed_data()
    {
        const support::Rows<QJsonObject> row;
        row("unknown mode", mapped(2, "22.2", {1}));
        row("no source", mapped(2, "Mono", {}));
        row("source beyond the last", mapped(2, "Mono", {3}));
        row("source zero", mapped(2, "Mono", {0}));
        row("language", with(mapped(2, "Mono", {1}), "RFC5646SpokenLanguage", "en_US"));
        row("kind", with(mapped(2, "Mono", {1}), "AudioContentKind", "XYZ"));
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

    void aMappingThatDoesNotFitTheSequenceIsRefused_data()
    {
        const support::Rows<QJsonArray, QJsonArray, QString> row;
        const QJsonArray one{TestSoundPlan::row("A1", "Dialogue 2")};
        const QJsonArray none;
        row("group that is gone", one, none, "IMF track A1: its source \"Dialogue 2\" is neither");
        row("track that is gone", QJsonArray{TestSoundPlan::row("A1", "A4 Mono ")}, none, "\"A4 Mono \" is neither");
        row("name of a track alone", QJsonArray{TestSoundPlan::row("A1", "A1")}, none, "\"A1\" is neither");
        row("group of a lost track", one, QJsonArray{group("Dialogue 2", {"A1", "A9"})},
            "IMF track A1, group \"Dialogue 2\": the sequence has no track \"A9\"");
        row("empty group", one, QJsonArray{group("Dialogue 2", {})}, "the group has no tracks");
        row("group of numbers", one, QJsonArray{group("Dialogue 2", {1})}, "is no track");
        row("namesakes", one, QJsonArray{group("Dialogue 2", {"A1"}), group("Dialogue 2", {"A2"})}, "several groups");
        row("group called like a track", QJsonArray{TestSoundPlan::row("A1", "A1 Mono ")},
            QJsonArray{group("A1 Mono ", {"A2"})}, "group \"A1 Mono \": a track of the sequence is called so, too");
        row("mapped twice", QJsonArray{TestSoundPlan::row("A1", "A1 Mono"), TestSoundPlan::row("A1", "A2 Mono")}, none,
            "IMF track A1: it is mapped twice");
        const QJsonObject good = TestSoundPlan::row("A1", "A1 Mono");
        row("target", QJsonArray{with(good, "TargetTrack", 1)}, none,
            "row 1 of the audio mapping: its \"TargetTrack\"");
        row("mode", QJsonArray{with(good, "MixMode", 51)}, none, "its \"MixMode\" is of no use");
        row("source", QJsonArray{with(good, "SourceTracksGroups", QJsonArray())}, none, "\"SourceTracksGroups\"");
        row("metadata", QJsonArray{with(good, "Metadata", "en")}, none, "its \"Metadata\"");
        row("label", QJsonArray{with(good, "Metadata", QJsonObject{{"AudioContentKind", 1}})}, none,
            "\"AudioContentKind\"");
        row("legacy form", QJsonArray{QJsonObject{{"AudioMixdownSettings", "Stereo"}}}, none, "cannot be read");
    }

    void aMappingThatDoesNotFitTheSequenceIsRefused()
    {
        const auto [mapping, groups, expected] = support::fetched<QJsonArray, QJsonArray, QString>();
        const QJsonObject mix = JSON::MakeMultiMix(mapping, groups, {"A1", "A2", "A3"});
        const QJsonObject document{{"Audio", QJsonObject{{"Multiple Audio Mix", mix}}}};
        const auto flat = flatAudioMappingOf(document, sequenceOf({"Mono", "Mono", "Mono"}));
        QVERIFY(!flat);
        QVERIFY2(flat.error().sentence().contains(expected), qPrintable(flat.error().sentence()));
        QVERIFY(!flat.error().next.isEmpty());
    }

    void allActiveTracksOfASilentSequenceMakeNothing()
    {
        const QJsonObject mix = JSON::MakeMultiMix({row("A1", "All Active Tracks")}, {}, {});
        QCOMPARE(*flatAudioMapping(mix, sequenceOf({})), QJsonArray());
        QVERIFY(!flatAudioMapping(mix, sequenceOf({"Mono"})));
    }

    void aMixThatIsTooLoudIsToldWithItsFirstSampleAndItsHighestLevel()
    {
        SoundPlan plan{{}, {}, {0, 1}, {{1, 0}, {1, 1}}, {}, {}};
        SoundMixer mixer(plan, {1, 0});
        const media::SoundBlock fits{{{0, 8388607}, {-8388608, 0}}, {}};
        const auto channels = mixer.mix(fits);
        QCOMPARE(std::vector<std::int32_t>(channels[0], channels[0] + 2), fits.tracks[1]);
        QCOMPARE(std::vector<std::int32_t>(channels[1], channels[1] + 2),
                 (std::vector<std::int32_t>{-8388608, 8388607}));
        QVERIFY(!mixer.overload());
        mixer.mix({{{0, 8388607, -8388608}, {0, 1, -8388608}}, {}});
        QVERIFY(mixer.overload());
        QCOMPARE(mixer.overload()->sample, 3);
        QCOMPARE(mixer.overload()->channel, 1);
        QCOMPARE(mixer.overload()->level, 2.0);
    }

    void sourcesAboveFullScaleAreLimitedAfterTheirGains()
    {
        SoundPlan plan{{}, {}, {3, 5}, {{1, 0}, {0.5, 0}, {1, 1}}, {}, {}};
        SoundMixer mixer(plan, {5, 3});
        mixer.mix({{{-5000000, 0}, {0, 8388608}}, {}});
        QVERIFY(mixer.excesses().empty());
        const auto channels = mixer.mix({{{-5000000, 0, 0}, {10000000, -20000000, 20000000}}, {}});
        const std::vector<std::vector<std::int32_t>> expected{
            {8388607, -8388608, 8388607}, {5000000, -8388608, 8388607}, {5000000, -8388608, 8388607}};
        for (std::size_t channel = 0; channel < 3; ++channel)
            QCOMPARE(std::vector<std::int32_t>(channels[channel], channels[channel] + 3), expected[channel]);
        QCOMPARE(int(mixer.excesses().size()), 1);
        QCOMPARE(mixer.excesses().at(3).sample, 3);
        QCOMPARE(mixer.excesses().at(3).level, 20000000.0 / 8388608);
        QVERIFY(!mixer.overload());
        // Too loud, whatever becomes of the source.
        mixer.mix({{{8000000}, {9000000}}, {}});
        QCOMPARE(mixer.overload()->sample, 5);
    }

    void timecodesCountOnFromTheStart_data()
    {
        const support::Rows<QString, int, int, int, QString> row;
        row("none", "", 24, 1, 25, "00:00:01:01");
        row("hour", "01:00:00:00", 25, 1, 25 * 60, "01:01:00:00");
        row("drop", "00:00:59;29", 30000, 1001, 1, "00:01:00;02");
        row("tenth minute", "00:09:59;29", 30000, 1001, 1, "00:10:00;00");
        row("an hour of drop-frame", "01:00:00;00", 30000, 1001, 107892, "02:00:00;00");
        row("drop at 60", "00:00:59;59", 60000, 1001, 1, "00:01:00;04");
        row("midnight", "23:59:59:23", 24, 1, 1, "00:00:00:00");
    }

    void timecodesCountOnFromTheStart()
    {
        const auto [start, num, den, frame, expected] = support::fetched<QString, int, int, int, QString>();
        QCOMPARE(timecodeOf(frame, Rational(num, den), start), expected);
    }
};

STRATACUT_TEST_MAIN(TestSoundPlan)
#include "tst_sound_plan.moc"
