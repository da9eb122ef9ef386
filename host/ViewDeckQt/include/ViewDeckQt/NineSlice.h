#pragma once

#include "ViewDeckQt/Export.h"

#include "NvCore/NvRGBColor.h"

#include <QPixmap>
#include <QString>

#include <optional>

class QImage;

/// Images by group and name, drawn from vector files that are compiled into the library.
///
/// A group is a folder of the image sets ("iconsV2/General"), a name a file in it or below; ".png" at the end of a name
/// means the same as no extension. Images have two colours of their own that follow the skin: the first is a neutral
/// grey, the second an accent; status colours are fixed. Sizes are in device-independent pixels and do not depend on
/// the ratio. Images are cached. User-interface thread only, and only while the application object exists.
namespace NineSlice
{

/// Names one image and how to colour it. An aggregate that can be a constant with static storage; the texts are not
/// copied and must live as long.
struct ResourceData {
    const char* group = nullptr;
    const char* id = nullptr;
    /// What to draw in place of the skin's first and second icon colour.
    std::optional<NvRGBColor> firstCustomColor;
    std::optional<NvRGBColor> secondCustomColor;
    /// Opacity of the whole image, 0 to 255.
    quint8 opacity = 255;
};

/// The skin's colours for the images' first and second colour.
struct IconColorSubstitution {
    NvRGBColor first;
    NvRGBColor second;
};

/// The image in the present skin's colours, at the device pixel ratio of the sharpest screen. An image that does not
/// exist gives a placeholder of 16 x 16, and a warning the first time.
VIEWDECK_EXPORT QPixmap GetImage(const QString& group, const QString& name);

/// The same for a chosen device pixel ratio, at least 0.5 and at most 8.
VIEWDECK_EXPORT QPixmap GetImage(const QString& group, const QString& name, qreal devicePixelRatio);

/// The image of a descriptor, with its own colours and opacity.
VIEWDECK_EXPORT QPixmap GetImage(const ResourceData& resource);
VIEWDECK_EXPORT QPixmap GetImage(const ResourceData& resource, qreal devicePixelRatio);

/// Whether GetImage would find the image.
VIEWDECK_EXPORT bool HasImage(const QString& group, const QString& name);

/// The name in the set "iconsV2" of a numbered image; empty for a number that names none.
///
/// | id | image                                                        |
/// |----|--------------------------------------------------------------|
/// | 3  | an item that is committed                                    |
/// | 4  | an item that is not committed and whose status has been set  |
/// | 5  | an item whose status has not been set                        |
VIEWDECK_EXPORT QString GetResourceIDString(int id);

/// Recolours an image's first colour, that is its neutral greys, in place; opacity and other colours stay.
/// @param tolerance how far apart a pixel's channels may be for the pixel still to count wholly as grey, 0 to 255.
///        0 suits every image of this library.
VIEWDECK_EXPORT void ChangeFirstIconColor(QImage& image, int tolerance, const QColor& color);

/// A descriptor of the same image in colours of its own.
VIEWDECK_EXPORT ResourceData CreateCustomResourceData(const ResourceData& base, std::optional<NvRGBColor> first,
                                                      std::optional<NvRGBColor> second = std::nullopt);

/// What images are drawn in by the present skin.
VIEWDECK_EXPORT IconColorSubstitution GetIconColorSubstitution();

/// The text colour of selected rows in tables and trees; nothing where the skin leaves it to the style.
VIEWDECK_EXPORT std::optional<NvRGBColor> GetRowColTextColorForTable();

} // namespace NineSlice
