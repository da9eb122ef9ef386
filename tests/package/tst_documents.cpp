#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/IMF_Deliverable.h"
#include "StratacutUI/IMF_IMP.h"
#include "StratacutUI/ImfDict.h"
#include "support/Assertions.h"
#include "support/TestMain.h"

#include <QVariant>

namespace
{
IMF_Deliverable deliverable(const QJsonObject& document)
{
    return IMF_Deliverable({}, "/out", "Film", "id", document);
}

// What both payloads promise about properties.
template <class Payload>
void checkProperties(Payload payload, const QString& source)
{
    const QJsonObject before = payload.jsonObject();
    QVERIFY(!payload.setProperty("Nothing", "X") && !payload.setProperty("Issuer", ""));
    QCOMPARE(payload.jsonObject(), before);

    QVERIFY(payload.setProperty("Issuer", "X"));
    QVERIFY(!payload.setProperty("Issuer", "X"));
    QCOMPARE(payload.jsonObject().value("DescriptiveMetadata").toObject().value("Issuer").toString(), QString("X"));
    QVERIFY(!payload.jsonObject().contains("Issuer"));
    QVERIFY(payload.isValid());
    QVERIFY(payload.setProperty("Name", ""));
    QVERIFY(!payload.isValid());

    support::Assertions assertions;
    QVERIFY(!payload.setProperty("Issuer", QVariant::fromValue(QJsonObject())));
    QCOMPARE(assertions.take(), QStringList{source + ": false"});
    QCOMPARE(payload.getProperty("Issuer"), QString("X"));
}
} // namespace

/// The payloads of deliveries and IMPs.
class TestDocuments : public QObject
{
    Q_OBJECT

private slots:

    void versionAndStatusComeFromTheDocument()
    {
        struct Row {
            QJsonObject document;
            int version;
            int status;
        };

        const Row rows[] = {{{}, 0, 1},
                            {{{"Original", true}, {"Mutable", true}}, 1, 1},
                            {{{"Original", false}, {"Kind", "Original"}}, 2, 1},
                            {{{"Kind", "Original"}, {"Mutable", false}}, 1, 0},
                            {{{"Kind", "original"}, {"Mutable", "true"}}, 2, 0},
                            {{{"Original", "true"}}, 2, 1}};
        for (const Row& row : rows) {
            QCOMPARE(int(deliverable(row.document).version()), row.version);
            QCOMPARE(int(deliverable(row.document).status()), row.status);
        }
    }

    void validityNeedsNameAndPath()
    {
        QVERIFY(!IMF_Deliverable({}, "/out", "", "id", {}).isValid());
        IMF_Deliverable made({}, "", "Film", "id", {});
        QVERIFY(!made.isValid());
        made.setPath("/out");
        QVERIFY(made.isValid());
        // A deliverable keeps what was found over a new document; an IMP checks each.
        made.updateCommittedJsonObject({});
        QVERIFY(made.isValid() && !made.validateParams());
        IMF_IMP imp({}, IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::IMP), IMF_PackageMgr::Uncommitted);
        QVERIFY(imp.isValid());
        imp.updateCommittedJsonObject({});
        QVERIFY(!imp.isValid());
    }

    void propertiesAreWrittenWhereTheyStand()
    {
        checkProperties(deliverable(IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::Delivery)), "IMF_Deliverable");
        const QJsonObject document = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::IMP);
        checkProperties(IMF_IMP({}, document, IMF_PackageMgr::Uncommitted), "IMF_IMP");
    }
};

STRATACUT_TEST_MAIN(TestDocuments)
#include "tst_documents.moc"
