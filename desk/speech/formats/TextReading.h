#pragma once

#include "desk/base/Result.h"

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace desk::speech
{

/// The text of a file in UTF-8 or, with a byte order mark, UTF-16, without mark; a replacement character for what is
/// neither.
QString unicodeText(const QByteArray& bytes);

/// The text of a file in UTF-8 or, with a byte order mark, UTF-16; what is neither is taken as Windows-1252, which old
/// caption files are in. Without mark.
QString decodedText(const QByteArray& bytes);

/// The lines of a text, whatever ends them.
QStringList linesOf(const QString& text);

/// "01:02:03.004", "02:03,004", "3.5": milliseconds, or nothing where it is no time.
std::optional<int> parsedTime(const QString& text);

/// Text without markup of caption files (<i>, {\an8}), entities resolved.
QString withoutMarkup(const QString& text);

/// A failure at a line, counted from 1. @param next what to do, or empty for the usual advice.
Error errorAtLine(const QString& file, int line, const QString& what, const QString& next = QString());

} // namespace desk::speech
