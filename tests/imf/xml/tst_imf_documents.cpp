#include "desk/imf/xml/AssetMap.h"
#include "desk/imf/xml/Composition.h"
#include "desk/imf/xml/PackingList.h"
#include "desk/imf/xml/XmlElement.h"

#include "imf/xml/Schema.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/ValueOf.h"

#include <QTest>
#include <QTextCodec>

using namespace desk;
using namespace desk::imf;

namespace
{

const char descriptorXml[] = "<r0:CDCIDescriptor xmlns:r0=\"http://www.smpte-ra.org/reg/395/2014/13/1/aaf\" "
                             "xmlns:r1=\"http://www.smpte-ra.org/reg/335/2012\"><r1:StoredWidth>1920</r1:StoredWidth>"
                             "</r0:CDCIDescriptor>";

QUuid id(int n)
{
    return QUuid(uint(n), 0x1234, 0x4567, 0x89, 0xab, 0xcd, 0xef, 1, 2, 3, 4);
}

Resource resource(int n, Rational rate, qint64 duration)
{
    Resource result;
    result.id = id(n);
    result.editRate = rate;
    result.intrinsicDuration = duration + 7;
    result.entryPoint = 3;
    result.sourceDuration = duration;
    result.sourceEncoding = id(n + 1);
    result.trackFileId = id(n + 2);
    result.hash = QByteArray(20, char(n));
    return result;
}

Sequence sequence(SequenceKind kind, int n, const QVector<Resource>& resources)
{
    Sequence result;
    result.kind = kind;
    result.id = id(n);
    result.trackId = id(n + 1);
    result.resources = resources;
    return result;
}

/// A composition that uses everything that can be written.
Composition fullComposition()
{
    Composition result;
    result.id = id(1);
    result.annotation = {QStringLiteral("A & B <c> \"d\""), QStringLiteral("de")};
    result.issueDate = QDateTime({2024, 5, 6}, {7, 8, 9}, Qt::UTC);
    result.issuer = QStringLiteral("Issuer");
    result.creator = QStringLiteral("Creator");
    result.contentOriginator = QStringLiteral("Originator");
    result.contentTitle = QString::fromUtf8("Titel \xc3\xa4 \xf0\x9f\x8e\xac");
    result.contentKind = {QLatin1String(edition::contentKindScope), QStringLiteral("test")};
    result.contentVersions = {{toUrn(id(2)), QStringLiteral("First cut"), {"<x:note xmlns:x=\"urn:x\">kept</x:note>"}}};
    result.essenceDescriptors = {{id(11), descriptorXml}, {id(21), descriptorXml}};
    result.timecode = CompositionTimecode{true, 30, QStringLiteral("01:00:00;00")};
    result.editRate = {30000, 1001};
    result.totalRunningTime = QStringLiteral("00:00:01");
    Locale locale;
    locale.annotation = QStringLiteral("Home");
    locale.languages = QStringList{"en-US", "fr"};
    locale.regions = QStringList{"US"};
    result.locales = {locale};
    result.extensions = {"<y:MaxCLL xmlns:y=\"http://www.smpte-ra.org/ns/2067-21/x\" y:unit=\"nit\">1000</y:MaxCLL>"};
    Resource markers = resource(30, {30000, 1001}, 30);
    markers.hash.clear();
    markers.sourceEncoding = markers.trackFileId = QUuid();
    markers.markers = {{QStringLiteral("here"), {QLatin1String(edition::markerScope), QStringLiteral("FFOC")}, 4}};
    Sequence foreign = sequence(SequenceKind::Other, 40, {resource(50, {30000, 1001}, 30)});
    foreign.name = QStringLiteral("IABSequence");
    foreign.nameSpace = QStringLiteral("http://www.smpte-ra.org/ns/2067-201/2019");
    result.segments = {{id(3),
                        QStringLiteral("one"),
                        {sequence(SequenceKind::MainImage, 60, {resource(10, {30000, 1001}, 30)}),
                         sequence(SequenceKind::MainAudio, 70, {resource(20, {48000, 1}, 48048)}),
                         sequence(SequenceKind::Marker, 80, {markers}), foreign}}};
    return result;
}

PackingList fullPackingList()
{
    PackingList list;
    list.id = id(1);
    list.annotation = QStringLiteral("Package");
    list.issueDate = QDateTime({2024, 5, 6}, {7, 8, 9}, Qt::UTC);
    list.issuer = QStringLiteral("I");
    list.creator = QStringLiteral("C");
    list.groupId = id(2);
    PackedAsset asset;
    asset.id = id(3);
    asset.hash = QByteArray(20, 'h');
    asset.size = 5000000000LL;
    asset.type = QLatin1String(mediaType::trackFile);
    asset.originalFileName = QStringLiteral("a.mxf");
    list.assets = {asset};
    return list;
}

AssetMap fullAssetMap()
{
    AssetMap map;
    map.id = id(1);
    map.annotation = {QStringLiteral("Map"), QStringLiteral("en")};
    map.creator = QStringLiteral("C");
    map.issueDate = QDateTime({2024, 5, 6}, {7, 8, 9}, Qt::UTC);
    map.issuer = QStringLiteral("I");
    Chunk chunk;
    chunk.path = QStringLiteral("sub/PKL.xml");
    chunk.length = 5000000000LL;
    map.assets = {{id(2), QStringLiteral("list"), true, {chunk}, {}}};
    return map;
}

/// A long text compares line by line, so that a failure shows where.
void compareLines(const QByteArray& actual, const QByteArray& expected)
{
    const QList<QByteArray> a = actual.split('\n');
    const QList<QByteArray> b = expected.split('\n');
    for (int i = 0; i < qMin(a.size(), b.size()); ++i)
        QCOMPARE(a[i], b[i]);
    QCOMPARE(a.size(), b.size());
}

QByteArray smallComposition(const QByteArray& inside = {})
{
    return "<CompositionPlaylist xmlns=\"http://www.smpte-ra.org/schemas/2067-3/2016\">"
           "<Id>urn:uuid:00000001-1234-4567-89ab-cdef01020304</Id><EditRate>24 1</EditRate><SegmentList/>" +
           inside + "</CompositionPlaylist>";
}

QByteArray nested(int depth)
{
    return QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth);
}

} // namespace

