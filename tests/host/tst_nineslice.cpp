#include "ViewDeckQt/NineSlice.h"
#include "ViewDeckQt/PaletteManager.h"
#include "support/TestMain.h"

#include <QDirIterator>
#include <QImage>
#include <QPixmap>

using NineSlice::ResourceData;
using Palette::PaletteManager;
using Palette::Skin;

namespace
{
// Constant-initialised, as a library's catalogue of images is.
constexpr ResourceData plusIcon{"iconsV2/General", "plus_icon.png", std::nullopt, std::nullopt, 255};
constexpr ResourceData packageIcon{"iconsV2/General", "imf_imp.png", std::nullopt, std::nullopt, 255};
constexpr ResourceData profileIcon{"iconsV2/General", "LaunchProfileEditor.png", std::nullopt, std::nullopt, 255};

QImage straight(const QPixmap& pixmap)
{
    return pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
}

template <typename Predicate>
int countPixels(const QImage& source, Predicate predicate)
{
    const QImage image =
        source.convertToFormat(QImage::Format_ARGB32); // pixel() answers premultiplied values as they are
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += predicate(image.pixel(x, y));
    }
    return count;
}

bool isOpaque(QRgb pixel)
{
    return qAlpha(pixel) == 255;
}

/// Rounding of nearly transparent pixels aside.
bool isNear(QRgb pixel, const QColor& color)
{
    return qAlpha(pixel) < 32 || (qAbs(qRed(pixel) - color.red()) <= 8 && qAbs(qGreen(pixel) - color.green()) <= 8 &&
                                  qAbs(qBlue(pixel) - color.blue()) <= 8);
}

QPixmap named(const char* name, qreal ratio = 1)
{
    return NineSlice::GetImage(QStringLiteral("iconsV2"), QString::fromLatin1(name), ratio);
}
} // namespace

class tst_nineslice : public QObject
{
    Q_OBJECT

private slots:

    void init() { PaletteManager::Instance().setSkin(Skin::Dark); }

    void everyImageIsDrawnAtEveryRatioAndUnlikeTheOthers()
    {
        const QString root = QStringLiteral(":/ViewDeckQt/images");
        QDirIterator files(root, {QStringLiteral("*.svg")}, QDir::Files, QDirIterator::Subdirectories);
        QHash<QByteArray, QString> seen;
        while (files.hasNext()) {
            const QString file = files.next().mid(root.size() + 1).chopped(4);
            if (!file.contains(QLatin1Char('/')))
                continue;
            const QString group = file.section(QLatin1Char('/'), 0, 0);
            const QString name = file.section(QLatin1Char('/'), 1);
            const QImage image = straight(NineSlice::GetImage(group, name, 1));
            QVERIFY(group == QLatin1String("panes") || image.width() == image.height());
            for (const qreal ratio : {1.0, 1.25, 2.0}) {
                const QPixmap pixmap = NineSlice::GetImage(group, name, ratio);
                QCOMPARE(pixmap.devicePixelRatio(), ratio);
                QCOMPARE(pixmap.size(), (QSizeF(image.size()) * ratio).toSize());
                const int drawn = countPixels(straight(pixmap), [](QRgb pixel) { return qAlpha(pixel) > 64; });
                QVERIFY2(drawn >= 6 * ratio * ratio, qPrintable(file));
            }
            const QByteArray pixels(reinterpret_cast<const char*>(image.constBits()), int(image.sizeInBytes()));
            QVERIFY2(!seen.contains(pixels), qPrintable(file + QStringLiteral(" = ") + seen.value(pixels)));
            seen.insert(pixels, file);
        }
        QVERIFY(seen.size() > 20);
    }

    void statusImagesHaveTheirNumbers()
    {
        QSet<QString> names;
        for (const int id : {3, 4, 5}) {
            names.insert(NineSlice::GetResourceIDString(id));
            QVERIFY(NineSlice::HasImage(QStringLiteral("iconsV2"), NineSlice::GetResourceIDString(id)));
        }
        QCOMPARE(names.size(), 3);
    }

