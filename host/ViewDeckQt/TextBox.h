#pragma once

#include <QPlainTextEdit>

namespace ViewDeckQt
{

/// A box of plain text with the frame of the family's fields, as high as its text within bounds.
class TextBox : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit TextBox(QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    int lines() const;
    int heightOf(int lines) const;
    void fitHeight();
};

} // namespace ViewDeckQt
