#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/ImfDict.h"
#include "StratacutUI/TargetFormatBuilder.h"
#include "desk/services/MediaEngine.h"
#include "desk/services/MixMode.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include <QFile>
#include <QFont>
#include <QMimeData>
#include <QTemporaryDir>

using namespace desk;
using namespace desk::services;

class TestMediaEngine : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    media::Sequence sequence(Rational rate = {25, 1}, const QStringList& labels = {"L", "R"}) const
    {
        media::Sequence made;
        made.path = m_folder.filePath(QStringLiteral("clip.mov"));
        QFile file(made.path);
        if (!file.open(QIODevice::WriteOnly))
            return made;
        made.id = QStringLiteral("id-1");
        made.name = QStringLiteral("clip");
        made.frameRate = rate;
        made.frames = 50;
        made.picture = media::PictureTrackInfo();
        for (const QString& label : labels) {
            media::AudioTrackInfo track;
            track.name = QStringLiteral("A%1").arg(made.audio.size() + 1);
            track.label = label;
            track.title = QStringLiteral("Main 5");
            made.audio += track;
        }
        return made;
    }

private slots:

    void theBinOutlivesTheRun()
    {
        const QString file = m_folder.filePath(QStringLiteral("bin.json"));
        MediaLibrary(file).add(sequence());
        MediaLibrary library(file);
        MediaEngine engine(&library);
        QCOMPARE(engine.sequenceName(QStringLiteral("id-1")), QStringLiteral("clip"));
        std::string rate;
        engine.sequenceFrameRate(rate, QStringLiteral("id-1"));
        QCOMPARE(rate, std::string("25"));
        QVERIFY(engine.isSequence(QStringLiteral("id-1")));
        QVERIFY(QFile::remove(m_folder.filePath(QStringLiteral("clip.mov"))));
        QVERIFY(!engine.isSequence(QStringLiteral("id-1")));
    }

    void aDamagedBinIsToldAndLeftAlone()
    {
        const QString path = m_folder.filePath(QStringLiteral("damaged.json"));
        support::writeFile(path, "{\"sequences\": 3}");
        MediaLibrary library(path);
        QCOMPARE(library.takeNotices().size(), 1);
        library.add(sequence());
        QCOMPARE(support::fileBytes(path), QByteArray("{\"sequences\": 3}"));
    }

    void anUnknownSequenceIsNothing()
    {
        MediaLibrary library;
        MediaEngine engine(&library);
        const QString id = QStringLiteral("unknown");
        std::string text = "before";
        engine.sequenceToken(text, id);
        QCOMPARE(text, std::string());
        engine.sequenceFrameRate(text, id);
        QCOMPARE(text, std::string("Unknown"));
        QVERIFY(!engine.isSequence(id));
        QVERIFY(engine.createTargetFormatBuilder(QStringLiteral("cpl"), id));
    }

    void aRateThatTheOutputLacksIsUnknownAndWrittenAtTheNearest()
    {
        MediaLibrary library;
        library.add(sequence({15, 1}));
        MediaEngine engine(&library);
        std::string rate;
        engine.sequenceFrameRate(rate, QStringLiteral("id-1"));
        QCOMPARE(rate, std::string("Unknown"));
        QCOMPARE(engine.createTargetFormatBuilder({}, QStringLiteral("id-1"))->frameRate(), QStringLiteral("23.976"));
    }

    void aDragCarriesItsSequences()
    {
        MediaLibrary library;
        MediaEngine engine(&library);
        const QStringList ids{"a", "b"};
        const std::unique_ptr<QMimeData> mime(MediaEngine::mimeData(ids));
        QCOMPARE(engine.mobIdsFromMimeData(mime.get()), ids);
        QMimeData foreign;
        foreign.setData(QStringLiteral("application/x-dnditemdata"), "{\"not\": \"a list\"}");
        QCOMPARE(engine.mobIdsFromMimeData(&foreign), QStringList());
        QCOMPARE(engine.mobIdsFromMimeData(nullptr), QStringList());
    }

    void trackNamesLeadBackToTheirTracks()
    {
        MediaLibrary library;
        library.add(sequence({25, 1}, {"L", "R", "Mono"}));
        MediaEngine engine(&library);
        const std::unique_ptr<QAbstractItemModel> tracks(engine.createTrackDataModel(nullptr, QFont()));
        QVERIFY(!engine.isAudioGroupingModelPopulated(tracks.get()));
        QVERIFY(!engine.isSequenceTrackModel(tracks.get()));
        engine.fillAudioGroupingModel(tracks.get(), QStringLiteral("id-1"));
        engine.fillAudioGroupingModel(tracks.get(), QStringLiteral("id-1"));
        QVERIFY(engine.isAudioGroupingModelPopulated(tracks.get()));
        QVERIFY(engine.isSequenceTrackModel(tracks.get()));
        QCOMPARE(tracks->rowCount(), 3);
        const MXE_TrackColumns columns = engine.trackColumns(tracks.get());
        QCOMPARE(tracks->index(1, columns.name).data().toString(), engine.activeTracks(tracks.get()).at(1));
        QCOMPARE(engine.trackLabel(tracks.get(), 1), QStringLiteral("R"));
        const QStringList modes = engine.audioMixDescription(tracks.get())->list(ImfDict::AudioMix);
        QCOMPARE(QSet<QString>(modes.begin(), modes.end()).size(), mixModeNames().size());
        const QJsonObject entry{{ImfDict::TargetTrack, "A1"},
                                {ImfDict::MixMode, modes.first()},
                                {ImfDict::SourceTracksGroups, "A2 R Main 5"}};
        const QJsonObject everything{{ImfDict::TargetTrack, "A2"},
                                     {ImfDict::MixMode, modes.first()},
                                     {ImfDict::SourceTracksGroups, "All Active Tracks"}};
        const QJsonArray flat = JSON::FlattenMultiMix(
            JSON::MakeMultiMix({entry, everything}, {}, QJsonArray::fromStringList(engine.activeTracks(tracks.get()))));
        QCOMPARE(flat.at(0).toObject()[ImfDict::In].toArray(), QJsonArray{2});
        QCOMPARE(flat.at(1).toObject()[ImfDict::In].toArray(), (QJsonArray{1, 2, 3}));
    }

    void theMixModeThatLosesNothingComesFirst()
    {
        const QHash<int, QString> first{{0, "Mono"}, {1, "Mono"}, {2, "Stereo"}, {3, "Discrete"}, {6, "5.1"}};
        const QList<int> counts = first.keys();
        for (const int count : counts) {
            MediaLibrary library;
            library.add(sequence({25, 1}, QVector<QString>(count, "Mono").toList()));
            MediaEngine engine(&library);
            const std::unique_ptr<QAbstractItemModel> tracks(engine.createTrackDataModel(nullptr, QFont()));
            engine.fillAudioGroupingModel(tracks.get(), QStringLiteral("id-1"));
            QCOMPARE(engine.audioMixDescription(tracks.get())->list(ImfDict::AudioMix).first(), first[count]);
        }
    }

    void aSequenceHasAsManyRowsAsTracks()
    {
        for (int count : {0, 16, 128}) {
            MediaLibrary library;
            QStringList labels;
            for (int track = 0; track < count; ++track)
                labels += QStringLiteral("Mono");
            library.add(sequence({25, 1}, labels));
            MediaEngine engine(&library);
            const std::unique_ptr<QAbstractItemModel> tracks(engine.createTrackDataModel(nullptr, QFont()));
            engine.fillAudioGroupingModel(tracks.get(), QStringLiteral("id-1"));
            QCOMPARE(tracks->rowCount(), count);
            QCOMPARE(engine.activeTracks(tracks.get()).size(), count);
            QCOMPARE(engine.activeTracks(tracks.get()).value(count - 1), count ? QString("A%1").arg(count) : QString());
        }
    }
};

STRATACUT_TEST_MAIN(TestMediaEngine)
#include "tst_media_engine.moc"
