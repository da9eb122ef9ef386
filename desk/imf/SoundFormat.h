#pragma once

#include <QString>
#include <QVector>

namespace desk::imf
{

/// One channel of a sound track file and its label (ST 377-4:2012, ST 2067-8:2013).
struct ChannelLabel {
    /// MCATagSymbol with prefix: "chL", "chLFE", "chM1".
    QString symbol;
};

/// The uncompressed sound of one track file, and what its multi-channel audio labels say.
struct SoundFormat {
    /// Samples a second: 48000 or 96000 (ST 2067-2:2020, 5.3.2).
    int sampleRate = 48000;
    /// 24 (ST 2067-2:2020, 5.3.2.3).
    int bitsPerSample = 24;
    /// Soundfield group, MCATagSymbol: "sgM", "sgST", "sg51".
    QString soundfield;
    /// One a channel, in the order of the samples.
    QVector<ChannelLabel> channels;
    /// RFC 5646 tag: "en-US"; empty is written as "und".
    QString language;
    /// MCAAudioContentKind symbol: "PRM", "DXC"; empty is written as "PRM".
    QString contentKind;
    /// MCATitle; empty is written as "n/a".
    QString title;
};

} // namespace desk::imf
