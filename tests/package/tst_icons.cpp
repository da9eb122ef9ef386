#include "IconCatalogue.h"
#include "support/TestMain.h"

/// The catalogue of images against the host's image sets.
class TestIcons : public QObject
{
    Q_OBJECT

private slots:

    void theHostHasEveryImageOfTheCatalogueAtFullOpacity()
    {
        QSet<QString> names;
        for (const NineSlice::ResourceData& icon : IconCatalogue::all) {
            const QString name = QString(icon.group) + '/' + icon.id;
            QVERIFY2(NineSlice::HasImage(icon.group, icon.id), qPrintable(name));
            QVERIFY2(!NineSlice::GetImage(icon).isNull(), qPrintable(name));
            QVERIFY2(!icon.firstCustomColor && !icon.secondCustomColor && icon.opacity == 255, qPrintable(name));
            names += name;
        }
        QCOMPARE(names.size(), 23);
    }
};

STRATACUT_TEST_MAIN(TestIcons)
#include "tst_icons.moc"
