#pragma once

#include "ViewDeckQt/Export.h"

#include <QLineEdit>

namespace ViewDeckQt
{

/// A line of text in the look of the parameter widgets. Without the focus, a text that does not fit is elided; a
/// tooltip then shows it whole. Read-only, it is plain text without a frame that can still be selected and copied.
class VIEWDECK_EXPORT QFFLineEditQt : public QLineEdit
{
    Q_OBJECT

public:
    explicit QFFLineEditQt(QWidget* parent = nullptr);
    explicit QFFLineEditQt(const QString& text, QWidget* parent = nullptr);

    /// Shows a text that the program has, without touching cursor, selection and undo where it stands there already;
    /// where it does not, the cursor keeps its place as far as it can. Not reported by textEdited. Where the program
    /// has no other text than before, an unfinished one stays.
    void showText(const QString& text);

    /// Whether the user has changed the text and has neither left the line nor pressed Enter.
    bool isUnfinished() const { return text() != m_settled; }

    /// Brings back what stood there before an unfinished change.
    void revert();

    /// Where a text that does not fit is cut; at its end unless set.
    void setElideMode(Qt::TextElideMode mode);

    /// Takes what stands there now as settled, as if it had been committed.
    void settle();

Q_SIGNALS:
    /// The user has pressed Enter or left the line after changing its text.
    void textCommitted(const QString& text);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QRect textRect() const;
    bool isElided() const;
    void commit();

    QString m_settled;
    Qt::TextElideMode m_elideMode = Qt::ElideRight;
};

} // namespace ViewDeckQt
