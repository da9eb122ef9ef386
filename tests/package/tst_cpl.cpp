#include "StratacutUI/IMFO_Bridge.h"
#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/IMF_Node.h"
#include "StratacutUI/ImfDict.h"
#include "support/FakeTargetFormatBuilder.h"
#include "support/Junk.h"
#include "support/RecordingMediaEngine.h"
#include "support/RecordingOutputBridge.h"
#include "support/TestMain.h"

using support::RecordingMediaEngine;
using support::RecordingOutputBridge;

namespace
{
QJsonObject documentOf(const QString& mobId)
{
    QJsonObject document = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::CPL);
    document[ImfDict::Name] = "Film";
    document[ImfDict::CPLMobID] = mobId;
    document[ImfDict::CPLFPSValue] = "25";
    document[ImfDict::CPLToken] = "token:" + mobId;
    return document;
}

// A CPL in its place in a tree: its identifier is "id/IMP/Film".
class Placed
{
public:
    explicit Placed(const QJsonObject& document, IMF_PackageMgr::Status status = IMF_PackageMgr::Uncommitted)
    {
        m_delivery->value() = IMF_Deliverable(m_delivery, "/out", "Delivery", "id", {});
        m_delivery->push_back(m_imp);
        m_imp->value() = IMF_IMP(m_imp, {{"Name", "IMP"}}, status);
        m_imp->push_back(m_node);
        m_node->value() = IMF_CPL(m_node, document, status);
    }

    IMF_CPL* operator->() { return &boost::get<IMF_CPL>(m_node->value()); }

private:
    std::shared_ptr<IMF_Node> m_delivery = IMF_Node::Create();
    std::shared_ptr<IMF_Node> m_imp = IMF_Node::Create();
    std::shared_ptr<IMF_Node> m_node = IMF_Node::Create();
};

QJsonObject section(Placed& cpl, const char* name)
{
    return cpl->jsonObject().value(QLatin1String(name)).toObject();
}

QString choice(const QJsonValue& parameter)
{
    const QJsonObject object = parameter.toObject();
    return object.value("values").toArray().at(object.value("currentIndex").toInt(-1)).toString();
}

QString video(Placed& cpl, const char* key)
{
    return choice(section(cpl, "Video").value(QLatin1String(key)));
}

QJsonObject kindOf(Placed& cpl)
{
    return section(cpl, "DescriptiveMetadata").value("ContentKind").toObject();
}

QJsonObject withKind(const QJsonValue& kind)
{
    QJsonObject document = documentOf({});
    QJsonObject metadata = document[ImfDict::DescriptiveMetadata].toObject();
    metadata["ContentKind"] = kind;
    document[ImfDict::DescriptiveMetadata] = metadata;
    return document;
}

QJsonObject mix(const QString& source)
{
    return JSON::MakeMultiMix({QJsonObject{{"TargetTrack", "A1"}, {"MixMode", "Mono"}, {"SourceTracksGroups", source}}},
                              {}, {"A1", "A2"});
}

QJsonObject storedMix(Placed& cpl)
{
    return section(cpl, "Audio").value("Multiple Audio Mix").toObject();
}
} // namespace

/// The CPL's payload: its dealings with the builder, the media engine and the output service.
class TestCPL : public QObject
{
    Q_OBJECT

private slots:

    // Stands first: the bridges cannot be taken away again.
    void withoutBridgesTheDocumentStays()
    {
        Placed cpl(documentOf("mob"));
        QVERIFY(cpl->isValid());
        QVERIFY(!cpl->isValidFPS());
        QCOMPARE(cpl->settings(), QString());
        QVERIFY(!cpl->setProperty("Resolution", "3840x2160"));
        QCOMPARE(section(cpl, "Video"), documentOf("mob").value("Video").toObject());
    }

    void init()
    {
        if (qstrcmp(QTest::currentTestFunction(), "withoutBridgesTheDocumentStays") == 0)
            return;
        m_engine = &RecordingMediaEngine::installed();
        m_output = &RecordingOutputBridge::installed();
        m_engine->addSequence("mob", "Film");
    }

