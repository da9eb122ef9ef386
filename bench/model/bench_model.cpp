// The item model with 100,000 CPLs under one IMP.

#include "support/IdleHost.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_DataModelSerializer.h"
#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/IMF_Node.h"
#include "StratacutUI/IMF_PackageDeliveryReader.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QStandardItemModel>

#include <algorithm>
#include <cstdio>
#include <malloc.h>
#include <vector>

namespace
{
using Model = IMF_PackageMgrQtModel;

enum class Origin { New, Disk };

/// A section with a value for every key, as a delivery on disk has it.
QJsonObject filled(QJsonObject section)
{
    for (auto member = section.begin(); member != section.end(); ++member) {
        if (member.value().isString())
            member.value() = QStringLiteral("Value of ") + member.key();
    }
    return section;
}

QJsonObject cplDocument(int number, Origin origin)
{
    QJsonObject document = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::CPL);
    const QString name = QStringLiteral("Composition %1").arg(number);
    document[ImfDict::Name] = name;
    document[ImfDict::Mutable] = origin == Origin::New;
    document[ImfDict::Video] = filled(document[ImfDict::Video].toObject());
    document[ImfDict::Audio] = filled(document[ImfDict::Audio].toObject());
    QJsonObject metadata = filled(document[ImfDict::DescriptiveMetadata].toObject());
    metadata[ImfDict::ContentTitle] = name;
    document[ImfDict::DescriptiveMetadata] = metadata;
    if (origin == Origin::New)
        document[ImfDict::CPLMobID] = QStringLiteral("mob %1").arg(number % 100);
    return document;
}

QJsonObject deliveryDocument(int cpls, Origin origin)
{
    QJsonArray children;
    for (int number = 0; number < cpls; ++number)
        children.append(cplDocument(number, origin));
    QJsonObject imp = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::IMP);
    imp[ImfDict::Mutable] = origin == Origin::New;
    imp[ImfDict::Children] = children;
    QJsonObject delivery = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::Delivery);
    delivery[ImfDict::Path] = QStringLiteral("/delivery");
    delivery[ImfDict::NewDelivery] = origin == Origin::New;
    delivery[ImfDict::Children] = QJsonArray{imp};
    return delivery;
}

std::unique_ptr<Model> build(const QJsonObject& document)
{
    auto model = std::make_unique<Model>();
    model->push_back({}, IMF_PackageDeliveryReader::getDeliveryNodeFromJson(document, "id"));
    return model;
}

/// The texts of a document, each with its key.
void collectTexts(const QJsonObject& object, std::vector<QString>& texts)
{
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (member.value().isObject())
            collectTexts(member.value().toObject(), texts);
        else
            texts.push_back(member.value().toVariant().toString());
    }
}

/// The same texts in Qt's own model: a row a CPL, a role a text, the name and the title for display.
std::unique_ptr<QStandardItemModel> buildPeer(const QJsonObject& document)
{
    auto model = std::make_unique<QStandardItemModel>();
    auto* delivery = new QStandardItem(document[ImfDict::Name].toString());
    model->appendRow({delivery, new QStandardItem});
    const QJsonObject imp = document[ImfDict::Children].toArray()[0].toObject();
    auto* impItem = new QStandardItem(imp[ImfDict::Name].toString());
    delivery->appendRow({impItem, new QStandardItem});
    std::vector<QString> texts;
    const QJsonArray cpls = imp[ImfDict::Children].toArray();
    for (const QJsonValue& cpl : cpls) {
        texts.clear();
        collectTexts(cpl.toObject(), texts);
        auto* item = new QStandardItem(cpl.toObject()[ImfDict::Name].toString());
        for (std::size_t i = 0; i < texts.size(); ++i)
            item->setData(texts[i], Qt::UserRole + int(i));
        impItem->appendRow({item, new QStandardItem});
    }
    return model;
}

/// The least of several runs, in nanoseconds.
template <typename Action>
double bestOf(int runs, const Action& action)
{
    double best = 1e18;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        action();
        best = std::min(best, double(timer.nsecsElapsed()));
    }
    return best;
}

