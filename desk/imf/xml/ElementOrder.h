#pragma once

#include "desk/imf/xml/XmlElement.h"

#include <QStringList>

namespace desk::imf
{

/// The elements of an asset map, a packing list or a composition playlist that stand behind one that their schema puts
/// after them (ST 429-9, ST 2067-2, ST 2067-3): "line 12: Issuer stands behind Creator". One an element that holds
/// such.
QStringList misplacedElements(const XmlElement& root);

} // namespace desk::imf
