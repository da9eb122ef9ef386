#pragma once

#include <QTextEdit>

/// A text in the middle of an empty pane, only to be read.
class PassiveHint : public QTextEdit
{
    Q_OBJECT
public:
    /// @param first the paragraph that is set first; `rest` is put after it as it stands, line ends included.
    PassiveHint(const QString& first, const QString& rest, int pointSize);

    /// A widget that holds nothing but the hint and owns it.
    static QWidget* framed(PassiveHint* hint);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void centre();
};
