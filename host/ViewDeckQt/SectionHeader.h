#pragma once

#include <QAbstractButton>

namespace ViewDeckQt
{

/// The header of a section that can be hidden; checked while the section is shown.
class SectionHeader : public QAbstractButton
{
    Q_OBJECT

public:
    SectionHeader(const QString& text, QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void expandRequested();
    void collapseRequested();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QFont boldFont() const;
    QRect textRect() const;
    QPixmap arrow() const;
};

} // namespace ViewDeckQt
