#pragma once

#include <QString>

#include <initializer_list>

class QWidget;

namespace ViewDeckQt
{

class AbstractParamWidget;
class ParamTitle;

/// Lays a parameter out as the family does: a title, then its fields, of which the first takes the room and the title's
/// mnemonic, and gives everything the family's look.
/// @return the title, owned by the parameter
ParamTitle* layOutParam(AbstractParamWidget* param, const QString& label, std::initializer_list<QWidget*> fields);

} // namespace ViewDeckQt