    void aParameterIsSetInTheBuilderAndTheSectionsFollow()
    {
        Placed cpl(documentOf("mob"));
        QVERIFY(m_output->calls.isEmpty());
        QCOMPARE(video(cpl, "Frame Rate"), QString("25"));
        QCOMPARE(storedMix(cpl), JSON::DefaultMultiMix());
        QVERIFY(cpl->isValid() && cpl->isValidFPS());
        QVERIFY(!cpl->setProperty("Resolution", "1920x1080"));
        QVERIFY(cpl->setProperty("Resolution", "3840x2160"));
        QCOMPARE(video(cpl, "Resolution"), QString("3840x2160"));
        QCOMPARE(video(cpl, "Compression Profile"), QString("4K"));
        QCOMPARE(section(cpl, "Video").value("Colorimetry").toObject().value("values").toArray().size(), 2);
    }

    void savedChoicesSurviveARestart()
    {
        Placed first(documentOf("mob"));
        const QVector<QPair<QString, QString>> choices{
            {"Resolution", "3840x2160"}, {"Colorimetry", "BT.2020"}, {"Color Depth", "12"}, {"Audio Mix", "5.1"}};
        for (const auto& [key, value] : choices)
            QVERIFY2(first->setProperty(key, value), qPrintable(key));
        QVERIFY(first->setProperty("Multiple Audio Mix", mix("A2")));
        Placed second(first->jsonObject());
        QCOMPARE(second->jsonObject(), first->jsonObject());
        QCOMPARE(second->settings(), first->settings());
        QCOMPARE(m_engine->lastBuilder.lock()->audioMapping, JSON::FlattenMultiMix(mix("A2")));
    }

    void whatIsStoredIsRestoredAsFarAsItGoes()
    {
        offer("Stereoscopic Settings", {});
        QJsonObject document = documentOf("mob");
        document["Video"] = QJsonObject{{"Resolution", "3840x2160"},
                                        {"Color Depth", "16"},
                                        {"Compression", QJsonObject{{"values", 5}, {"currentIndex", 1e9}}},
                                        {"Stereoscopic Settings", "Left eye"}};
        document["Audio"] = QJsonObject{{"Multiple Audio Mix", QJsonObject{{"AudioMapping", 1}}}};
        Placed cpl(document);
        QCOMPARE(video(cpl, "Resolution"), QString("3840x2160"));
        QCOMPARE(video(cpl, "Color Depth"), QString("10"));
        QCOMPARE(video(cpl, "Compression"), QString("JPEG 2000"));
        QCOMPARE(section(cpl, "Video").value("Stereoscopic Settings").toString(), QString("Left eye"));
        QCOMPARE(storedMix(cpl), JSON::DefaultMultiMix());
    }

    void aFrameRateThatIsNotOfferedIsMarked()
    {
        offer("Frame Rate", {"23.976", "Unknown"});
        // "Unknown" counts as no rate though it is offered.
        for (const char* rate : {"12", "Unknown", ""}) {
            QJsonObject document = documentOf("mob");
            document[ImfDict::CPLFPSValue] = rate;
            Placed cpl(document);
            QVERIFY(!cpl->isValidFPS() && cpl->isValid());
            QCOMPARE(video(cpl, "Frame Rate"), QString("23.976"));
        }
    }

    void aSequenceThatIsGoneMakesTheCPLInvalid()
    {
        Placed cpl(documentOf("mob"));
        m_engine->sequences.clear();
        QVERIFY(cpl->isValid());
        QVERIFY(!cpl->validateParams() && !cpl->isValid());
        cpl->setTokenInfo({});
        QVERIFY(cpl->isValid());
        QVERIFY(!Placed(documentOf("stranger"))->isValid());
        QVERIFY(!Placed(QJsonObject())->isValid());
    }

