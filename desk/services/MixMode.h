#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace desk::services
{

/// What becomes of the tracks that a mix mode gets.
enum class MixRule {
    /// All in one channel.
    Sum,
    /// Each where its label says.
    Place,
    /// One to one.
    Route,
    /// A 5.1 folded down to two channels.
    Downmix,
    /// One to one into as many numbered channels as there are tracks.
    Number
};

/// One way of making sound from tracks, and what the track file is labelled.
struct MixMode {
    const char* name;
    /// MCATagSymbol of the soundfield group.
    const char* soundfield;
    MixRule rule;

    /// MCATagSymbols of the soundfield's channels, in the order of the samples; empty for numbered ones.
    QVector<QString> channels() const;
};

/// "Mono", "Stereo", "5.1 to Stereo", "Dual Mono", "Lt-Rt", the other layouts, "Discrete".
const QVector<MixMode>& mixModes();
QStringList mixModeNames();
/// Null for a name that is no mix mode.
const MixMode* findMixMode(const QString& name);

/// The modes that unmapped tracks can be laid out in, the smallest first: "Mono", "Stereo", and the surround layouts
/// that have a soundfield (ST 377-4, ST 2067-8) from "3.0" to "7.1 SDS".
const QVector<MixMode>& layoutModes();

/// Those that tracks without labels go into: "Mono", "Stereo", "5.1", "7.1".
const QVector<MixMode>& plainLayoutModes();

} // namespace desk::services
