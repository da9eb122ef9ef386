#pragma once

#include <QLabel>
#include <QSet>

class QShortcut;

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

    /// The letter that leads to the field together with Alt; null where there is none.
    QChar mnemonic() const;

    /// Whether the text itself marks a letter with "&".
    bool hasOwnMnemonic() const;

    /// Gives a title that marks none the first letter that is not taken, beginnings of words before other letters, or
    /// none where all are.
    void chooseMnemonic(const QSet<QChar>& taken);

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

    QString markedText() const;
    void setMnemonicAt(int position);

    QShortcut* m_shortcut = nullptr;
    int m_mnemonicAt = -1;
    bool m_highlighted = false;
};

} // namespace ViewDeckQt
