#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/SCUI_Resource.h"
#include "support/RecordingMediaEngine.h"
#include "support/RecordingOutputBridge.h"
#include "support/TestMain.h"

#include <thread>

using support::RecordingOutputBridge;

namespace
{
template <class Holder, class Service>
void checkOwner()
{
    static bool isGone = false;

    class Mortal : public Service
    {
    public:
        ~Mortal() override { isGone = true; }
    };

    auto first = std::make_unique<Service>();
    const Service* const expected = first.get();
    Holder::Initialize(std::move(first));
    Holder::Initialize(std::make_unique<Mortal>());
    QVERIFY(isGone);
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
        IMF_IMFO_bridge::Initialize(nullptr);
        QVERIFY(!IMF_IMFO_bridge::Instance());
        std::thread reader([] {
            while (!IMF_IMFO_bridge::Instance())
                std::this_thread::yield();
        });
        IMF_IMFO_bridge::Initialize(&first);
        reader.join();
        IMF_IMFO_bridge::Initialize(&second);
        QCOMPARE(IMF_IMFO_bridge::Instance(), static_cast<IMFO_Bridge*>(&first));
    }

    void theFirstOwnedInstanceStaysAndLaterOnesAreDestroyed()
    {
        checkOwner<IMF_MXE_bridge, support::RecordingMediaEngine>();
        checkOwner<SCUI::Resource, SCUI::IResourceProvider>();
    }
};

STRATACUT_TEST_MAIN(TestBridges)
#include "tst_bridges.moc"
