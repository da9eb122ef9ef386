#pragma once

#include "desk/media/Preview.h"

#include <QWidget>

namespace desk::app
{

/// The picture of a monitor: letterboxed on black, one pixel of the picture for one of the screen. Where there is no
/// picture it shows a text instead.
class MonitorView : public QWidget
{
    Q_OBJECT

public:
    explicit MonitorView(QWidget* parent = nullptr);

    /// Null shows none.
    void setPicture(const media::PreviewPtr& picture);
    /// What stands in place of a picture, and why: an invitation, something under way or a failure.
    enum class Tone { Quiet, Attention };
    void setMessage(const QString& text, Tone tone = Tone::Quiet);

    const QString& message() const { return m_message; }

    QSize sizeHint() const override { return {480, 270}; }

    QSize minimumSizeHint() const override { return {160, 90}; }

signals:
    /// The pixels that a picture has room for.
    void boxChanged(const QSize& pixels);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    void measure();
    QRectF placeOf(const media::Preview& picture) const;
    void drawMessage(QPainter& painter) const;

    media::PreviewPtr m_picture;
    QString m_message;
    Tone m_tone = Tone::Quiet;
    QSize m_box;
};

} // namespace desk::app
