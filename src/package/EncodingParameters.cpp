#include "EncodingParameters.h"

#include "StratacutUI/ImfDict.h"
#include "StratacutUI/TargetFormatBuilder.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <iterator>

namespace
{
using EncodingParameters::Precedence;

struct Parameter {
    const char* key;
    const char* section;
};

constexpr Parameter managed[] = {
    {ImfDict::ApplicationPattern, ImfDict::Video}, {ImfDict::Compression, ImfDict::Video},
    {ImfDict::Resolution, ImfDict::Video},         {ImfDict::FrameRate, ImfDict::Video},
    {ImfDict::Colorimetry, ImfDict::Video},        {ImfDict::ColorDepth, ImfDict::Video},
    {ImfDict::CompressionProfile, ImfDict::Video}, {ImfDict::StereoscopicSettings, ImfDict::Video},
    {ImfDict::BitDepth, ImfDict::Audio},           {ImfDict::Format, ImfDict::Audio},
    {ImfDict::SampleRate, ImfDict::Audio},         {ImfDict::AudioMix, ImfDict::Audio},
    {ImfDict::MultipleAudioMix, ImfDict::Audio},
};
constexpr std::size_t managedCount = std::size(managed);

// Parameters of the sections that a host may report though no builder manages them.
constexpr Parameter reportedOnly[] = {
    {ImfDict::AspectRatio, ImfDict::Video},
    {ImfDict::ColorSpace, ImfDict::Video},
    {ImfDict::AlternativeCenterCut, ImfDict::Video},
};

const Parameter* find(const Parameter* first, const Parameter* last, const QString& key)
{
    const Parameter* found =
        std::find_if(first, last, [&key](const Parameter& row) { return key == QLatin1String(row.key); });
    return found == last ? nullptr : found;
}

const char* sectionOf(const QString& key)
{
    const Parameter* row = find(std::begin(managed), std::end(managed), key);
    if (!row)
        row = find(std::begin(reportedOnly), std::end(reportedOnly), key);
    return row ? row->section : nullptr;
}

// Most CPLs of a tree are encoded alike. An entry, and a section made of such entries, is therefore made once for a run
// of equal ones and shared by their documents; `mark` names an entry in place of its content.
struct SharedEntry {
    QStringList choices;
    QString value;
    QJsonObject entry;
    quint64 mark = 0;
};

using Marks = std::array<quint64, managedCount>;

struct SharedSection {
    QJsonObject before;
    QJsonObject after;
    Marks marks{};
};

struct SharedParts {
    std::array<SharedEntry, managedCount> entries;
    SharedSection video;
    SharedSection audio;
    quint64 lastMark = 0;
};

SharedParts& sharedParts()
{
    static thread_local SharedParts parts;
    return parts;
}

quint64 markOfEntry(SharedParts& parts, std::size_t row, const QStringList& choices, const QString& value)
{
    SharedEntry& shared = parts.entries[row];
    if (shared.mark == 0 || shared.choices != choices || shared.value != value)
        shared = {choices, value, EncodingParameters::entry(choices, choices.indexOf(value)), ++parts.lastMark};
    return shared.mark;
}

// 0 for a parameter that stays as it is.
quint64 markOfParameter(std::size_t row, const QJsonObject& section, const TargetFormatBuilder& builder,
                        Precedence precedence)
{
    const QString key = QString::fromLatin1(managed[row].key);
    const QStringList choices = builder.choices(key);
    if (choices.isEmpty())
        return 0;
    const QString value = builder.value(key);
    if (precedence == Precedence::Document) {
        const QString stated = EncodingParameters::choice(section.value(key));
        if (!stated.isEmpty() && stated != value)
            return 0;
    }
    return markOfEntry(sharedParts(), row, choices, value);
}

void writeSection(QJsonObject& document, const char* name, SharedSection& shared, const Marks& marks)
{
    const QJsonObject before = document.value(QLatin1String(name)).toObject();
    if (shared.marks != marks || shared.before != before) {
        shared = {before, before, marks};
        for (std::size_t row = 0; row < managedCount; ++row) {
            if (marks[row] != 0)
                shared.after[QLatin1String(managed[row].key)] = sharedParts().entries[row].entry;
        }
    }
    if (std::any_of(marks.begin(), marks.end(), [](quint64 mark) { return mark != 0; }))
        document[QLatin1String(name)] = shared.after;
}

using Choices = QHash<QString, QString>;

// The choices that the document makes; most new documents make none.
Choices choicesIn(const QJsonObject& document)
{
    const QJsonObject video = document.value(QLatin1String(ImfDict::Video)).toObject();
    const QJsonObject audio = document.value(QLatin1String(ImfDict::Audio)).toObject();
    Choices choices;
    for (const Parameter& row : managed) {
        const QJsonObject& section = row.section == ImfDict::Video ? video : audio;
        const QString text = EncodingParameters::choice(section.value(QLatin1String(row.key)));
        if (!text.isEmpty())
            choices.insert(QString::fromLatin1(row.key), text);
    }
    return choices;
}

bool takesBack(TargetFormatBuilder& builder, const QString& key, const QString& wanted)
{
    return !wanted.isEmpty() && builder.value(key) != wanted && builder.choices(key).contains(wanted) &&
           builder.setValue(key, wanted);
}
} // namespace

