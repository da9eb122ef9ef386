#include "desk/imf/mxf/Labels.h"

#include <QStringList>

#include <algorithm>
#include <iterator>
#include <vector>

namespace desk::imf
{

namespace
{

constexpr std::uint64_t labelHead = 0x060e2b340401010d;

/// ST 428-12 channels and groups lie at 03020100 and 03020200, those of ST 2067-8 at ...20 one level deeper.
constexpr Ul mca(std::uint64_t node)
{
    return {labelHead, node << 24};
}

// Symbol, name, label.
const McaChannel channelTable[] = {
    {"chL", "Left", mca(0x0302010100)},
    {"chR", "Right", mca(0x0302010200)},
    {"chC", "Center", mca(0x0302010300)},
    {"chLFE", "LFE", mca(0x0302010400)},
    {"chLs", "Left Surround", mca(0x0302010500)},
    {"chRs", "Right Surround", mca(0x0302010600)},
    {"chLss", "Left Side Surround", mca(0x0302010700)},
    {"chRss", "Right Side Surround", mca(0x0302010800)},
    {"chLrs", "Left Rear Surround", mca(0x0302010900)},
    {"chRrs", "Right Rear Surround", mca(0x0302010a00)},
    {"chLc", "Left Center", mca(0x0302010b00)},
    {"chRc", "Right Center", mca(0x0302010c00)},
    {"chCs", "Center Surround", mca(0x0302010d00)},
    {"chHI", "Hearing Impaired", mca(0x0302010e00)},
    {"chVIN", "Visually Impaired-Narrative", mca(0x0302010f00)},
    {"chM1", "Mono One", mca(0x0302012001)},
    {"chM2", "Mono Two", mca(0x0302012002)},
    {"chLt", "Left Total", mca(0x0302012003)},
    {"chRt", "Right Total", mca(0x0302012004)},
    {"chLst", "Left Surround Total", mca(0x0302012005)},
    {"chRst", "Right Surround Total", mca(0x0302012006)},
    {"chS", "Surround", mca(0x0302012007)},
};

// Symbol, name, label, channels.
const McaSoundfield soundfieldTable[] = {
    {"sg51", "5.1", mca(0x0302020100), "chL chR chC chLFE chLs chRs"},
    {"sg71", "7.1DS", mca(0x0302020200), "chL chR chC chLFE chLss chRss chLrs chRrs"},
    {"sgSDS", "7.1SDS", mca(0x0302020300), "chL chLc chC chRc chR chLFE chLs chRs"},
    {"sg61", "6.1", mca(0x0302020400), "chL chR chC chLFE chLs chRs chCs"},
    {"sgM", "1.0 Monaural", mca(0x0302020500), "chC"},
    {"sgST", "Standard Stereo", mca(0x0302022001), "chL chR"},
    {"sgDM", "Dual Mono", mca(0x0302022002), "chM1 chM2"},
    {"sgDNS", "Discrete Numbered Sources", mca(0x0302022003), ""},
    {"sg30", "3.0", mca(0x0302022004), "chL chR chC"},
    {"sg40", "4.0", mca(0x0302022005), "chL chR chC chS"},
    {"sg50", "5.0", mca(0x0302022006), "chL chR chC chLs chRs"},
    {"sg60", "6.0", mca(0x0302022007), "chL chR chC chLs chRs chCs"},
    {"sg70", "7.0DS", mca(0x0302022008), "chL chR chC chLss chRss chLrs chRrs"},
    {"sgLtRt", "Lt-Rt", mca(0x0302022009), "chLt chRt"},
    {"sg51EX", "5.1EX", mca(0x030202200a), "chL chR chC chLFE chLst chRst"},
    {"sgHA", "Hearing Accessibility", mca(0x030202200b), "chHI"},
    {"sgVA", "Visual Accessibility", mca(0x030202200c), "chVIN"},
    {"IAB", "Immersive Audio Bitstream", mca(0x0302022100), ""},
    {"MGA", "Metadata-Guided Audio", mca(0x0302022200), ""},
};

constexpr Ul itu601Equations{0x060e2b3404010101, 0x0401010102010000};
constexpr Ul itu709Equations{0x060e2b3404010101, 0x0401010102020000};
constexpr Ul itu2020Equations{labelHead, 0x0401010102060000};
constexpr Ul itu709Primaries{0x060e2b3404010106, 0x0401010103030000};
constexpr Ul itu2020Primaries{labelHead, 0x0401010103040000};
constexpr Ul itu709Transfer{0x060e2b3404010101, 0x0401010101020000};
constexpr Ul pqTransfer{labelHead, 0x04010101010a0000};

// Colour, primaries, transfer characteristic, coding equations.
const ColourLabels colourTable[] = {
    {Colour::Bt601_625, {0x060e2b3404010106, 0x0401010103020000}, itu709Transfer, itu601Equations},
    {Colour::Bt601_525, {0x060e2b3404010106, 0x0401010103010000}, itu709Transfer, itu601Equations},
    {Colour::Bt709, itu709Primaries, itu709Transfer, itu709Equations},
    {Colour::XvYcc, itu709Primaries, {labelHead, 0x0401010101080000}, itu709Equations},
    {Colour::Bt2020, itu2020Primaries, {0x060e2b340401010e, 0x0401010101090000}, itu2020Equations},
    {Colour::P3D65Pq, {labelHead, 0x0401010103060000}, pqTransfer, {}},
    {Colour::Bt2020Pq, itu2020Primaries, pqTransfer, itu2020Equations},
    {Colour::Bt2020Hlg, itu2020Primaries, {labelHead, 0x04010101010b0000}, itu2020Equations},
};

/// chNSC001 to chNSC127 of ST 2067-8: the number is the seventh byte of the label's second half.
const QVector<McaChannel>& numberedChannels()
{
    static const auto names = [] {
        std::vector<QByteArray> texts;
        for (int number = 1; number <= 127; ++number) {
            const QByteArray digits = QByteArray::number(number).rightJustified(3, '0');
            texts.push_back("chNSC" + digits);
            texts.push_back("Numbered Source Channel " + digits);
        }
        return texts;
    }();
    static const auto rows = [] {
        QVector<McaChannel> channels;
        for (std::size_t i = 0; i + 1 < names.size(); i += 2)
            channels.append({names[i].constData(), names[i + 1].constData(),
                             Ul(labelHead, 0x0302012008000000 | (std::uint64_t(i / 2 + 1) << 16))});
        return channels;
    }();
    return rows;
}

template <class Rows, class Fits>
auto findRow(const Rows& rows, Fits fits) -> decltype(&*std::begin(rows))
{
    const auto found = std::find_if(std::begin(rows), std::end(rows), fits);
    return found == std::end(rows) ? nullptr : &*found;
}

template <class Fits>
const McaChannel* findChannelRow(Fits fits)
{
    const McaChannel* row = findRow(channelTable, fits);
    return row != nullptr ? row : findRow(numberedChannels(), fits);
}

} // namespace

QVector<QString> McaSoundfield::channelSymbols() const
{
    return QString::fromLatin1(channels).split(QLatin1Char(' '), Qt::SkipEmptyParts).toVector();
}

const McaChannel* findChannel(const QString& symbol)
{
    return findChannelRow([&](const McaChannel& row) { return symbol == QLatin1String(row.symbol); });
}

const McaChannel* findChannel(const Ul& label)
{
    return findChannelRow([&](const McaChannel& row) { return label.matches(row.label); });
}

const McaSoundfield* findSoundfield(const QString& symbol)
{
    return findRow(soundfieldTable, [&](const McaSoundfield& row) { return symbol == QLatin1String(row.symbol); });
}

const McaSoundfield* findSoundfield(const Ul& label)
{
    return findRow(soundfieldTable, [&](const McaSoundfield& row) { return label.matches(row.label); });
}

const QVector<McaSoundfield>& soundfields()
{
    static const QVector<McaSoundfield> rows(std::begin(soundfieldTable), std::end(soundfieldTable));
    return rows;
}

const ColourLabels* findColour(Colour colour)
{
    return findRow(colourTable, [colour](const ColourLabels& row) { return row.colour == colour; });
}

Colour colourOfLabels(const Ul& primaries, const Ul& transfer, const Ul& codingEquations)
{
    const ColourLabels* row = findRow(colourTable, [&](const ColourLabels& labels) {
        return primaries.matches(labels.primaries) && transfer.matches(labels.transfer) &&
               (codingEquations.isNull() || codingEquations.matches(labels.codingEquations));
    });
    return row == nullptr ? Colour::Unknown : row->colour;
}

} // namespace desk::imf
