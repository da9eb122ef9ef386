#pragma once

class QJsonObject;
class QString;

namespace ViewDeckQt
{
class AbstractParamWidget;
}

/// How a value of a package document is shown in a parameter widget.
namespace ParamValues
{

/// Shows the value that the document holds for a key at its top level, in its descriptive metadata or in its encoding
/// sections, in this order. An audio mapping is given the whole document. Another
/// widget whose value the document lacks is left as it is.
void show(ViewDeckQt::AbstractParamWidget& widget, const QString& key, const QJsonObject& document);

} // namespace ParamValues