bool EncodingParameters::isManaged(const QString& key)
{
    return find(std::begin(managed), std::end(managed), key) != nullptr;
}

QJsonObject EncodingParameters::entry(const QStringList& choices, int currentIndex)
{
    return {{QLatin1String(ImfDict::values), QJsonArray::fromStringList(choices)},
            {QLatin1String(ImfDict::currentIndex), currentIndex}};
}

QString EncodingParameters::choice(const QJsonValue& entry)
{
    if (!entry.isObject())
        return entry.toString();
    const QJsonObject object = entry.toObject();
    const QJsonArray values = object.value(QLatin1String(ImfDict::values)).toArray();
    return values.at(object.value(QLatin1String(ImfDict::currentIndex)).toInt(-1)).toString();
}

QString EncodingParameters::choice(const QJsonObject& document, const QString& key)
{
    const char* section = sectionOf(key);
    return section ? choice(document.value(QLatin1String(section)).toObject().value(key)) : QString();
}

bool EncodingParameters::store(QJsonObject& document, const QString& key, const QJsonObject& entry)
{
    const char* name = sectionOf(key);
    if (!name)
        return false;
    QJsonObject section = document.value(QLatin1String(name)).toObject();
    section[key] = entry;
    document[QLatin1String(name)] = section;
    return true;
}

void EncodingParameters::restore(TargetFormatBuilder& builder, const QJsonObject& document)
{
    const Choices wanted = choicesIn(document);
    if (wanted.isEmpty())
        return;
    // One parameter may bring back the choices of one that stands before it, so that a second pass can be needed.
    const QStringList keys = builder.keys();
    for (int pass = 0; pass < keys.size(); ++pass) {
        const auto taken = std::count_if(
            keys.begin(), keys.end(), [&](const QString& key) { return takesBack(builder, key, wanted.value(key)); });
        if (taken == 0)
            return;
    }
}

void EncodingParameters::write(QJsonObject& document, const TargetFormatBuilder& builder, Precedence precedence)
{
    const QJsonObject video = document.value(QLatin1String(ImfDict::Video)).toObject();
    const QJsonObject audio = document.value(QLatin1String(ImfDict::Audio)).toObject();
    Marks videoMarks{};
    Marks audioMarks{};
    for (std::size_t row = 0; row < managedCount; ++row) {
        const bool isVideo = managed[row].section == ImfDict::Video;
        if (managed[row].key != ImfDict::MultipleAudioMix)
            (isVideo ? videoMarks : audioMarks)[row] =
                markOfParameter(row, isVideo ? video : audio, builder, precedence);
    }
    writeSection(document, ImfDict::Video, sharedParts().video, videoMarks);
    writeSection(document, ImfDict::Audio, sharedParts().audio, audioMarks);
}
