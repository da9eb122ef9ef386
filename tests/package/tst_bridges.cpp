#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/SCUI_Resource.h"
#include "support/MemorySettings.h"
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
} // namespace

/// The process-wide holders and the error value.
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

    void theFirstMediaEngineStaysAndLaterOnesAreDestroyed()
    {
        static int deaths = 0;
        QVERIFY(!IMF_MXE_bridge::Instance());
        auto first = std::make_unique<Mortal<RecordingMediaEngine>>(deaths);
        MXE_Bridge* const expected = first.get();
        IMF_MXE_bridge::Initialize(std::move(first));
        IMF_MXE_bridge::Initialize(std::make_unique<Mortal<RecordingMediaEngine>>(deaths));
        QCOMPARE(deaths, 1);
        QCOMPARE(IMF_MXE_bridge::Instance(), expected);
    }

    void theFirstResourceProviderStaysAndLaterOnesAreDestroyed()
    {
        static int deaths = 0;
        QVERIFY(!SCUI::Resource::Instance());
        auto first = std::make_unique<Mortal<SCUI::IResourceProvider>>(deaths);
        SCUI::IResourceProvider* const expected = first.get();
        SCUI::Resource::Initialize(std::move(first));
        SCUI::Resource::Initialize(std::make_unique<Mortal<SCUI::IResourceProvider>>(deaths));
        QCOMPARE(deaths, 1);
        QCOMPARE(SCUI::Resource::Instance(), expected);
    }

    void onlyTheCodeMakesAnError()
    {
        QVERIFY(!IMFO_Bridge::IMFO_Error_t().isError());
        QVERIFY(!IMFO_Bridge::IMFO_Error_t(0, "Done, with remarks").isError());
        const IMFO_Bridge::IMFO_Error_t error(32, "No room");
        const IMFO_Bridge::Error copy = error;
        QVERIFY(copy.isError());
        QCOMPARE(copy.code(), quint8(32));
        QCOMPARE(copy.message(), QString("No room"));
    }

    void anAbsentSettingIsNoValue()
    {
        support::MemorySettings settings;
        QVERIFY(!settings.get("KEY"));
        settings.set("KEY", {});
        QVERIFY(settings.get("KEY"));
    }
};

STRATACUT_TEST_MAIN(TestBridges)
#include "tst_bridges.moc"
