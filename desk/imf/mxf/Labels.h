#pragma once

#include "desk/imf/PictureFormat.h"
#include "desk/imf/mxf/Ul.h"

#include <QString>
#include <QVector>

namespace desk::imf
{

/// One channel of multi-channel audio labelling (ST 428-12, ST 2067-8).
struct McaChannel {
    /// MCATagSymbol with its prefix: "chL".
    const char* symbol;
    /// MCATagName: "Left".
    const char* name;
    Ul label;
};

/// One soundfield group and the channels that it consists of, in their usual order.
struct McaSoundfield {
    const char* symbol;
    const char* name;
    Ul label;
    /// Channel symbols separated by spaces; empty where the group has no fixed ones.
    const char* channels;

    QVector<QString> channelSymbols() const;
};

/// The label of a channel symbol, also the numbered ones (chNSC001 to chNSC127); nothing matches: null.
const McaChannel* findChannel(const QString& symbol);
const McaChannel* findChannel(const Ul& label);
const McaSoundfield* findSoundfield(const QString& symbol);
const McaSoundfield* findSoundfield(const Ul& label);
/// Every soundfield of the table, in its order.
const QVector<McaSoundfield>& soundfields();

/// The labels of a colour system of ST 2067-21.
struct ColourLabels {
    Colour colour;
    Ul primaries;
    Ul transfer;
    /// Null for systems that are RGB only.
    Ul codingEquations;
};

const ColourLabels* findColour(Colour colour);
/// The system with these primaries and transfer characteristic (and equations, unless null); the registry version in
/// the eighth byte does not count.
Colour colourOfLabels(const Ul& primaries, const Ul& transfer, const Ul& codingEquations);

} // namespace desk::imf
