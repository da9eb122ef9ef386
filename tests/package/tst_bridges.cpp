#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/SCUI_Resource.h"
#include "support/RecordingMediaEngine.h"
#include "support/RecordingOutputBridge.h"
#include "support/TestMain.h"

#include <thread>
#include <vector>

using support::RecordingMediaEngine;
using support::RecordingOutputBridge;

namespace
{
// Tells a counter when it goes.
template <class Base>
class Mortal : public Base
{
public:
    explicit Mortal(int& deaths) : m_deaths(deaths) {}

    ~Mortal() override { ++m_deaths; }

private:
    int& m_deaths;
};

template <class Holder, class Service>
void checkOwner()
{
    static int deaths = 0;
    QVERIFY(!Holder::Instance());
    auto first = std::make_unique<Mortal<Service>>(deaths);
    const Service* const expected = first.get();
    Holder::Initialize(std::move(first));
    Holder::Initialize(std::make_unique<Mortal<Service>>(deaths));
    QCOMPARE(deaths, 1);
    QVERIFY(Holder::Instance() == expected);
}
} // namespace

/// The process-wide holders.
class TestBridges : public QObject
{
    Q_OBJECT

private slots:

    void theFirstOutputBridgeStaysAndNullIsNone()
    {
        RecordingOutputBridge first;
        RecordingOutputBridge second;
        QVERIFY(!IMF_IMFO_bridge::Instance());
        IMF_IMFO_bridge::Initialize(nullptr);
        QVERIFY(!IMF_IMFO_bridge::Instance());
        std::vector<std::thread> readers;
        for (int i = 0; i < 4; ++i)
            readers.emplace_back([] {
                while (!IMF_IMFO_bridge::Instance())
                    std::this_thread::yield();
            });
        IMF_IMFO_bridge::Initialize(&first);
        for (std::thread& reader : readers)
            reader.join();
        IMF_IMFO_bridge::Initialize(&second);
        QCOMPARE(IMF_IMFO_bridge::Instance(), static_cast<IMFO_Bridge*>(&first));
    }

    void theFirstOwnedInstanceStaysAndLaterOnesAreDestroyed()
    {
        checkOwner<IMF_MXE_bridge, RecordingMediaEngine>();
        checkOwner<SCUI::Resource, SCUI::IResourceProvider>();
    }
};

STRATACUT_TEST_MAIN(TestBridges)
#include "tst_bridges.moc"
