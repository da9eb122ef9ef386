#pragma once

#include "ViewDeckQt/AbstractParamWidget.h"

class QVBoxLayout;

namespace ViewDeckQt
{

/// Holds parameter widgets one below the other. It has no value of its own; making it read-only makes every parameter
/// widget in it so.
class VIEWDECK_EXPORT PWContainer : public AbstractParamWidget
{
    Q_OBJECT

public:
    PWContainer(QWidget* parent, const QString& id);

    /// Appends a widget and takes ownership of it. The Tab key visits contents in the order of their adding.
    virtual void addContent(QWidget* content);

    void setReadOnly(bool readOnly) override;

protected:
    /// For a container that gives its contents a place of its own: a layout of which contents are added to the end.
    PWContainer(QWidget* parent, const QString& id, QVBoxLayout* contents);

private:
    QWidget* lastTabStop() const;

    QVBoxLayout* m_contents;
};

} // namespace ViewDeckQt
