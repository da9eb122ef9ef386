#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/ImfDict.h"
#include "support/Assertions.h"
#include "support/Junk.h"
#include "support/TestMain.h"

namespace
{
using Damage = std::function<void(QJsonObject&)>;

QJsonObject entry(const QString& target, const QString& source)
{
    return {{"TargetTrack", target},
            {"MixMode", "Stereo"},
            {"SourceTracksGroups", source},
            {"Metadata", QJsonObject{{"AudioContentKind", "PRM"}, {"RFC5646SpokenLanguage", "en-GB"}}}};
}

QJsonObject group(const QString& name, const QJsonArray& tracks)
{
    return {{"Name", name}, {"Include Master Fader", true}, {"Tracks", tracks}};
}

QJsonObject goodMix()
{
    return JSON::MakeMultiMix({entry("A1", "Dialogue"), entry("A12", "All Active Tracks")},
                              {group("Dialogue", {"A2", "A3"})}, {"A1", "A2", "A3"});
}

void changeFirst(QJsonObject& mix, const char* array, const std::function<void(QJsonObject&)>& change)
{
    QJsonArray elements = mix[array].toArray();
    QJsonObject first = elements[0].toObject();
    change(first);
    elements[0] = first;
    mix[array] = elements;
}

Damage dropFromFirst(const char* array, const char* key)
{
    return [=](QJsonObject& mix) { changeFirst(mix, array, [key](QJsonObject& first) { first.remove(key); }); };
}

Damage drop(const char* key)
{
    return [=](QJsonObject& mix) { mix.remove(key); };
}

Damage set(const char* key, const QJsonValue& value)
{
    return [=](QJsonObject& mix) { mix[key] = value; };
}

QJsonObject documentWith(const QJsonObject& mix, const QJsonValue& isMutable)
{
    return {{"Mutable", isMutable}, {"Audio", QJsonObject{{"Multiple Audio Mix", mix}}}};
}
} // namespace

/// The multi-mix: checks, conversions, damage.
class TestMultiMix : public QObject
{
    Q_OBJECT

private slots:

    void damageIsFoundWhereItMatters_data()
    {
        const support::Rows<Damage, bool, bool> row;
        row("no mapping", drop("AudioMapping"), false, false);
        row("an entry is a text", set("AudioMapping", QJsonArray{"A1"}), false, false);
        row("no mix mode", dropFromFirst("AudioMapping", "MixMode"), false, false);
        row("no target", dropFromFirst("AudioMapping", "TargetTrack"), false, false);
        row("no source", dropFromFirst("AudioMapping", "SourceTracksGroups"), false, true);
        row("no groups", drop("Groups"), false, true);
        row("a group is a number", set("Groups", QJsonArray{1}), false, true);
        row("a group without name", dropFromFirst("Groups", "Name"), false, true);
        row("a group without tracks", dropFromFirst("Groups", "Tracks"), false, true);
        row("no active tracks", drop("AllActiveTracks"), false, true);
    }

    void damageIsFoundWhereItMatters()
    {
        const auto [damage, passes, passesBurned] = support::fetched<Damage, bool, bool>();
        QJsonObject mix = goodMix();
        QVERIFY(JSON::VerifyMultiMix(mix, false) && JSON::VerifyMultiMix(mix, true));
        damage(mix);
        QVERIFY(mix != goodMix());
        QCOMPARE(JSON::VerifyMultiMix(mix, false), passes);
        QCOMPARE(JSON::VerifyMultiMix(mix, true), passesBurned);
    }

    void aMixIsReadByTheRulesOfItsDocument()
    {
        QJsonObject mix = goodMix();
        mix.remove("Groups");
        const QString key = ImfDict::MultipleAudioMix;
        QVERIFY(!JSON::GetAudioValue(documentWith(mix, true), key).isValid());
        QCOMPARE(JSON::GetAudioValue(documentWith(mix, false), key).toJsonObject(), mix);
        QCOMPARE(JSON::GetAudioMapping(documentWith(mix, QJsonValue::Undefined)).size(), 2);
        const QVariant none = JSON::GetAudioValue(QJsonObject{{"Audio", QJsonObject()}}, key);
        QCOMPARE(none.userType(), int(QMetaType::QJsonObject));
    }

    void olderMappingsAreNumberedInOrder()
    {
        const QJsonObject old{{"AudioMixdownSettings", "5.1"}, {"AudioContentKind", "PRM"}, {"Other", 1}};
        const QJsonObject metadata{{"AudioContentKind", "PRM"}, {"RFC5646SpokenLanguage", ""}};
        const QJsonArray mapping = JSON::MigrateLegacyMapping({old, 7, old});
        QCOMPARE(mapping.at(2).toObject(),
                 (QJsonObject{{"MixMode", "5.1"}, {"TargetTrack", "A3"}, {"Metadata", metadata}}));
        QCOMPARE(mapping.at(1).toObject().value("TargetTrack").toString(), QString("A2"));
    }

    void flatEntriesCarryNumbersAndLabels()
    {
        const QJsonArray flat = JSON::FlattenMultiMix(goodMix());
        QCOMPARE(flat.size(), 2);
        QCOMPARE(flat.at(1).toObject(), (QJsonObject{{"Out", 12},
                                                     {"AudioMixdownSettings", "Stereo"},
                                                     {"AudioIncludeMasterFader", false},
                                                     {"RFC5646SpokenLanguage", "en-GB"},
                                                     {"AudioContentKind", "PRM"},
                                                     {"In", QJsonArray{1, 2, 3}}}));
    }

    void sourcesResolveToTrackNumbers()
    {
        const QVector<QPair<QString, QJsonArray>> sources{
            {"Dialogue", {2, 3}}, {"All Active Tracks", {1, 2, 3}}, {"A4 Mono 5.1", {4}}, {"no such group", {0}}};
        for (const auto& [source, tracks] : sources) {
            QJsonObject mix = goodMix();
            mix["AudioMapping"] = QJsonArray{entry("A1", source)};
            QCOMPARE(JSON::FlattenMultiMix(mix).first().toObject().value("In").toArray(), tracks);
        }
    }

    void noJsonAtAllBreaksThePromises()
    {
        const QStringList mixKeys{"AudioMapping", "Groups",   "AllActiveTracks",     "Name",
                                  "Tracks",       "MixMode",  "SourceTracksGroups",  "Include Master Fader",
                                  "TargetTrack",  "Metadata", "AudioMixdownSettings"};
        const QStringList mixTexts{"A1", "A99999999999", "Dialogue", "All Active Tracks", "", "x7y8", "Stereo"};
        support::Junk junk(support::seed(), mixKeys, mixTexts);
        support::Assertions assertions;
        for (int i = 0; i < 3000; ++i) {
            const QJsonObject mix = junk.object(3);
            const QByteArray where = QJsonDocument(mix).toJson();
            const bool passes = JSON::VerifyMultiMix(mix, false);
            QVERIFY2(!passes || JSON::VerifyMultiMix(mix, true), where);
            QCOMPARE(JSON::FlattenMultiMix(mix).size(), mix["AudioMapping"].toArray().size());
            const QJsonArray migrated = JSON::MigrateLegacyMapping(junk.array(3));
            QVERIFY2(JSON::VerifyAudioMapping(migrated, true), where);
            const QJsonArray read = JSON::GetAudioMapping(documentWith(mix, true));
            QVERIFY2(read == (passes ? mix["AudioMapping"].toArray() : QJsonArray()), where);
            JSON::GetAudioMapping(junk.value(3));
        }
    }
};

STRATACUT_TEST_MAIN(TestMultiMix)
#include "tst_multimix.moc"
