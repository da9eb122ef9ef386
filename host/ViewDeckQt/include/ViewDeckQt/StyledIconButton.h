#pragma once

#include "ViewDeckQt/Export.h"
#include "ViewDeckQt/NineSlice.h"

#include <QToolButton>

namespace ViewDeckQt
{

/// A flat button that shows one of the library's images in the present skin's colours, sharp at every scale. Its name
/// for assistive technology is its text, or where that is empty its tooltip. Make it checkable for a button that stays
/// down.
class VIEWDECK_EXPORT StyledIconButton : public QToolButton
{
    Q_OBJECT

public:
    explicit StyledIconButton(QWidget* parent = nullptr);
    StyledIconButton(const NineSlice::ResourceData& image, const QString& toolTip, QWidget* parent = nullptr);

    /// @param image see NineSlice::ResourceData; its texts must live as long as the button shows them.
    void setImage(const NineSlice::ResourceData& image);

    /// The same by group and name, which are copied.
    void setImage(const QString& group, const QString& name);

    QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QPixmap image() const;

    NineSlice::ResourceData m_image;
    QString m_group;
    QString m_name;
};

} // namespace ViewDeckQt
