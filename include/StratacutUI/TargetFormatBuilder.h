#pragma once

#include "StratacutUI/Export.h"

#include <QJsonArray>
#include <QString>
#include <QStringList>

/// The host's description of one CPL's output format: the current encoding parameters and what each may be.
///
/// Made by MXE_Bridge::createTargetFormatBuilder for each CPL and shared by the copies of that CPL; destroyed with the
/// last of them. Used on the user-interface thread; nothing here throws. Keys are the parameter keys of the CPL
/// document: "Application Pattern", "Compression", "Resolution", "Frame Rate", "Colorimetry", "Color Depth",
/// "Compression Profile", "Stereoscopic Settings", "Bit Depth", "Format", "Sample Rate", "Audio Mix". The order of the
/// declarations is the binary interface.
class STRATACUTUI_EXPORT TargetFormatBuilder
{
public:
    /// Slot 0.
    virtual ~TargetFormatBuilder();

    /// Slot 1. The whole configuration as the compact text of a JSON object. The host gets it back through
    /// IMFO_Bridge::applyCommitSettings; the module reads nothing in it.
    virtual QString settings() const = 0;

    /// Slot 2. The keys that the host manages, in the order in which they are to be set: a parameter stands before
    /// those whose choices depend on it.
    virtual QStringList keys() const = 0;

    /// Slot 3. What the parameter may be at present, never empty for a managed key; an empty list for any other key.
    virtual QStringList choices(const QString& key) const = 0;

    /// Slot 4. The parameter's current value, one of choices(key); an empty text for an unmanaged key.
    virtual QString value(const QString& key) const = 0;

    /// Slot 5. Sets a parameter. A value that is not among the choices is ignored. Choices and values of other
    /// parameters may change so that the whole stays consistent.
    /// @return whether the builder took the value.
    virtual bool setValue(const QString& key, const QString& value) = 0;

    /// Slot 6. The frame rate of the output in frames a second, in the spelling of choices("Frame Rate"); empty where
    /// it has no name there.
    virtual QString frameRate() const = 0;

    /// Slot 7. Hands over the audio mapping as the flat list that JSON::FlattenMultiMix makes: one object a target
    /// track with "Out", "In", "AudioMixdownSettings", "AudioIncludeMasterFader", "RFC5646SpokenLanguage" and
    /// "AudioContentKind".
    virtual void setAudioMapping(const QJsonArray& mapping) = 0;
};
