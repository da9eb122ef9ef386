#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/IMF_Deliverable.h"
#include "StratacutUI/IMF_IMP.h"
#include "StratacutUI/ImfDict.h"
#include "support/Assertions.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QVariant>

namespace
{
IMF_Deliverable deliverable(const QJsonObject& document)
{
    return IMF_Deliverable({}, "/out", "Film", "id", document);
}

QJsonObject defaultDocument(IMF_PackageMgr::NodeType type)
{
    return IMF_Utils::getDefaultJsonObject(type);
}

// What both payloads promise about properties.
template <class Payload>
void checkProperties(Payload payload, const QString& source)
{
    const QJsonObject before = payload.jsonObject();
    QVERIFY(!payload.setProperty("Nothing", "X"));
    QVERIFY(!payload.setProperty("Issuer", ""));
    QCOMPARE(payload.jsonObject(), before);

    QVERIFY(payload.setProperty("Issuer", "X"));
    QVERIFY(!payload.setProperty("Issuer", "X"));
    QCOMPARE(payload.getProperty("Issuer"), QString("X"));
    QCOMPARE(payload.jsonObject().value("DescriptiveMetadata").toObject().value("Issuer").toString(), QString("X"));
    QVERIFY(!payload.jsonObject().contains("Issuer"));
    QCOMPARE(payload.getProperty("Nothing"), QString());

    QVERIFY(payload.setProperty("Type", "Other"));
    QCOMPARE(payload.jsonObject().value("Type").toString(), QString("Other"));
    QVERIFY(payload.isValid());
    QVERIFY(payload.setProperty("Name", ""));
    QVERIFY(!payload.isValid());

    support::Assertions assertions;
    QVERIFY(!payload.setProperty("Issuer", QVariant::fromValue(QJsonObject())));
    QCOMPARE(assertions.take(), QStringList{source + ": false"});
    QCOMPARE(payload.getProperty("Issuer"), QString("X"));
}
} // namespace

/// Default documents and the payloads of deliveries and IMPs.
class TestDocuments : public QObject
{
    Q_OBJECT

private slots:

    void defaultDocumentsAreWholeAndUncommitted()
    {
        const QJsonObject delivery = defaultDocument(IMF_PackageMgr::Delivery);
        QCOMPARE(delivery.keys(), (QStringList{"DescriptiveMetadata", "Mutable", "Name", "Original", "Type"}));
        QCOMPARE(deliverable(delivery).version(), IMF_PackageMgr::Original);
        QCOMPARE(defaultDocument(IMF_PackageMgr::IMP).keys(),
                 (QStringList{"DescriptiveMetadata", "Mutable", "Name", "Type"}));
        const QJsonObject cpl = defaultDocument(IMF_PackageMgr::CPL);
        QCOMPARE(cpl.value("Video").toObject().size(), 6);
        QCOMPARE(cpl.value("Audio").toObject().size(), 4);
        QCOMPARE(cpl.value("DescriptiveMetadata").toObject().size(), 6);
        QVERIFY(cpl.value("Mutable").toBool());
        for (const int noKind : {3, -1, 70000})
            QVERIFY(defaultDocument(static_cast<IMF_PackageMgr::NodeType>(noKind)).isEmpty());
    }

    void versionAndStatusComeFromTheDocument_data()
    {
        const support::Rows<QJsonObject, int, int> row;
        row("nothing said", QJsonObject{}, 0, 1);
        row("original", QJsonObject{{"Original", true}, {"Mutable", true}}, 1, 1);
        row("Original wins over Kind", QJsonObject{{"Original", false}, {"Kind", "Original"}}, 2, 1);
        row("original by kind", QJsonObject{{"Kind", "Original"}, {"Mutable", false}}, 1, 0);
        row("any other kind", QJsonObject{{"Kind", "original"}, {"Mutable", "true"}}, 2, 0);
        row("not a boolean", QJsonObject{{"Original", "true"}}, 2, 1);
    }

    void versionAndStatusComeFromTheDocument()
    {
        const auto [document, version, status] = support::fetched<QJsonObject, int, int>();
        QCOMPARE(int(deliverable(document).version()), version);
        QCOMPARE(int(deliverable(document).status()), status);
    }

    void aDeliveryWithoutNameOrPathIsNotValid()
    {
        QVERIFY(!IMF_Deliverable({}, "", "Film", "id", {}).isValid());
        QVERIFY(!IMF_Deliverable({}, "/out", "", "id", {}).isValid());
        IMF_Deliverable made({}, "", "Film", "id", {});
        made.setPath("/out");
        QVERIFY(made.isValid());
        made.setPath("");
        QVERIFY(!made.isValid());
    }

    void aDeliveryKeepsItsCachedValidityOverANewDocument()
    {
        IMF_Deliverable made = deliverable({});
        made.updateCommittedJsonObject({});
        QCOMPARE(made.status(), IMF_PackageMgr::Committed);
        QVERIFY(made.isValid());
        QVERIFY(!made.validateParams());
        QCOMPARE(made.id(), QString("id"));
    }

    void anIMPChecksEachNewDocument()
    {
        IMF_IMP imp({}, defaultDocument(IMF_PackageMgr::IMP), IMF_PackageMgr::Uncommitted);
        QVERIFY(imp.isValid());
        imp.updateCommittedJsonObject({});
        QCOMPARE(imp.status(), IMF_PackageMgr::Committed);
        QVERIFY(!imp.isValid());
        imp.setValue(ImfDict::Path, "/anywhere");
        QCOMPARE(imp.getProperty("Path"), QString("/anywhere"));
        QCOMPARE(imp.id(), QString("/"));
    }

    void propertiesAreWrittenWhereTheyStand()
    {
        checkProperties(deliverable(defaultDocument(IMF_PackageMgr::Delivery)), "IMF_Deliverable");
        checkProperties(IMF_IMP({}, defaultDocument(IMF_PackageMgr::IMP), IMF_PackageMgr::Uncommitted), "IMF_IMP");
    }
};

STRATACUT_TEST_MAIN(TestDocuments)
#include "tst_documents.moc"