    void contentKindsKeepTheirCode()
    {
        const QVector<QPair<QJsonValue, QString>> kinds{
            {"Public Service Announcement - PSA", "psa"},
            {QJsonObject{{"Scope", "old"}, {"Value", "transitional"}}, "transitional"},
            {" ", ""},
            {QJsonObject{{"Value", "documentary"}}, "documentary"},
            {QJsonValue::Undefined, ""}};
        for (const auto& [stored, code] : kinds) {
            Placed cpl(withKind(stored));
            QCOMPARE(kindOf(cpl).value("Value").toString("missing"), code);
            QCOMPARE(kindOf(cpl).value("Scope").toString(),
                     QString("http://www.smpte-ra.org/schemas/2067-3/2013#content-kind"));
            Placed again(cpl->jsonObject());
            QCOMPARE(kindOf(again), kindOf(cpl));
        }
    }

    void theChooserOffersABlankAndTwelveLabels()
    {
        Placed cpl(documentOf("mob"));
        const QJsonArray labels = kindOf(cpl).value("values").toArray();
        QCOMPARE(labels.size(), 13);
        QCOMPARE(labels.at(0).toString("missing"), QString());
        for (int i = 1; i < labels.size(); ++i) {
            QVERIFY(cpl->setProperty("ContentKind", labels.at(i).toString()));
            QVERIFY(!cpl->setProperty("ContentKind", labels.at(i).toString()));
            const QString code = kindOf(cpl).value("Value").toString();
            // Views find the label again by looking for the code in it.
            QVERIFY2(labels.at(i).toString().contains(code, Qt::CaseInsensitive), qPrintable(code));
            QCOMPARE(ImfDict::contentKindLabel(code), labels.at(i).toString());
        }
        QVERIFY(cpl->setProperty("ContentKind", ""));
        QCOMPARE(kindOf(cpl).value("Value").toString("missing"), QString());
    }

    void onlyAMixThatFlattensOtherwiseReachesTheHost()
    {
        Placed cpl(documentOf("mob"));
        const auto builder = m_engine->lastBuilder.lock();
        QVERIFY(cpl->setProperty("Multiple Audio Mix", mix("A2")));
        QCOMPARE(builder->audioMapping, JSON::FlattenMultiMix(mix("A2")));
        builder->calls.clear();
        QVERIFY(!cpl->setProperty("Multiple Audio Mix", mix("A2 Mono")));
        QVERIFY(builder->calls.isEmpty());
        QCOMPARE(storedMix(cpl), mix("A2"));
        // A group of that track is no news for the host, but another source; so is the track once the group is gone.
        QJsonObject grouped = mix("Mic 2");
        grouped["Groups"] = QJsonArray{QJsonObject{
            {"Name", "Mic 2"}, {"Include Master Fader", false}, {"Tracks", QJsonArray{QStringLiteral("A2")}}}};
        for (const QJsonObject& other : {grouped, mix("Mic 2")}) {
            QVERIFY(!cpl->setProperty("Multiple Audio Mix", other));
            QVERIFY(builder->calls.isEmpty());
            QCOMPARE(storedMix(cpl), other);
        }
    }

    void aCommittedCPLShowsWhatTheHostReports()
    {
        auto& reported = m_output->trackInfos["id/IMP/Film"];
        reported["Resolution"] = {{"1998x1080", "2048x1080"}, 1, {}};
        reported["ContentKind"] = {{"Trailer - TLR"}, 0, {}};
        reported["Color Depth"] = {};
        reported["Multiple Audio Mix"].audioMapping = {QJsonObject{{"AudioMixdownSettings", "5.1"}}};
        QJsonObject document = documentOf("mob");
        document["Mutable"] = false;
        document["Video"] = QJsonObject{{"Color Depth", "16"}};
        Placed cpl(documentOf("mob"));
        cpl->updateCommittedJsonObject(document);
        QCOMPARE(cpl->status(), IMF_PackageMgr::Committed);
        QCOMPARE(video(cpl, "Resolution"), QString("2048x1080"));
        QCOMPARE(section(cpl, "Video").value("Color Depth").toString(), QString("16"));
        QCOMPARE(kindOf(cpl).value("Value").toString(), QString("trailer"));
        QCOMPARE(JSON::GetAudioMapping(cpl->jsonObject()).first().toObject().value("MixMode").toString(),
                 QString("5.1"));
    }

