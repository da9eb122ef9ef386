#pragma once

#include <QAbstractSlider>

namespace desk::app
{

/// The length of what a monitor shows, with the marked span and the position. Its value is the position in frames;
/// sliderPressed() and sliderMoved() tell what a mouse asks for.
class PositionBar : public QAbstractSlider
{
    Q_OBJECT

public:
    explicit PositionBar(QWidget* parent = nullptr);

    void setFrames(qint64 frames);
    /// -1 for a mark that is not set; the mark out lies inside the span.
    void setMarks(qint64 in, qint64 out);

    /// The middle of a frame, in pixels from the left.
    qreal placeOf(qint64 frame) const;

    QSize sizeHint() const override { return {200, 18}; }

    QSize minimumSizeHint() const override { return {80, 18}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void follow(const QMouseEvent& event);
    void drawMarks(QPainter& painter, const QRectF& groove) const;

    qint64 m_frames = 0;
    qint64 m_in = -1;
    qint64 m_out = -1;
};

} // namespace desk::app
