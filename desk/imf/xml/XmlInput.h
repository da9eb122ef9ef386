#pragma once

#include "desk/base/Result.h"
#include "desk/imf/xml/XmlElement.h"

namespace desk::imf
{

/// The text of a document in the encoding that its mark or its declaration names, or else in UTF-8, for
/// QXmlStreamReader. Refuses, with file and line, what that reader would take hours for: its time grows with the square
/// of a start tag's attributes, and of those that a document type declaration lists, before it hands over either.
Result<QString> xmlInput(const QByteArray& xml, const QString& fileName, const XmlLimits& limits);

/// What a document that is refused tells; without line where that is 0.
Error xmlRefusal(const QString& fileName, qint64 line, const QString& what);

} // namespace desk::imf
