#pragma once

#include "desk/base/Result.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace desk::imf
{

/// Raw SHA-1, 20 bytes.
QByteArray sha1Of(const QByteArray& bytes);

/// Raw SHA-1 of a file. `progress` gets the bytes read since its last call and answers false to stop; then the result
/// is an empty digest.
Result<QByteArray> sha1OfFile(const QString& path, const std::function<bool(qint64)>& progress = {});

} // namespace desk::imf
