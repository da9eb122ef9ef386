#pragma once

#include "StratacutUI/Export.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

/// The keys of the package documents. Every item of the tree keeps its whole state in one JSON object with these keys;
/// case and blanks count. A constant is named after its key without the blanks; "Groups" alone is `TrackGroups`.
namespace ImfDict
{

/// @name Every item
/// @{
inline constexpr char Name[] = "Name";
/// "Delivery", "IMP" or "CPL".
inline constexpr char Type[] = "Type";
/// Boolean: true while the item is uncommitted.
inline constexpr char Mutable[] = "Mutable";
inline constexpr char DescriptiveMetadata[] = "DescriptiveMetadata";
/// @}

/// @name Deliveries
/// @{
/// Boolean: true for an IMF Original, false for an IMF Supplemental.
inline constexpr char Original[] = "Original";
/// The same fact as text, read only where "Original" is absent: "Original" or anything else.
inline constexpr char Kind[] = "Kind";
/// The delivery's folder.
inline constexpr char Path[] = "Path";
/// @}

/// @name The section "Video"
/// @{
inline constexpr char Video[] = "Video";
inline constexpr char ApplicationPattern[] = "Application Pattern";
inline constexpr char Compression[] = "Compression";
inline constexpr char CompressionProfile[] = "Compression Profile";
inline constexpr char Resolution[] = "Resolution";
inline constexpr char FrameRate[] = "Frame Rate";
inline constexpr char AspectRatio[] = "Aspect Ratio";
inline constexpr char Colorimetry[] = "Colorimetry";
inline constexpr char ColorDepth[] = "Color Depth";
inline constexpr char ColorSpace[] = "Color Space";
inline constexpr char StereoscopicSettings[] = "Stereoscopic Settings";
inline constexpr char AlternativeCenterCut[] = "Alternative Center Cut";
/// @}

/// @name The section "Audio"
/// @{
inline constexpr char Audio[] = "Audio";
inline constexpr char Format[] = "Format";
inline constexpr char SampleRate[] = "Sample Rate";
inline constexpr char BitDepth[] = "Bit Depth";
inline constexpr char AudioMix[] = "Audio Mix";
/// Object: "AudioMapping", "Groups", "AllActiveTracks".
inline constexpr char MultipleAudioMix[] = "Multiple Audio Mix";
/// @}

/// @name The section "DescriptiveMetadata"
/// @{
inline constexpr char Issuer[] = "Issuer";
inline constexpr char Creator[] = "Creator";
inline constexpr char Annotation[] = "Annotation";
inline constexpr char ContentOriginator[] = "ContentOriginator";
/// What the tree shows of a CPL; a CPL without it has an empty row.
inline constexpr char ContentTitle[] = "ContentTitle";
/// Object: "Scope", "Value" and, for the chooser, "values".
inline constexpr char ContentKind[] = "ContentKind";
inline constexpr char Scope[] = "Scope";
inline constexpr char Value[] = "Value";
/// @}

/// @name Parameters with a list of choices
/// @{
/// Array of strings: the choices.
inline constexpr char values[] = "values";
/// Number: the position of the choice that is made, counted from 0.
inline constexpr char currentIndex[] = "currentIndex";
/// @}

/// @name Parameters that only the parameters view knows
/// @{
inline constexpr char Template[] = "Template";
inline constexpr char Encoding[] = "Encoding";
inline constexpr char LocaleList[] = "LocaleList";
/// @}

/// @name The multi-mix document
/// @{
inline constexpr char AudioMapping[] = "AudioMapping";
inline constexpr char TrackGroups[] = "Groups";
inline constexpr char AllActiveTracks[] = "AllActiveTracks";
/// @}

/// @name A group of source tracks
/// @{
/// Boolean, beside "Name" and "Tracks".
inline constexpr char IncludeMasterFader[] = "Include Master Fader";
/// Array of track names.
inline constexpr char Tracks[] = "Tracks";
/// @}

/// @name A mapping entry
/// @{
/// "A" and the number of the output track, counted from 1.
inline constexpr char TargetTrack[] = "TargetTrack";
inline constexpr char MixMode[] = "MixMode";
/// The name of a group, or "All Active Tracks".
inline constexpr char SourceTracksGroups[] = "SourceTracksGroups";
/// Object: "AudioContentKind" and "RFC5646SpokenLanguage".
inline constexpr char Metadata[] = "Metadata";
inline constexpr char AudioContentKind[] = "AudioContentKind";
inline constexpr char RFC5646SpokenLanguage[] = "RFC5646SpokenLanguage";
/// @}

/// @name The older mapping entry and the host's flat list
/// @{
inline constexpr char AudioMixdownSettings[] = "AudioMixdownSettings";
inline constexpr char AudioIncludeMasterFader[] = "AudioIncludeMasterFader";
inline constexpr char In[] = "In";
inline constexpr char Out[] = "Out";
/// @}

/// @name Saved state only
/// @{
/// Array of documents, in tree order.
inline constexpr char Children[] = "Children";
/// Boolean: the delivery has no committed original.
inline constexpr char NewDelivery[] = "NewDelivery";
inline constexpr char CPLMobID[] = "CPLMobID";
inline constexpr char CPLProjectName[] = "CPLProjectName";
inline constexpr char CPLBin[] = "CPLBin";
inline constexpr char CPLFPSValue[] = "CPLFPSValue";
inline constexpr char CPLToken[] = "CPLToken";
/// Array: the CPL's track groups.
inline constexpr char CPLGroups[] = "CPLGroups";
/// @}

/// The URI of the list of content kinds, written as "Scope" (ST 2067-3:2013).
STRATACUTUI_EXPORT QString contentKindScope();
/// The labels that the user chooses from: an empty one, then the twelve kinds.
STRATACUTUI_EXPORT QStringList contentKindLabels();
/// The code of a label. Any other text, a code among them, stands for itself; blank text gives an empty code.
STRATACUTUI_EXPORT QString contentKindCode(const QString& labelOrCode);
/// The label of a code; an unknown code stands for itself.
STRATACUTUI_EXPORT QString contentKindLabel(const QString& code);
/// The object to store as "ContentKind": scope, code and the labels to choose from.
STRATACUTUI_EXPORT QJsonObject contentKindObject(const QString& labelOrCode);

} // namespace ImfDict
