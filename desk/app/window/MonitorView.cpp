#include "desk/app/window/MonitorView.h"

#include "desk/app/window/PaneParts.h"

#include <QEvent>
#include <QImage>
#include <QPainter>

namespace desk::app
{

namespace
{
// Screens are black in either skin, and what stands on them is not the skin's.
const QColor screenColor(12, 12, 13);
const QColor quietText(150, 152, 156);
const QColor attentionText(255, 184, 76);
} // namespace

MonitorView::MonitorView(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void MonitorView::setPicture(const media::PreviewPtr& picture)
{
    m_picture = picture;
    update();
}

void MonitorView::setMessage(const QString& text, Tone tone)
{
    if (text == m_message && tone == m_tone)
        return;
    m_message = text;
    m_tone = tone;
    setAccessibleDescription(text);
    update();
}

void MonitorView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    measure();
}

bool MonitorView::event(QEvent* event)
{
    // The window has come to a screen of another density.
    if (event->type() == QEvent::ScreenChangeInternal || event->type() == QEvent::Show)
        measure();
    return QWidget::event(event);
}

void MonitorView::measure()
{
    const QSize box = (QSizeF(size()) * devicePixelRatioF()).toSize();
    if (box == m_box)
        return;
    m_box = box;
    emit boxChanged(box);
}

/// Whole pixels of the screen, so that the picture keeps its sharpness.
QRectF MonitorView::placeOf(const media::Preview& picture) const
{
    const QSize fitted = picture.size.scaled(m_box, Qt::KeepAspectRatio);
    const bool made = std::abs(fitted.width() - picture.size.width()) <= 1;
    const QSize pixels = made ? picture.size : fitted;
    const QPoint corner((m_box.width() - pixels.width()) / 2, (m_box.height() - pixels.height()) / 2);
    const qreal ratio = devicePixelRatioF();
    return {QPointF(corner) / ratio, QSizeF(pixels) / ratio};
}

void MonitorView::drawMessage(QPainter& painter) const
{
    painter.setPen(m_tone == Tone::Attention ? attentionText : quietText);
    const int margin = 2 * spacing::margin;
    painter.drawText(rect().adjusted(margin, margin, -margin, -margin), Qt::AlignCenter | Qt::TextWordWrap, m_message);
}

void MonitorView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), screenColor);
    if (!m_message.isEmpty())
        return drawMessage(painter);
    if (!m_picture || m_picture->pixels.empty())
        return;
    const QSize size = m_picture->size;
    const QImage image(m_picture->pixels.data(), size.width(), size.height(), m_picture->stride, QImage::Format_RGB32);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(placeOf(*m_picture), image);
}

} // namespace desk::app
