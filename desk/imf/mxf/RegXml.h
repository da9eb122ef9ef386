#pragma once

#include <QByteArray>

namespace desk::imf
{

class MetadataSet;
class MetadataSets;

/// One set with everything it refers to as a RegXML element (ST 2001-1) that declares its own namespaces r0, r1 and r2.
/// Items and sets outside the dictionary are left out; references that lead in a circle or nowhere too.
QByteArray toRegXml(const MetadataSet& set, const MetadataSets& sets);

} // namespace desk::imf