class TestDocuments : public QObject
{
    Q_OBJECT

private slots:

    void writtenDocumentsFollowTheirSchemas()
    {
        validate(writeComposition(fullComposition()), "cpl-all.xsd");
        for (const QByteArray& document :
             {writePackingList(fullPackingList()), writeAssetMap(fullAssetMap()), writeVolumeIndex()})
            validate(document, "pkl-am-all.xsd");
    }

    void everythingSurvivesARoundTrip()
    {
        const QByteArray composition = writeComposition(fullComposition());
        const auto read = support::valueOf(readComposition(composition, QStringLiteral("c")));
        compareLines(writeComposition(read), composition);
        QCOMPARE(read.contentTitle.text, fullComposition().contentTitle.text);
        QCOMPARE(read.annotation, fullComposition().annotation);
        // The writer puts markers first.
        QCOMPARE(read.segments[0].sequences[0].resources[0].markers[0].offset, 4);
        QCOMPARE(read.segments[0].sequences[2].resources[0].hash, QByteArray(20, char(20)));
        QVERIFY(composition.contains("<x:note xmlns:x=\"urn:x\">kept</x:note>"));
        const QByteArray list = writePackingList(fullPackingList());
        QCOMPARE(writePackingList(*readPackingList(list, {})), list);
        const QByteArray map = writeAssetMap(fullAssetMap());
        QCOMPARE(writeAssetMap(*readAssetMap(map, {})), map);
    }

