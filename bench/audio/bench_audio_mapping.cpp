// The audio mapping of a sequence of 128 tracks and 50 groups, with 128 rows: against twice as many bare combo boxes
// with the same lists.

#include "audio/IMF_TrackGroupingManager.h"
#include "support/IdleHost.h"

#include "NvCore/Toggles.h"
#include "StratacutUI/AudioMappingWidget.h"
#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/ImfDict.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonObject>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace
{
constexpr int tracks = 128;
constexpr int groups = 50;
constexpr int rows = 128;
constexpr int rounds = 15;

class Mixes : public IAudioMixDescription
{
public:
    QStringList list(const QString&) const override
    {
        return {"Mono", "Stereo", "Dual Mono", "LCR", "5.1", "5.1 to Stereo", "7.1"};
    }
};

class TrackEngine : public IdleEngine
{
public:
    const IAudioMixDescription* audioMixDescription(const QAbstractItemModel*) override { return &m_mixes; }

    QString trackLabel(const QAbstractItemModel*, int) override { return QStringLiteral("Stereo"); }

private:
    Mixes m_mixes;
};

QString groupName(int number)
{
    return QStringLiteral("Group %1").arg(number);
}

QStandardItemModel* trackModel()
{
    static QStandardItemModel model(tracks, 3);
    for (int row = 0; row < tracks; ++row) {
        model.setItem(row, 1, new QStandardItem(QStringLiteral("A%1").arg(row + 1)));
        model.setItem(row, 2, new QStandardItem(QStringLiteral("Track %1").arg(row + 1)));
    }
    return &model;
}

std::unique_ptr<IMF_TrackGroupingManager> manager()
{
    static QStandardItemModel* model = trackModel();
    QJsonArray array;
    for (int number = 0; number < groups; ++number)
        array.append(QJsonObject{{ImfDict::Name, groupName(number)},
                                 {ImfDict::IncludeMasterFader, false},
                                 {ImfDict::Tracks, QJsonArray{"A1", "A2"}}});
    return std::make_unique<IMF_TrackGroupingManager>(model, array);
}

QJsonObject mapping()
{
    QJsonArray array;
    for (int row = 0; row < rows; ++row)
        array.append(QJsonObject{{ImfDict::TargetTrack, QStringLiteral("A%1").arg(row + 1)},
                                 {ImfDict::MixMode, "5.1"},
                                 {ImfDict::SourceTracksGroups, groupName(row % groups)},
                                 {ImfDict::Metadata, QJsonObject{{ImfDict::RFC5646SpokenLanguage, "en-AU"},
                                                                 {ImfDict::AudioContentKind, "PRM"}}}});
    return {{ImfDict::AudioMapping, array}};
}

void fillBare(QWidget& page, const QStringList& entries)
{
    auto* box = new QComboBox(&page);
    for (const QString& entry : entries) {
        if (entry == QLatin1String("----------"))
            box->insertSeparator(box->count());
        else
            box->addItem(entry);
    }
    box->setCurrentIndex(box->count() - 1);
    page.layout()->addWidget(box);
}

double milliseconds(const std::function<void()>& action)
{
    QElapsedTimer timer;
    timer.start();
    action();
    return double(timer.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    return times.at(times.size() / 2);
}

struct Times {
    std::vector<double> fill;
    std::vector<double> show;
    std::vector<double> refill;
};

void measureOwn(Times& times)
{
    QWidget page;
    QVBoxLayout layout(&page);
    AudioMappingWidget widget(QStringLiteral("id"), std::make_unique<IMF_TrackGroupingManager>(nullptr, QJsonArray()),
                              nullptr);
    layout.addWidget(&widget);
    const QJsonObject document = mapping();
    const auto fill = [&] {
        widget.setTrackGroupingManager(manager());
        widget.setValue(document);
    };
    times.fill.push_back(milliseconds(fill));
    times.show.push_back(milliseconds([&page] { page.grab(); }));
    times.refill.push_back(milliseconds(fill));
}

void measurePeer(Times& times)
{
    QWidget page;
    QVBoxLayout layout(&page);
    const QStringList sources = manager()->getSourceList();
    const QStringList mixes = manager()->getAudioMixList();
    times.fill.push_back(milliseconds([&] {
        for (int row = 0; row < rows; ++row) {
            fillBare(page, sources);
            fillBare(page, mixes);
        }
    }));
    times.show.push_back(milliseconds([&page] { page.grab(); }));
}

void print(const char* question, double own, double peer, const char* target)
{
    std::printf("%s | %.2f x (%.1f ms against %.1f ms) | %s\n", question, own / peer, own, peer, target);
}

void compare()
{
    Times own;
    Times peer;
    // The first of a process also pays for fonts and images.
    for (int round = -1; round < rounds; ++round) {
        if (round == 0)
            own = peer = {};
        measureOwn(own);
        measurePeer(peer);
    }
    print("fill an audio mapping with 128 rows of 128 tracks and 50 groups, against 256 bare combo boxes",
          median(own.fill), median(peer.fill), "at most 1.5 x");
    print("fill it again, against the same", median(own.refill), median(peer.fill), "at most 1.5 x");
    print("lay it out and paint it for the first time, against the same", median(own.show), median(peer.show),
          "no limit: rows hold more than two boxes");
}
} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    IMF_MXE_bridge::Initialize(std::make_unique<TrackEngine>());
    TGL_SetToggle("/Stratacut/IMFMCAMetadata", true);
    compare();
    return 0;
}
