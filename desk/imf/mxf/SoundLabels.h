#pragma once

#include <QString>
#include <QStringList>

namespace desk::imf
{

/// Whether the text is well formed as a language tag (RFC 5646, 2.1), grandfathered tags excepted. It may have any
/// number of parts: "en", "en-AU", "zh-Hant-TW". Whether anybody has registered them is not asked.
bool isLanguageTag(const QString& text);

/// The symbols of MCAAudioContentKind (ST 377-41) that a track can be given: "PRM", "DXC", "MEC", ...
const QStringList& soundContentKinds();

} // namespace desk::imf
