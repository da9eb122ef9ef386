#pragma once

#include "desk/base/Rational.h"
#include "desk/base/Result.h"
#include "desk/imf/xml/UserText.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <QVector>

#include <optional>

namespace desk::imf
{

/// Namespaces of the editions that are written; readers also take those of 2013 and 2016.
namespace edition
{
inline constexpr char composition[] = "http://www.smpte-ra.org/schemas/2067-3/2016";
inline constexpr char coreConstraints[] = "http://www.smpte-ra.org/ns/2067-2/2020";
inline constexpr char application[] = "http://www.smpte-ra.org/ns/2067-21/2021";
inline constexpr char contentKindScope[] = "http://www.smpte-ra.org/schemas/2067-3/2013#content-kind";
inline constexpr char markerScope[] = "http://www.smpte-ra.org/schemas/2067-3/2013#standard-markers";
} // namespace edition

/// A value of a list that somebody maintains: the list's URI and the code in it.
struct ScopedText {
    QString scope;
    QString value;
};

/// ST 2067-3:2016, 6.11: one descriptor of ST 2001-1 as XML text that stands alone, exactly as the track file holds it.
struct EssenceDescriptor {
    QUuid id;
    QByteArray regXml;
};

struct Marker {
    UserText annotation;
    ScopedText label;
    /// Edit units of the resource, from the start of its source.
    qint64 offset = 0;
};

/// A part of a track file (or of a run of markers) on a virtual track. Durations count edit units of `editRate`.
struct Resource {
    QUuid id;
    UserText annotation;
    /// Invalid where the document leaves it out; then the composition's rate counts.
    Rational editRate;
    qint64 intrinsicDuration = 0;
    qint64 entryPoint = 0;
    /// Absent: from the entry point to the end.
    std::optional<qint64> sourceDuration;
    qint64 repeatCount = 1;
    QUuid sourceEncoding;
    QUuid trackFileId;
    /// Raw SHA-1 of the track file; empty where the document has none.
    QByteArray hash;
    QVector<Marker> markers;
    /// Elements that this structure has no place for, as XML text.
    QVector<QByteArray> unknown;

    /// Edit units of one pass.
    qint64 duration() const { return sourceDuration.value_or(intrinsicDuration - entryPoint); }
};

enum class SequenceKind { MainImage, MainAudio, Marker, Other };

/// One virtual track within one segment.
struct Sequence {
    SequenceKind kind = SequenceKind::Other;
    /// Element name and namespace; read for every kind, written from here for `Other` only.
    QString name;
    QString nameSpace;
    QUuid id;
    QUuid trackId;
    QVector<Resource> resources;
    QVector<QByteArray> unknown;
};

struct Segment {
    QUuid id;
    UserText annotation;
    QVector<Sequence> sequences;
};

struct ContentVersion {
    /// Any URI.
    QString id;
    UserText label;
    QVector<QByteArray> unknown;
};

struct CompositionTimecode {
    bool dropFrame = false;
    int rate = 0;
    /// "hh:mm:ss:ff".
    QString start;
};

/// One locale of ST 2067-3:2016, 6.15.
struct Locale {
    UserText annotation;
    /// RFC 5646 tags.
    QStringList languages;
    QStringList regions;
    QVector<QByteArray> unknown;
};

/// A composition playlist, ST 2067-3:2016.
struct Composition {
    QString nameSpace = QLatin1String(edition::composition);
    QString coreNameSpace = QLatin1String(edition::coreConstraints);
    QUuid id;
    UserText annotation;
    QDateTime issueDate;
    UserText issuer;
    UserText creator;
    UserText contentOriginator;
    UserText contentTitle;
    /// Empty value: the document has none.
    ScopedText contentKind;
    QVector<ContentVersion> contentVersions;
    QVector<EssenceDescriptor> essenceDescriptors;
    std::optional<CompositionTimecode> timecode;
    Rational editRate;
    /// "hh:mm:ss"; empty where the document has none.
    QString totalRunningTime;
    QVector<Locale> locales;
    QStringList applicationIds{QLatin1String(edition::application)};
    /// Further elements of ExtensionProperties, as XML text.
    QVector<QByteArray> extensions;
    QVector<Segment> segments;
    QVector<QByteArray> unknown;

    /// Edit units; the image sequences of all segments, or of the first sequence where a segment has no image.
    /// Nothing when a sequence ends within an edit unit.
    std::optional<qint64> duration() const;

    /// The rate that counts for a resource.
    Rational rateOf(const Resource& resource) const
    {
        return resource.editRate.isValid() ? resource.editRate : editRate;
    }
};

/// Duration of a sequence in edit units of `editRate`; nothing when it is no whole number of them or does not fit.
std::optional<qint64> sequenceDuration(const Sequence& sequence, Rational editRate);

/// Track files that the composition's resources name, each once, in order of first use.
QVector<QUuid> referredAssets(const Composition& composition);

/// True when the document's root element is a composition playlist, of whatever edition. Fails where no root is
/// reached.
Result<bool> holdsComposition(const QByteArray& xml, const QString& fileName);

/// `fileName` serves the messages alone. Refuses what is not safe or not well-formed XML, another kind of document, and
/// values that are not of their type; what the standard merely forbids is left to the verifier.
Result<Composition> readComposition(const QByteArray& xml, const QString& fileName);

/// The document as UTF-8 bytes.
QByteArray writeComposition(const Composition& composition);

} // namespace desk::imf
