#pragma once

#include <QLabel>

namespace ViewDeckQt
{

/// The title of a parameter, beside its field. It keeps room for its highlighted look, so that highlighting moves
/// nothing; a text that does not fit is elided.
class ParamTitle : public QLabel
{
    Q_OBJECT

public:
    ParamTitle(const QString& text, QWidget* parent);

    /// Makes the title belong to a field: its mnemonic goes there, and the field takes its name from the title.
    void setField(QWidget* field);

    void setHighlighted(bool highlighted);

    bool isHighlighted() const { return m_highlighted; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QFont boldFont() const;
    QString plainText() const;
    QRect textRect() const;

    bool m_highlighted = false;
};

} // namespace ViewDeckQt
