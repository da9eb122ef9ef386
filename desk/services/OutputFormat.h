#pragma once

#include "desk/base/Rational.h"
#include "desk/imf/PictureFormat.h"
#include "desk/imf/j2k/J2kProfile.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

namespace desk::services
{

/// The words by which people choose and read parameters. What the output writes and what is read from a package is
/// spelt alike.
namespace words
{
inline constexpr char unknown[] = "Unknown";
/// For the parameters of a track that the composition does not have.
inline constexpr char none[] = "None";
inline constexpr char application[] = "App #2E";
inline constexpr char pcm[] = "PCM";
inline constexpr char monoscopic[] = "None";

/// "23.976", "24", ...; empty where the output has no such rate.
QString frameRate(Rational rate);
/// Invalid for any other text.
Rational frameRate(const QString& name);
QStringList frameRates();
/// "1920x1080".
QString resolution(int width, int height);
QString compression(imf::J2kSettings::Mode mode);
QString colour(imf::Colour colour);
/// "48 kHz".
QString sampleRate(int hertz);
/// "2K, main level 2, sublevel 1"; the base is told from the capability word.
QString profile(const imf::J2kProfile& profile);
} // namespace words

/// Everything that decides how one composition is written.
struct OutputFormat {
    imf::J2kSettings::Mode mode = imf::J2kSettings::Mode::Lossy;
    int width = 1920;
    int height = 1080;
    Rational rate{24, 1};
    /// The picture's bit rate in 10^6 bits a second; only for lossy compression.
    int megabits = 150;
    QString audioMix;
    /// The flat list of the audio mapping; empty means all active tracks in `audioMix`.
    QJsonArray mapping;

    imf::PictureFormat picture() const;
    imf::J2kSettings j2k() const;
    /// The text of one parameter; empty for an unknown key.
    QString value(const QString& parameter) const;
    /// What the parameter may be beside the others as they are.
    QStringList choices(const QString& parameter) const;
    /// Takes a value that is one of choices(parameter) and moves others where the two exclude each other.
    bool set(const QString& parameter, const QString& value);

    QJsonObject toJson() const;
    /// Parameters that are missing or not offered keep their defaults.
    static OutputFormat fromJson(const QJsonObject& json);
    /// The keys in the order in which they are to be set: a parameter before those that depend on it.
    static const QStringList& keys();

private:
    QStringList profileChoices() const;
    QString profileName(int rate) const;
    void settleBitRate();
};

} // namespace desk::services
