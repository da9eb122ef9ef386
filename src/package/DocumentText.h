#pragma once

#include <QJsonObject>
#include <QString>

/// Reading and writing the texts of a package document.
namespace DocumentText
{

/// The value of a key at the top level, or else in the descriptive metadata.
QString read(const QJsonObject& document, const QString& key);
/// Writes a key where it exists with another text, the top level first. @return whether anything was written
bool write(QJsonObject& document, const QString& key, const QString& text);
QString name(const QJsonObject& document);
/// @return whether the name differed and was written
bool setName(QJsonObject& document, const QString& name);

} // namespace DocumentText
