#include "desk/imf/xml/Composition.h"
#include "desk/imf/xml/CompositionNames.h"
#include "desk/imf/xml/XmlFields.h"

namespace desk::imf
{
namespace
{

void writeScoped(FieldWriter& out, const char* name, const ScopedText& value)
{
    out.start(name);
    if (!value.scope.isEmpty())
        out.attribute("scope", value.scope);
    out.characters(value.value);
    out.end();
}

void writeTexts(FieldWriter& out, const char* list, const char* item, const QStringList& values)
{
    if (values.isEmpty())
        return;
    out.start(list);
    for (const QString& value : values)
        out.text(item, value);
    out.end();
}

void writeMarker(FieldWriter& out, const Marker& marker)
{
    out.start("Marker");
    out.optionalUserText("Annotation", marker.annotation);
    writeScoped(out, "Label", marker.label);
    out.number("Offset", marker.offset);
    out.end();
}

void writeTrackFile(FieldWriter& out, const Resource& resource)
{
    out.uuid("SourceEncoding", resource.sourceEncoding);
    out.uuid("TrackFileId", resource.trackFileId);
    out.raw(resource.unknown);
    if (resource.hash.isEmpty())
        return;
    out.text("Hash", QString::fromLatin1(resource.hash.toBase64()));
    out.start("HashAlgorithm");
    out.attribute("Algorithm", QStringLiteral("http://www.w3.org/2000/09/xmldsig#sha1"));
    out.end();
}

void writeResource(FieldWriter& out, const Resource& resource, SequenceKind kind)
{
    const bool holdsMarkers = kind == SequenceKind::Marker;
    out.start("Resource");
    out.attribute(QLatin1String(names::schemaInstance), "type",
                  holdsMarkers ? QStringLiteral("MarkerResourceType") : QStringLiteral("TrackFileResourceType"));
    out.uuid("Id", resource.id);
    out.optionalUserText("Annotation", resource.annotation);
    if (resource.editRate.isValid())
        out.rational("EditRate", resource.editRate);
    out.number("IntrinsicDuration", resource.intrinsicDuration);
    out.number("EntryPoint", resource.entryPoint);
    if (resource.sourceDuration)
        out.number("SourceDuration", *resource.sourceDuration);
    out.number("RepeatCount", resource.repeatCount);
    if (holdsMarkers) {
        for (const Marker& marker : resource.markers)
            writeMarker(out, marker);
        out.raw(resource.unknown);
    } else {
        writeTrackFile(out, resource);
    }
    out.end();
}

void startSequence(FieldWriter& out, const Sequence& sequence, const Composition& composition)
{
    switch (sequence.kind) {
    case SequenceKind::Marker:
        return out.start(names::markerSequence);
    case SequenceKind::MainImage:
        return out.start(composition.coreNameSpace, QLatin1String(names::mainImageSequence));
    case SequenceKind::MainAudio:
        return out.start(composition.coreNameSpace, QLatin1String(names::mainAudioSequence));
    case SequenceKind::Other:
        return out.start(sequence.nameSpace, sequence.name);
    }
}

void writeSequence(FieldWriter& out, const Sequence& sequence, const Composition& composition)
{
    startSequence(out, sequence, composition);
    out.uuid("Id", sequence.id);
    out.uuid("TrackId", sequence.trackId);
    out.start("ResourceList");
    for (const Resource& resource : sequence.resources)
        writeResource(out, resource, sequence.kind);
    out.end();
    out.raw(sequence.unknown);
    out.end();
}

void writeSegments(FieldWriter& out, const Composition& composition)
{
    out.start("SegmentList");
    for (const Segment& segment : composition.segments) {
        out.start("Segment");
        out.uuid("Id", segment.id);
        out.optionalUserText("Annotation", segment.annotation);
        out.start("SequenceList");
        // Markers come first (ST 2067-3:2016, 6.17).
        for (const Sequence& one : segment.sequences) {
            if (one.kind == SequenceKind::Marker)
                writeSequence(out, one, composition);
        }
        for (const Sequence& one : segment.sequences) {
            if (one.kind != SequenceKind::Marker)
                writeSequence(out, one, composition);
        }
        out.end();
        out.end();
    }
    out.end();
}

void writeVersions(FieldWriter& out, const QVector<ContentVersion>& versions)
{
    if (versions.isEmpty())
        return;
    out.start("ContentVersionList");
    for (const ContentVersion& one : versions) {
        out.start("ContentVersion");
        out.text("Id", one.id);
        out.userText("LabelText", one.label);
        out.raw(one.unknown);
        out.end();
    }
    out.end();
}

void writeDescriptors(FieldWriter& out, const QVector<EssenceDescriptor>& descriptors)
{
    if (descriptors.isEmpty())
        return;
    out.start("EssenceDescriptorList");
    for (const EssenceDescriptor& one : descriptors) {
        out.start("EssenceDescriptor");
        out.uuid("Id", one.id);
        out.raw(one.regXml);
        out.end();
    }
    out.end();
}

void writeTimecode(FieldWriter& out, const CompositionTimecode& timecode)
{
    out.start("CompositionTimecode");
    out.text("TimecodeDropFrame", timecode.dropFrame ? QStringLiteral("true") : QStringLiteral("false"));
    out.number("TimecodeRate", timecode.rate);
    out.text("TimecodeStartAddress", timecode.start);
    out.end();
}

void writeLocales(FieldWriter& out, const QVector<Locale>& locales)
{
    if (locales.isEmpty())
        return;
    out.start("LocaleList");
    for (const Locale& one : locales) {
        out.start("Locale");
        out.optionalUserText("Annotation", one.annotation);
        writeTexts(out, "LanguageList", "Language", one.languages);
        writeTexts(out, "RegionList", "Region", one.regions);
        out.raw(one.unknown);
        out.end();
    }
    out.end();
}

void writeExtensions(FieldWriter& out, const Composition& composition)
{
    if (composition.applicationIds.isEmpty() && composition.extensions.isEmpty())
        return;
    out.start("ExtensionProperties");
    if (!composition.applicationIds.isEmpty()) {
        out.start(composition.coreNameSpace, QLatin1String(names::applicationIdentification));
        out.characters(composition.applicationIds.join(QLatin1Char(' ')));
        out.end();
    }
    out.raw(composition.extensions);
    out.end();
}

void writeHead(FieldWriter& out, const Composition& composition)
{
    out.uuid("Id", composition.id);
    out.optionalUserText("Annotation", composition.annotation);
    out.date("IssueDate", composition.issueDate);
    out.optionalUserText("Issuer", composition.issuer);
    out.optionalUserText("Creator", composition.creator);
    out.optionalUserText("ContentOriginator", composition.contentOriginator);
    out.userText("ContentTitle", composition.contentTitle);
    if (!composition.contentKind.value.isEmpty())
        writeScoped(out, "ContentKind", composition.contentKind);
}

} // namespace

QByteArray writeComposition(const Composition& composition)
{
    FieldWriter out(composition.nameSpace);
    out.declare(composition.coreNameSpace, QStringLiteral("cc"));
    out.declare(QLatin1String(names::schemaInstance), QStringLiteral("xsi"));
    out.start(names::compositionPlaylist);
    writeHead(out, composition);
    writeVersions(out, composition.contentVersions);
    writeDescriptors(out, composition.essenceDescriptors);
    if (composition.timecode)
        writeTimecode(out, *composition.timecode);
    out.rational("EditRate", composition.editRate);
    out.optionalText("TotalRunningTime", composition.totalRunningTime);
    writeLocales(out, composition.locales);
    writeExtensions(out, composition);
    writeSegments(out, composition);
    out.raw(composition.unknown);
    return out.finish();
}

} // namespace desk::imf
