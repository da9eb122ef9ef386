#pragma once

#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "support/MemorySettings.h"
#include "support/RecordingMediaEngine.h"
#include "support/RecordingOutputBridge.h"

#include <QAbstractItemModelTester>
#include <QJsonArray>
#include <QJsonObject>

#include <functional>
#include <memory>

/// Documents as the host hands them over.
namespace documents
{
QJsonObject delivery(const QString& name, const QString& path, const QJsonArray& imps = {});
QJsonObject imp(const QString& name, const QJsonArray& cpls = {});
QJsonObject cpl(const QString& name);
} // namespace documents

/// An item model over recording bridges, watched by the model tester.
class ModelFixture
{
public:
    ModelFixture();

    /// Makes a new model over the present settings, as the next run of the host does.
    void restart();
    /// Destroys the model.
    void end();
    /// A folder that readDelivery knows.
    void putOnDisk(const QString& path, const QByteArray& componentId, const QJsonObject& document);
    /// Puts the delivery on disk and loads it.
    QModelIndex load(const QString& path, const QByteArray& componentId, const QJsonObject& document);
    QModelIndex newDelivery(const QString& name, IMF_PackageMgr::Version version = IMF_PackageMgr::Original);
    QModelIndex newImp(const QModelIndex& delivery);
    /// A CPL of a sequence that is made up where the engine does not know it.
    QModelIndex newCpl(const QModelIndex& imp, const QString& mobId);
    /// Runs what announces more than the model tester can follow, and attaches a fresh tester afterwards.
    void withoutTester(const std::function<void()>& action);

    IMF_Controller& controller() { return *model->getIMFController(); }

    support::RecordingMediaEngine& engine = support::RecordingMediaEngine::installed();
    support::RecordingOutputBridge& bridge = support::RecordingOutputBridge::installed();
    std::shared_ptr<support::MemorySettings::Values> settings = std::make_shared<support::MemorySettings::Values>();
    std::unique_ptr<IMF_PackageMgrQtModel> model;

private:
    void watch();

    std::unique_ptr<QAbstractItemModelTester> m_tester;
};
