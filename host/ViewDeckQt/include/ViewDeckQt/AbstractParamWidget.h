#pragma once

#include "ViewDeckQt/Export.h"

#include <QString>
#include <QVariant>
#include <QWidget>

namespace ViewDeckQt
{

/// One parameter of a form: a title and a value that the user reads or changes. The base of a family whose members look
/// alike and line up: all titles of a page share one column, however deep their containers are nested. A page is what
/// fills a window, a scroll area, a pane of a splitter or a page of a stacked widget. A title that marks no letter with
/// "&" gets a mnemonic that nothing else on the page, no button and no menu of the window has.
///
/// A value set by the program is shown and never reported; valueChanged reports the user's changes alone. Setting the
/// value that is shown already changes nothing, not even the cursor, the selection or what can be undone, so a model
/// may answer every report by setting the value again. Owned by the Qt parent. User-interface thread only.
class VIEWDECK_EXPORT AbstractParamWidget : public QWidget
{
    Q_OBJECT

public:
    /// @param id ties the widget to what it stands for; kept as it is, never shown.
    AbstractParamWidget(const QString& id, QWidget* parent);
    ~AbstractParamWidget() override;

    QString getId() const { return m_id; }

    /// What is shown; invalid for a widget without a value of its own, such as a container.
    virtual QVariant getValue() const;

    /// Shows the value; one that the kind of widget cannot show is shown as empty.
    virtual void setValue(const QVariant& value);

    /// A read-only widget shows its value as plain text that can still be reached by keyboard, selected and copied.
    virtual void setReadOnly(bool readOnly);

    bool isReadOnly() const { return m_readOnly; }

Q_SIGNALS:
    /// The user has changed the value.
    void valueChanged(const QVariant& value);

private:
    QString m_id;
    bool m_readOnly = false;
};

} // namespace ViewDeckQt