    void theFirstColourIsReplacedAndNothingElse()
    {
        const QColor colour(200, 30, 90);
        for (const char* name : {"General/folder_open.png", "BinMedia/sequence.png"}) {
            QImage image = named(name, 2).toImage();
            const QImage before = image.convertToFormat(QImage::Format_ARGB32);
            const QImage::Format format = image.format();
            NineSlice::ChangeFirstIconColor(image, 0, colour);
            QCOMPARE(image.devicePixelRatio(), 2.0);
            QCOMPARE(image.format(), format);
            QCOMPARE(image.convertToFormat(QImage::Format_Alpha8), before.convertToFormat(QImage::Format_Alpha8));
            QCOMPARE(countPixels(image, [&](QRgb pixel) { return !isNear(pixel, colour); }), 0);
            QVERIFY(countPixels(before, [&](QRgb pixel) { return !isNear(pixel, colour); }) > 20);
        }
        QImage none;
        NineSlice::ChangeFirstIconColor(none, 0, colour);
        QVERIFY(none.isNull());
    }

    void recolouringKeepsTheAccent()
    {
        QImage image = straight(NineSlice::GetImage(profileIcon, 1));
        const QColor accentColour = PaletteManager::Instance().color(QStringLiteral("IconSecondColor"));
        const auto isAccent = [&](QRgb pixel) { return isOpaque(pixel) && isNear(pixel, accentColour); };
        const int accent = countPixels(image, isAccent);
        QVERIFY(accent > 8);
        NineSlice::ChangeFirstIconColor(image, 0, Qt::white);
        QCOMPARE(countPixels(image, isAccent), accent);
        QVERIFY(countPixels(image, [](QRgb pixel) { return pixel == qRgb(255, 255, 255); }) > 4);
    }

    void theToleranceDecidesWhatCountsAsGrey()
    {
        QImage tinted(1, 1, QImage::Format_ARGB32);
        tinted.fill(QColor(120, 130, 150));
        QImage strict = tinted;
        NineSlice::ChangeFirstIconColor(strict, 0, Qt::red);
        QVERIFY(strict.pixelColor(0, 0) != QColor(Qt::red));
        NineSlice::ChangeFirstIconColor(tinted, 30, Qt::red);
        QCOMPARE(tinted.pixelColor(0, 0), QColor(Qt::red));
    }

    void imagesFollowTheSkin()
    {
        for (const Skin skin : {Skin::Dark, Skin::Light, Skin::Dark}) {
            PaletteManager::Instance().setSkin(skin);
            const QColor first = PaletteManager::Instance().color(QStringLiteral("IconFirstColor"));
            const QImage image = straight(NineSlice::GetImage(plusIcon, 1));
            QVERIFY(countPixels(image, [&](QRgb pixel) { return isOpaque(pixel) && isNear(pixel, first); }) > 20);
            const NineSlice::IconColorSubstitution colors = NineSlice::GetIconColorSubstitution();
            QCOMPARE(colors.first.toQColor(), first);
            QVERIFY(colors.first != colors.second);
        }
    }

    void aDescriptorsColoursAndOpacityAreUsed()
    {
        // The colours that the drawings themselves use, the other way round.
        ResourceData custom = NineSlice::CreateCustomResourceData(profileIcon, NvRGBColor(0, 128, 255), RGBgray8);
        const QImage swapped = straight(NineSlice::GetImage(custom, 1));
        QVERIFY(countPixels(swapped, [](QRgb pixel) { return pixel == qRgb(0, 128, 255); }) > 4);
        QVERIFY(countPixels(swapped, [](QRgb pixel) { return pixel == qRgb(128, 128, 128); }) > 4);

        custom = packageIcon;
        custom.opacity = 102;
        const QImage faint = straight(NineSlice::GetImage(custom, 1));
        const QImage whole = straight(NineSlice::GetImage(packageIcon, 1));
        for (int at = 0; at < 256; ++at) {
            const double expected = qAlpha(whole.pixel(at % 16, at / 16)) * 0.4;
            QVERIFY(qAbs(qAlpha(faint.pixel(at % 16, at / 16)) - expected) <= 1);
        }
    }

    void aMissingImageShowsAPlaceholderAndWarnsOnce()
    {
        support::expectMessage(QtWarningMsg, "NineSlice: there is no image \"General/nothing.png\" in \"iconsV2\"");
        const QImage placeholder = straight(named("General/nothing.png"));
        QCOMPARE(placeholder.size(), QSize(16, 16));
        QVERIFY(countPixels(placeholder, [](QRgb pixel) { return qAlpha(pixel) > 64; }) > 20);
        QCOMPARE(straight(named("General/nothing.png")), placeholder);
    }
};

STRATACUT_TEST_MAIN(tst_nineslice)
#include "tst_nineslice.moc"
