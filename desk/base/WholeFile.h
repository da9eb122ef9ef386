#pragma once

#include "desk/base/Result.h"

#include <QSaveFile>

namespace desk
{

/// Writes a file whole, under another name first: it holds all the bytes, or is as it was.
/// @param failure what to tell where that fails; the system's reason is added. @param next the next step then.
inline Status writeWhole(const QString& path, const QByteArray& bytes, const QString& failure,
                         const QString& next = QStringLiteral("check the rights and the space of the folder"))
{
    QSaveFile file(path);
    // commit() alone does not notice that a full disk has cut its last write.
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush() && file.commit())
        return {};
    return Error{path, {}, {}, QStringLiteral("%1 (%2)").arg(failure, file.errorString()), next};
}

} // namespace desk
