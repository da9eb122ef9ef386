// The smallest host: it knows no media and one finished delivery, and prints the package manager's tree.

#include "StratacutUI/IMFO_Bridge.h"
#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ISettingsStorage.h"
#include "StratacutUI/ImfDict.h"
#include "StratacutUI/MXE_Bridge.h"

#include <QApplication>
#include <QHash>
#include <QStandardItemModel>

#include <cstdio>

namespace
{

/// Answers every question as a host without sequences does.
class NoMedia : public MXE_Bridge
{
public:
    void reserved1() override {}

    void reserved2() override {}

    QStringList mobIdsFromMimeData(const QMimeData*) override { return {}; }

    QString sequenceName(const QString&) override { return {}; }

    QString creator() override { return QStringLiteral("Consumer 1.0"); }

    void reserved6() override {}

    void sequenceToken(std::string& token, const QString&) override { token.clear(); }

    void sequenceFrameRate(std::string& frameRate, const QString&) override { frameRate = "Unknown"; }

    bool isSequence(const QString&) override { return false; }

    void projectName(QString& name) override { name.clear(); }

    void sequenceBin(QString& bin, const QString&) override { bin.clear(); }

    void reserved12() override {}

    std::shared_ptr<TargetFormatBuilder> createTargetFormatBuilder(const QString&, const QString&) override
    {
        return nullptr;
    }

    QAbstractItemModel* createTrackDataModel(QAbstractItemModel* packageModel, const QFont&) override
    {
        return new QStandardItemModel(packageModel);
    }

    bool isSequenceTrackModel(const QAbstractItemModel*) override { return false; }

    void fillAudioGroupingModel(QAbstractItemModel*, const QString&) override {}

    bool isAudioGroupingModelPopulated(const QAbstractItemModel*) override { return true; }

    void prepareTrackData(QAbstractItemModel*) override {}

    void prepareAudioGroupingData(QAbstractItemModel*) override {}

    void reserved20() override {}

    QStringList activeTracks(const QAbstractItemModel*) override { return {}; }

    const IAudioMixDescription* audioMixDescription(const QAbstractItemModel*) override { return nullptr; }

    QString trackLabel(const QAbstractItemModel*, int) override { return {}; }

    MXE_TrackColumns trackColumns(const QAbstractItemModel*) override { return {}; }

    bool isTrackColumnShown(const QAbstractItemModel*, int) override { return true; }
};

QJsonObject item(const char* type, const char* name, const QJsonArray& children = {})
{
    return {{ImfDict::Name, QLatin1String(name)},
            {ImfDict::Type, QLatin1String(type)},
            {ImfDict::Mutable, false},
            {ImfDict::Children, children}};
}

/// Reads one delivery, and writes none.
class ReadOnlyOutput : public IMFO_Bridge
{
public:
    void readDelivery(IMFO_Error_t& error, const QString& path, std::pair<QByteArray, QJsonObject>& result) override
    {
        error = {};
        QJsonObject document = item("Delivery", "countdown", {item("IMP", "First", {item("CPL", "Reel 1")})});
        document[ImfDict::Path] = path;
        document[ImfDict::Original] = true;
        result = {path.toUtf8(), document};
    }

    void getDeliveryInfo(IMFO_Error_t& error, const QByteArray&, QJsonObject&, bool) override { error = {}; }

    void reserved3(IMFO_Error_t& error) override { error = {}; }

    void reserved4(IMFO_Error_t& error) override { error = {}; }

    void reserved5(IMFO_Error_t& error) override { error = {}; }

    void createDelivery(IMFO_Error_t& error, const QString&, QString&, bool, QString&) override { refuse(error); }

    void removeItem(IMFO_Error_t& error, const QByteArray&) override { error = {}; }

    void commit(IMFO_Error_t& error, const IMFO_ItemInfo&, CommitCallback) override { refuse(error); }

    void createIMP(IMFO_Error_t& error, const QByteArray&, const QByteArray&) override { refuse(error); }

    void createCPL(IMFO_Error_t& error, const QByteArray&, const QByteArray&, const QByteArray&) override
    {
        refuse(error);
    }

    void setItemPath(IMFO_Error_t& error, const IMFO_ItemInfo&, const QString&, QString&) override { refuse(error); }

    void renameItem(IMFO_Error_t& error, const IMFO_ItemInfo&, const QString&, QString&) override { refuse(error); }

    void applyCommitSettings(IMFO_Error_t& error, const QString&, const IMFO_ItemInfo&) override { refuse(error); }

    void applyDescriptiveMetadata(IMFO_Error_t& error, const QString&, const IMFO_ItemInfo&) override { refuse(error); }

    void getCPLTrackInfo(IMFO_Error_t& error, QMap<QString, IMFO_TrackInfo>&, const QByteArray&) override
    {
        refuse(error);
    }

private:
    static void refuse(IMFO_Error_t& error) { error = {1, QStringLiteral("This program only reads; use the desk.")}; }
};

class MemorySettings : public ISettingsStorage
{
public:
    void reserved1() override {}

    boost::optional<QJsonArray> get(const char* key) override
    {
        return m_values.contains(key) ? boost::optional<QJsonArray>(m_values[key]) : boost::none;
    }

    void reserved3() override {}

    void set(const char* key, const QJsonArray& value) override { m_values[key] = value; }

private:
    QHash<QByteArray, QJsonArray> m_values;
};

void print(const IMF_PackageMgrQtModel& model, const QModelIndex& parent, int depth)
{
    static const char* const kinds[] = {"IMF Original", "IMP", "CPL"};
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        std::printf("%*s%s %s\n", 2 * depth, "", kinds[IMF_PackageMgrQtModel::NodeTypeFromIndex(index)],
                    qPrintable(index.data(IMF_PackageMgrQtModel::NameRole).toString()));
        print(model, index, depth + 1);
    }
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);

    // The bridges first: the model asks for them as soon as it exists. The output service stays ours and outlives it.
    ReadOnlyOutput output;
    IMF_MXE_bridge::Initialize(std::make_unique<NoMedia>());
    IMF_IMFO_bridge::Initialize(&output);

    // The folders of finished deliveries that the last session knew.
    auto settings = std::make_unique<MemorySettings>();
    settings->set("VISITED_IMF_SETTINGS_KEY", {"/deliveries/countdown"});

    // From here on the model has a controller, and the controller has read the deliveries through the output service.
    IMF_PackageMgrQtModel model;
    model.initialize(&output, std::move(settings));
    print(model, {}, 0);
}
