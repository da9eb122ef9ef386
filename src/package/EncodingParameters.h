#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

class TargetFormatBuilder;

/// The encoding parameters in a CPL's document: which section holds each, and how a choice is written.
namespace EncodingParameters
{

/// What to do with a parameter for which the document and the builder name different choices.
enum class Precedence {
    Builder, ///< write the builder's
    Document ///< leave the document's
};

/// Whether the parameter's value is kept by the target-format builder.
bool isManaged(const QString& key);
/// {"values", "currentIndex"}
QJsonObject entry(const QStringList& choices, int currentIndex);
/// The text of the choice that a document's entry makes: an entry as above, or plain text.
QString choice(const QJsonValue& entry);
/// The text of the choice that the document makes for a parameter; empty when it makes none.
QString choice(const QJsonObject& document, const QString& key);
/// Stores an entry in its section. @return false for a key that belongs to no section
bool store(QJsonObject& document, const QString& key, const QJsonObject& entry);
/// Hands the document's choices to the builder. A choice that the builder does not offer any more is dropped.
void restore(TargetFormatBuilder& builder, const QJsonObject& document);
/// Writes the choices of every parameter for which the builder has any.
void write(QJsonObject& document, const TargetFormatBuilder& builder, Precedence precedence);

} // namespace EncodingParameters
