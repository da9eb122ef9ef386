#include "desk/app/window/PositionBar.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <limits>

namespace desk::app
{

namespace
{
constexpr qreal margin = 6;
constexpr qreal thickness = 4;

/// At a mark, open to the side on which the marked span lies.
QPolygonF bracket(qreal x, int side, const QRectF& groove)
{
    const qreal top = groove.top() - 4;
    const qreal bottom = groove.bottom() + 4;
    return QVector<QPointF>{{x, top},
                            {x + side * 4, top},
                            {x + side * 1.5, top + 2},
                            {x + side * 1.5, bottom - 2},
                            {x + side * 4, bottom},
                            {x, bottom}};
}
} // namespace

PositionBar::PositionBar(QWidget* parent) : QAbstractSlider(parent)
{
    setOrientation(Qt::Horizontal);
    setFocusPolicy(Qt::NoFocus);
    setTracking(false);
    setRange(0, 0);
}

void PositionBar::setFrames(qint64 frames)
{
    m_frames = frames;
    setEnabled(frames > 0);
    setRange(0, int(std::clamp<qint64>(frames - 1, 0, std::numeric_limits<int>::max())));
    update();
}

void PositionBar::setMarks(qint64 in, qint64 out)
{
    m_in = in;
    m_out = out;
    update();
}

qreal PositionBar::placeOf(qint64 frame) const
{
    const qreal room = width() - 2 * margin;
    return margin + (m_frames > 1 ? room * qreal(frame) / qreal(m_frames - 1) : 0);
}

void PositionBar::follow(const QMouseEvent& event)
{
    const qreal room = std::max<qreal>(1, width() - 2 * margin);
    const qreal share = std::clamp<qreal>((event.localPos().x() - margin) / room, 0, 1);
    setSliderPosition(int(share * maximum() + 0.5));
}

void PositionBar::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    follow(*event);
    setSliderDown(true);
}

void PositionBar::mouseMoveEvent(QMouseEvent* event)
{
    if (isSliderDown())
        follow(*event);
}

void PositionBar::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        setSliderDown(false);
}

void PositionBar::drawMarks(QPainter& painter, const QRectF& groove) const
{
    if (m_in < 0 && m_out < 0)
        return;
    const qreal from = m_in < 0 ? groove.left() : placeOf(m_in);
    const qreal to = m_out < 0 ? groove.right() : placeOf(m_out);
    const QColor accent = palette().color(QPalette::Link);
    painter.setBrush(accent);
    painter.drawRoundedRect(QRectF(from, groove.top(), std::max<qreal>(2, to - from), groove.height()), 2, 2);
    painter.setBrush(palette().color(QPalette::WindowText));
    if (m_in >= 0)
        painter.drawPolygon(bracket(from, 1, groove));
    if (m_out >= 0)
        painter.drawPolygon(bracket(to, -1, groove));
}

void PositionBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF groove(margin, (height() - thickness) / 2.0, width() - 2 * margin, thickness);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(isEnabled() ? 0.25 : 0.12);
    painter.setBrush(line);
    painter.drawRoundedRect(groove, 2, 2);
    if (!isEnabled())
        return;
    drawMarks(painter, groove);
    const qreal x = placeOf(sliderPosition());
    painter.setBrush(palette().color(QPalette::WindowText));
    const qreal bottom = height() - 1;
    painter.drawPolygon(
        QVector<QPointF>{{x - 5, 0.5}, {x + 5, 0.5}, {x + 1, 6}, {x + 1, bottom}, {x - 1, bottom}, {x - 1, 6}});
}

} // namespace desk::app