    void whatWasWrittenCountsMoreThanTheBuildersDefaults()
    {
        QJsonObject document = documentOf("mob");
        document["Mutable"] = false;
        document["Video"] = QJsonObject{{"Color Depth", "16"}, {"Resolution", "3840x2160"}, {"Frame Rate", "48"}};
        m_output->fail("getCPLTrackInfo", 1, "Not now.");
        Placed cpl(document, IMF_PackageMgr::Committed);
        QCOMPARE(section(cpl, "Video").value("Color Depth").toString(), QString("16"));
        QCOMPARE(section(cpl, "Video").value("Frame Rate").toString(), QString("48"));
        QCOMPARE(video(cpl, "Resolution"), QString("3840x2160"));
        QVERIFY(cpl->isValidFPS());

        struct Nameless : support::FakeTargetFormatBuilder {
            QString frameRate() const override { return {}; }
        };

        const std::vector<std::shared_ptr<TargetFormatBuilder>> builders{nullptr, std::make_shared<Nameless>()};
        for (const auto& builder : builders) {
            m_engine->makeBuilder = [builder] { return builder; };
            Placed bare(documentOf("mob"), IMF_PackageMgr::Committed);
            QCOMPARE(video(bare, "Frame Rate"), QString("Unknown"));
        }
    }

    void aDamagedDocumentIsSettledAtOnceAndSurvivesEveryEdit()
    {
        const QStringList keys{"Name",       "Mutable",     "DescriptiveMetadata", "Video",   "Resolution",
                               "Frame Rate", "Color Depth", "Multiple Audio Mix",  "Audio",   "ContentKind",
                               "Value",      "values",      "currentIndex",        "Issuer",  "AudioMapping",
                               "Groups",     "CPLFPSValue", "AllActiveTracks",     "MixMode", "TargetTrack"};
        support::Junk junk(support::seed(), keys, {"", "A1", "25", "Unknown", "mob", "feature", "3840x2160", "12"});
        for (int i = 0; i < 400; ++i) {
            QJsonObject document = documentOf("mob");
            for (int damages = 1 + junk.below(4); damages > 0; --damages)
                junk.damage(document);
            const QByteArray where = QJsonDocument(document).toJson();
            const auto status = static_cast<IMF_PackageMgr::Status>(junk.below(2));
            Placed cpl(document, status);
            QVERIFY2(Placed(cpl->jsonObject(), status)->jsonObject() == cpl->jsonObject(), where);
            for (int edit = 0; edit < 5; ++edit) {
                const QJsonObject before = cpl->jsonObject();
                const bool changed = cpl->setProperty(junk.key(), junk.value(3));
                QVERIFY2(changed || cpl->jsonObject() == before, where);
                QVERIFY2(!changed || status == IMF_PackageMgr::Uncommitted, where);
            }
            cpl->updateCommittedJsonObject(junk.object(3));
            QVERIFY2(!cpl->setProperty(junk.key(), junk.text()), where);
        }
    }

private:
    /// Makes the next builders offer these choices.
    void offer(const QString& key, const QStringList& choices)
    {
        m_engine->makeBuilder = [=] {
            auto builder = std::make_shared<support::FakeTargetFormatBuilder>();
            builder->otherChoices[key] = choices;
            return builder;
        };
    }

    RecordingMediaEngine* m_engine = nullptr;
    RecordingOutputBridge* m_output = nullptr;
};

STRATACUT_TEST_MAIN(TestCPL)
#include "tst_cpl.moc"
