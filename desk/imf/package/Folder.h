#pragma once

#include "desk/base/Result.h"

#include <QByteArray>
#include <QString>
#include <QUuid>

namespace desk::imf
{

namespace fileName
{
inline constexpr char assetMap[] = "ASSETMAP.xml";
inline constexpr char volumeIndex[] = "VOLINDEX.xml";
QString packingList(const QUuid& id);
QString composition(const QUuid& id);
QString trackFile(const QUuid& id);
} // namespace fileName

/// Absolute, with every symbolic link on the way resolved as far as the path exists, without a slash at its end.
QString canonicalFolder(const QString& folder);

/// Fails where there is no such folder.
Status checkFolder(const QString& folder);

/// Absolute path of a mapped file, whether it exists or not. Refuses paths that the standard does not allow and those
/// that lead out of the folder over a symbolic link.
Result<QString> mappedFile(const QString& folder, const QString& path);

/// The bytes of a document, which is far smaller than a track file; a larger file is refused.
Result<QByteArray> readDocumentFile(const QString& path);

} // namespace desk::imf