/// Nanoseconds a call, over ten runs of 100 rows spread evenly over those of the IMP: as many nodes on as many pages of
/// memory are touched however many siblings there are. Single rows far apart would measure the processor's page walks.
template <typename Call>
double costOfACall(const Model& model, const Call& call)
{
    constexpr int calls = 1000;
    constexpr int together = 100;
    const QModelIndex imp = model.index(0, 0, model.index(0, 0));
    const int rows = model.rowCount(imp);
    std::vector<QModelIndex> indexes;
    for (int i = 0; i < calls; ++i) {
        const qint64 first = qint64(i / together) * rows / (calls / together);
        indexes.push_back(model.index(int(first) + i % together, 0, imp));
    }
    volatile std::size_t sum = 0;
    const double time = bestOf(40, [&] {
        for (const QModelIndex& index : indexes)
            sum = sum + std::size_t(call(index));
    });
    return time / calls;
}

void print(const char* name, double ratio, const char* target)
{
    std::printf("%s | %.2f | %s\n", name, ratio, target);
}

void compareCalls(const Model& small, const Model& large)
{
    // In turns: the machine's speed varies within seconds.
    const auto ratio = [&](const auto& call) {
        double few = 1e18;
        double many = 1e18;
        for (int turn = 0; turn < 5; ++turn) {
            few = std::min(few, costOfACall(small, call));
            many = std::min(many, costOfACall(large, call));
        }
        return many / few;
    };
    print("row() at 100,000 siblings against 1,000",
          ratio([](const QModelIndex& index) { return Model::FromInternalPointer(index.internalPointer())->row(); }),
          "at most 1.2");
    print("parent() at 100,000 siblings against 1,000",
          ratio([](const QModelIndex& index) { return index.parent().row(); }), "at most 1.2");
    for (const auto& [role, name] :
         {std::make_pair(int(Qt::DisplayRole), "data(display)"), std::make_pair(int(Model::StatusRole), "data(status)"),
          std::make_pair(int(Model::MetadataRole), "data(document)"),
          std::make_pair(int(Model::ComponentIdRole), "data(identifier)")}) {
        const double figure = ratio([role = role](const QModelIndex& index) { return index.data(role).isValid(); });
        print((std::string(name) + " at 100,000 siblings against 1,000").c_str(), figure, "at most 1.2");
    }
}

struct Times {
    double build = 1e18;
    double save = 1e18;
    double restore = 1e18;
};

/// Keeps the least of each.
void measure(int cpls, Times& times)
{
    const QJsonObject document = deliveryDocument(cpls, Origin::New);
    times.build = std::min(times.build, bestOf(3, [&] { build(document); }));
    IdleOutput output;
    const std::unique_ptr<Model> model = build(document);
    IMF_DataModelSerializer serializer(model.get(), &output);
    QJsonArray state;
    times.save = std::min(times.save, bestOf(3, [&] { state = serializer.saveUnCommitedState(); }));
    times.restore = std::min(times.restore, bestOf(3, [&] {
                                 Model copy;
                                 IMF_DataModelSerializer(&copy, &output).loadUnCommitedState(state);
                             }));
}

void compareLinearity()
{
    Times small;
    Times large;
    for (int turn = 0; turn < 3; ++turn) {
        measure(10000, small);
        measure(100000, large);
    }
    const char* target = "at most 1.2";
    print("building 100,000 CPLs against 10 times 10,000", large.build / small.build / 10, target);
    print("saving 100,000 CPLs against 10 times 10,000", large.save / small.save / 10, target);
    print("restoring 100,000 CPLs against 10 times 10,000", large.restore / small.restore / 10, target);
}

std::size_t heapInUse()
{
    return mallinfo2().uordblks;
}

/// Bytes that the result of `make` holds. The document is built anew inside, so that nothing it shares is left out.
template <typename Make>
double memoryOf(const Make& make)
{
    const std::size_t before = heapInUse();
    const auto model = make(deliveryDocument(100000, Origin::Disk));
    return double(heapInUse() - before);
}

void compareWithStandardModel()
{
    const QJsonObject document = deliveryDocument(100000, Origin::Disk);
    const double own = bestOf(3, [&] { build(document); });
    const double peer = bestOf(3, [&] { buildPeer(document); });
    print("building against QStandardItemModel, same texts", own / peer, "at most 2");
    const double ownBytes = memoryOf(build);
    const double peerBytes = memoryOf(buildPeer);
    print("memory against QStandardItemModel, same texts", ownBytes / peerBytes, "below 1");
}
} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    IMF_MXE_bridge::Initialize(std::make_unique<IdleEngine>());
    {
        const std::unique_ptr<Model> small = build(deliveryDocument(1000, Origin::Disk));
        const std::unique_ptr<Model> large = build(deliveryDocument(100000, Origin::Disk));
        compareCalls(*small, *large);
    }
    compareLinearity();
    compareWithStandardModel();
    return 0;
}
