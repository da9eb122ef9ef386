#pragma once

#include "ViewDeckQt/PWContainer.h"

namespace ViewDeckQt
{

class SectionHeader;

/// A container below a header that hides and shows it: by a click, by Space or Enter, by Right or "+" to expand and
/// Left or "-" to collapse (mirrored where the layout is). Expanded at first.
class VIEWDECK_EXPORT PWExpandableContainer : public PWContainer
{
    Q_OBJECT

public:
    PWExpandableContainer(QWidget* parent, const QString& label, const QString& id);

    bool isExpanded() const { return m_expanded; }

public Q_SLOTS:
    void expand();
    /// Hides the contents. When one of them has the focus, the header takes it.
    void collapse();
    void toggle();

Q_SIGNALS:
    /// The contents have been shown or hidden, by the user or the program.
    void expansionChanged();

protected:
    void changeEvent(QEvent* event) override;

private:
    PWExpandableContainer(QWidget* parent, const QString& label, const QString& id, QVBoxLayout* contents);
    void indent();
    void showContents(bool expanded);

    SectionHeader* m_header;
    QWidget* m_body;
    bool m_expanded = true;
};

} // namespace ViewDeckQt
