#include "ModelFixture.h"

QJsonObject documents::delivery(const QString& name, const QString& path, const QJsonArray& imps)
{
    return {{"Name", name}, {"Type", "Delivery"}, {"Original", true}, {"Path", path}, {"Children", imps}};
}

QJsonObject documents::imp(const QString& name, const QJsonArray& cpls)
{
    const QJsonObject metadata{{"Issuer", ""}, {"Creator", ""}};
    return {{"Name", name}, {"Type", "IMP"}, {"DescriptiveMetadata", metadata}, {"Children", cpls}};
}

QJsonObject documents::cpl(const QString& name)
{
    return {{"Name", name}, {"Type", "CPL"}, {"DescriptiveMetadata", QJsonObject{{"ContentTitle", name + " title"}}}};
}

ModelFixture::ModelFixture()
{
    restart();
}

void ModelFixture::end()
{
    m_tester.reset();
    model.reset();
}

void ModelFixture::restart()
{
    end();
    model = std::make_unique<IMF_PackageMgrQtModel>();
    watch();
    model->initialize(&bridge, std::make_unique<support::MemorySettings>(settings));
}

void ModelFixture::watch()
{
    m_tester =
        std::make_unique<QAbstractItemModelTester>(model.get(), QAbstractItemModelTester::FailureReportingMode::Fatal);
}

void ModelFixture::putOnDisk(const QString& path, const QByteArray& componentId, const QJsonObject& document)
{
    bridge.deliveries[path] = {componentId, document};
}

QModelIndex ModelFixture::load(const QString& path, const QByteArray& componentId, const QJsonObject& document)
{
    putOnDisk(path, componentId, document);
    controller().loadNewDelivery(path, nullptr, false);
    return model->getCommittedDeliveryModelIndex(path);
}

QModelIndex ModelFixture::newDelivery(const QString& name, IMF_PackageMgr::Version version)
{
    controller().onNewIMFDelivery(name, version);
    return model->index(model->rowCount() - 1, 0);
}

QModelIndex ModelFixture::newImp(const QModelIndex& delivery)
{
    return model->indexOf(model->addIMPNode(model->FromIndex(delivery)).get());
}

QModelIndex ModelFixture::newCpl(const QModelIndex& imp, const QString& mobId)
{
    if (!engine.sequences.contains(mobId))
        engine.addSequence(mobId, "Sequence " + mobId);
    model->addCPLNode(mobId, model->FromIndex(imp));
    return model->index(model->rowCount(imp) - 1, 0, imp);
}

void ModelFixture::withoutTester(const std::function<void()>& action)
{
    m_tester.reset();
    action();
    watch();
}