    void strangersElementsSurviveARewriteAndSignaturesDoNot()
    {
        const QByteArray locales = "<LocaleList><Locale><ContentMaturityRatingList><ContentMaturityRating><Agency>urn:a"
                                   "</Agency><Rating>12</Rating></ContentMaturityRating></ContentMaturityRatingList>"
                                   "</Locale></LocaleList>";
        const QByteArray signature = "<Signer/><s:Signature xmlns:s=\"http://www.w3.org/2000/09/xmldsig#\"/>";
        const QByteArray extension = "<ExtensionProperties xmlns:z=\"urn:z\"><z:deep z:k=\"v\"><z:in xmlns:q=\"urn:q\" "
                                     "q:a=\"1\">text <q:em>mixed</q:em> tail</z:in></z:deep></ExtensionProperties>";
        const auto read = support::valueOf(readComposition(smallComposition(locales + extension + signature), {}));
        const QByteArray again = writeComposition(read);
        QVERIFY(again.contains("<Rating>12</Rating>"));
        QVERIFY(again.contains("text <q:em xmlns:q=\"urn:q\">mixed</q:em> tail") ||
                again.contains("text <q:em>mixed</q:em> tail"));
        QVERIFY(!again.contains("Signature") && !again.contains("Signer"));
        QVERIFY(readComposition(again, {}));
    }

    void everyEditionAndPrefixIsRead()
    {
        QByteArray xml = writeComposition(fullComposition());
        xml.replace("http://www.smpte-ra.org/schemas/2067-3/2016", "http://www.smpte-ra.org/schemas/2067-3/2013");
        xml.replace("http://www.smpte-ra.org/ns/2067-2/2020", "http://www.smpte-ra.org/schemas/2067-2/2013");
        const auto old = support::valueOf(readComposition(xml, {}));
        QCOMPARE(int(old.segments[0].sequences[1].kind), int(SequenceKind::MainImage));
        compareLines(writeComposition(old), xml);

        QByteArray list = writePackingList(fullPackingList());
        list.replace("<", "<p:").replace("<p:/", "</p:").replace("<p:?", "<?").replace("xmlns=", "xmlns:p=");
        list.replace(edition::packingList, "http://www.smpte-ra.org/schemas/429-8/2007/PKL");
        QCOMPARE(readPackingList(list, {})->assets.size(), 1);
    }

    void encodingsAreRecognised()
    {
        const QString text = QString::fromUtf8(smallComposition("<ContentTitle>\xc3\xa4</ContentTitle>"));
        const auto encoded = [&](const char* name) {
            return QTextCodec::codecForName(name)->fromUnicode(
                QStringLiteral("<?xml version=\"1.0\" encoding=\"%1\"?>").arg(QLatin1String(name)) + text);
        };
        for (const char* name : {"UTF-8", "ISO-8859-1", "UTF-16"})
            QCOMPARE(readComposition(encoded(name), {})->contentTitle.text, QString(QChar(0xe4)));
    }

