#pragma once

#include <QLabel>
#include <QString>

class QHBoxLayout;

namespace desk::app
{

/// Distances of the desk's panes, in device-independent pixels. They are those of the package manager's own panes.
namespace spacing
{
inline constexpr int margin = 9;
inline constexpr int gap = 6;
} // namespace spacing

/// A label for one line, which takes no more room than there is: what does not fit is elided and told by a tool tip.
class PaneLabel : public QLabel
{
    Q_OBJECT

public:
    explicit PaneLabel(const QString& text = {}, QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool isElided() const;
};

/// A label in the colour of what stands back: facts, hints, empty lists. Follows the skin.
class QuietLabel : public PaneLabel
{
    Q_OBJECT

public:
    explicit QuietLabel(const QString& text = {}, QWidget* parent = nullptr);

protected:
    void changeEvent(QEvent* event) override;

private:
    void useQuietColor();

    bool m_changing = false;
};

/// The name of a pane, in bold.
QLabel* paneTitle(const QString& text);

/// The title of a field, which a key leads to. The field takes its name from it.
QLabel* fieldTitle(const QString& text, QWidget* field);

/// An invitation in the middle of an empty pane.
QLabel* invitation(const QString& text);

} // namespace desk::app
