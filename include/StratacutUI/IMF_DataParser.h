#pragma once

#include "StratacutUI/Export.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QVariant>

/// Checks and conversions of a CPL's multi-mix document: {"AudioMapping", "Groups", "AllActiveTracks"}. A "burned" mix
/// belongs to a committed CPL, whose mapping no longer carries its source groups. Nothing here throws.
namespace JSON
{

/// Whether every group is an object with "Name", "Include Master Fader" and an array "Tracks".
STRATACUTUI_EXPORT bool VerifyAudioGroups(const QJsonArray& groups);
/// Whether every entry is an object with "MixMode", "TargetTrack" and, unless burned, "SourceTracksGroups".
STRATACUTUI_EXPORT bool VerifyAudioMapping(const QJsonArray& mapping, bool burned);
/// Whether the mix has a good mapping and, unless burned, good groups and "AllActiveTracks".
STRATACUTUI_EXPORT bool VerifyMultiMix(const QJsonObject& multiMix, bool burned);

/// A mix without mapping, groups and tracks.
STRATACUTUI_EXPORT QJsonObject DefaultMultiMix();
STRATACUTUI_EXPORT QJsonObject MakeMultiMix(const QJsonArray& audioMapping, const QJsonArray& groups,
                                            const QJsonArray& allActiveTracks);

/// Reads out of a CPL's document.
/// @param root the document, an object
/// @param key "Multiple Audio Mix": the mix, an empty object where there is none, an invalid variant where it fails
///        VerifyMultiMix; "Audio": the section. Any other key is a programming error and gives an invalid variant.
STRATACUTUI_EXPORT QVariant GetAudioValue(const QJsonValue& root, const QString& key);
/// The mapping of a CPL's document; empty where the mix is absent or fails a check.
STRATACUTUI_EXPORT QJsonArray GetAudioMapping(const QJsonValue& root);

/// Turns the older form of a mapping into the present one. The target tracks are numbered in order, and there are no
/// source groups: the result passes only the burned check.
STRATACUTUI_EXPORT QJsonArray MigrateLegacyMapping(const QJsonArray& legacy);
/// The list for TargetFormatBuilder::setAudioMapping: one object an entry, with the source tracks as numbers.
STRATACUTUI_EXPORT QJsonArray FlattenMultiMix(const QJsonObject& multiMix);

} // namespace JSON