    void hostileDocumentsAreRefused_data()
    {
        const support::Rows<QByteArray, QString> row;
        const QByteArray entities = "<!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">]>";
        QByteArray many;
        for (int i = 0; i < 200000; ++i)
            many += " a" + QByteArray::number(i) + "=\"\"";
        const QByteArray crowded = "<CompositionPlaylist" + many + "/>";
        row("empty", QByteArray(), "the file is empty");
        row("not XML", QByteArray("\x89PNG\r\n\x1a\n"), "not well-formed");
        row("cut", smallComposition().chopped(5), "not well-formed");
        row("doctype", "<!DOCTYPE CompositionPlaylist>" + smallComposition(), "document type");
        row("entities", entities + smallComposition("<Creator>&b;</Creator>"), "document type");
        row("unknown entity", smallComposition("<Creator>&b;</Creator>"), "not well-formed");
        row("deep", nested(1000000), "nested more than");
        row("deep inside", smallComposition(nested(100)), "nested more than");
        row("wide", smallComposition(QByteArray("<a/>").repeated(1000000)), "elements");
        row("attributes", crowded, "attributes");
        row("attributes behind a quote", "<!--'--><?a '?>" + crowded, "attributes");
        row("listed attributes", "<!DOCTYPE a [<!ATTLIST a" + many.replace("=", " CDATA ") + ">]><a/>",
            "document type");
        row("long attribute", smallComposition("<Creator language=\"" + QByteArray(2 << 20, 'e') + "\"/>"),
            "attribute is longer");
        row("broken UTF-8", smallComposition("<Creator>\xff\xfe</Creator>"), "not well-formed");
        row("NUL", smallComposition(QByteArray("<Creator>\0</Creator>", 20)), "not well-formed");
        row("another kind", QByteArray("<html/>"), "not a CompositionPlaylist");
        row("another namespace", smallComposition().replace("2067-3/2016", "2067-3/1999"), "not a CompositionPlaylist");
        row("no UUID", smallComposition().replace("urn:uuid:", "uuid:"), "is no UUID");
        row("no rate", smallComposition().replace("24 1", "24 0"), "is no rate");
        row("two rates", smallComposition("<EditRate>25 1</EditRate>"), "more than one EditRate");
        row("no segments", smallComposition().replace("<SegmentList/>", ""), "has no SegmentList");
    }

    void hostileDocumentsAreRefused()
    {
        const auto [xml, reason] = support::fetched<QByteArray, QString>();
        const Result<Composition> read = readComposition(xml, QStringLiteral("bad.xml"));
        QVERIFY(!read);
        QCOMPARE(read.error().file, QStringLiteral("bad.xml"));
        QVERIFY2(read.error().what.contains(reason), qPrintable(read.error().sentence()));
        QVERIFY(!read.error().next.isEmpty());
    }

    void pathsOutsideTheRulesAreRefused()
    {
        const QString map = QStringLiteral("ASSETMAP.xml");
        const QStringList good{"CPL_1.xml", "a/b/c/d/e/f/g/h/i/j", "a..b/...c", QString(100, 'a')};
        for (const QString& path : good)
            QVERIFY2(checkAssetPath(path, map), qPrintable(path));
        const QStringList bad{QString(101, 'a'),
                              "a/b/c/d/e/f/g/h/i/j/k",
                              "/etc/passwd",
                              "../x.mxf",
                              "a/../../x.mxf",
                              "./x.mxf",
                              "a//x.mxf",
                              "",
                              "a b.mxf",
                              "a%20b.mxf",
                              "file:///etc/passwd",
                              "..\\x",
                              QString(QChar(0xe4)),
                              "x.mxf\n"};
        for (const QString& path : bad)
            QVERIFY2(!checkAssetPath(path, map), qPrintable(path));
    }

    void durationsAreExact()
    {
        struct Row {
            Rational rate;
            QVector<qint64> samples;
            /// -1 where they make no whole number of frames.
            qint64 frames;
        };

        const Row rows[] = {{{30000, 1001}, {8008}, 5},
                            {{30000, 1001}, {6406}, -1},
                            {{30000, 1001}, {6406, 1602}, 5},
                            {{60000, 1001}, {4004}, 5},
                            {{24000, 1001}, {2002}, 1},
                            {{25, 1}, {1921}, -1},
                            {{240000, 1}, {Q_INT64_C(9000000000000000000)}, -1}};
        for (const Row& row : rows) {
            Sequence sound;
            for (const qint64 count : row.samples) {
                sound.resources.append(Resource());
                sound.resources.last().editRate = {48000, 1};
                sound.resources.last().intrinsicDuration = count;
            }
            QCOMPARE(sequenceDuration(sound, row.rate).value_or(-1), row.frames);
        }
    }

    void textThatXmlCannotHoldIsDropped()
    {
        Composition composition = fullComposition();
        composition.contentTitle =
            QStringLiteral("a\x01") + QChar(0xd800) + QStringLiteral("b\r\nc\td") + QChar(0xffff);
        const auto read = support::valueOf(readComposition(writeComposition(composition), {}));
        QCOMPARE(read.contentTitle.text, QStringLiteral("ab\nc\td"));
    }
};

STRATACUT_TEST_MAIN(TestDocuments)

#include "tst_imf_documents.moc"
