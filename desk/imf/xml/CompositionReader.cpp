#include "desk/imf/xml/Composition.h"
#include "desk/imf/xml/CompositionNames.h"
#include "desk/imf/xml/XmlFields.h"

namespace desk::imf
{
namespace
{

ScopedText readScoped(const XmlElement& parent, const QString& space, const QString& name, const char* defaultScope)
{
    const XmlElement* found = parent.child(space, name);
    if (!found)
        return {};
    const QString scope = found->attribute(QStringLiteral("scope"));
    return {scope.isEmpty() ? QString(QLatin1String(defaultScope)) : scope, found->content()};
}

Marker readMarker(FieldReader& in, const XmlElement& element)
{
    Marker marker;
    marker.annotation = in.userText(element, "Annotation");
    marker.label = readScoped(element, in.nameSpace(), QStringLiteral("Label"), edition::markerScope);
    marker.offset = in.number(element, "Offset", Need::Required).value_or(0);
    return marker;
}

Resource readResource(FieldReader& in, const XmlElement& element)
{
    Resource resource;
    resource.id = in.uuid(element, "Id");
    resource.annotation = in.userText(element, "Annotation");
    resource.editRate = in.rational(element, "EditRate");
    resource.intrinsicDuration = in.number(element, "IntrinsicDuration", Need::Required).value_or(0);
    resource.entryPoint = in.number(element, "EntryPoint").value_or(0);
    resource.sourceDuration = in.number(element, "SourceDuration");
    resource.repeatCount = in.number(element, "RepeatCount").value_or(1);
    resource.sourceEncoding = in.uuid(element, "SourceEncoding", Need::Optional);
    resource.trackFileId = in.uuid(element, "TrackFileId", Need::Optional);
    resource.hash = in.base64(element, "Hash");
    const auto markers = element.elements(in.nameSpace(), QStringLiteral("Marker"));
    for (const XmlElement* one : markers)
        resource.markers.append(readMarker(in, *one));
    resource.unknown =
        in.unknown(element, {"Id", "Annotation", "EditRate", "IntrinsicDuration", "EntryPoint", "SourceDuration",
                             "RepeatCount", "SourceEncoding", "TrackFileId", "Hash", "HashAlgorithm", "Marker"});
    return resource;
}

SequenceKind kindOf(const XmlElement& element, const QString& compositionSpace)
{
    if (element.is(compositionSpace, QLatin1String(names::markerSequence)))
        return SequenceKind::Marker;
    if (!names::coreEditions().contains(element.nameSpace))
        return SequenceKind::Other;
    if (element.name == QLatin1String(names::mainImageSequence))
        return SequenceKind::MainImage;
    return element.name == QLatin1String(names::mainAudioSequence) ? SequenceKind::MainAudio : SequenceKind::Other;
}

Sequence readSequence(FieldReader& in, const XmlElement& element)
{
    Sequence sequence;
    sequence.kind = kindOf(element, in.nameSpace());
    sequence.name = element.name;
    sequence.nameSpace = element.nameSpace;
    sequence.id = in.uuid(element, "Id");
    sequence.trackId = in.uuid(element, "TrackId");
    const auto resources = in.list(element, "ResourceList", "Resource", Need::Required);
    for (const XmlElement* one : resources)
        sequence.resources.append(readResource(in, *one));
    sequence.unknown = in.unknown(element, {"Id", "TrackId", "ResourceList"});
    return sequence;
}

Segment readSegment(FieldReader& in, const XmlElement& element)
{
    Segment segment;
    segment.id = in.uuid(element, "Id");
    segment.annotation = in.userText(element, "Annotation");
    const XmlElement* list = element.child(in.nameSpace(), QStringLiteral("SequenceList"));
    if (!list)
        in.fail(element, QStringLiteral("Segment has no SequenceList"));
    const auto sequences = list ? list->elements() : QVector<const XmlElement*>();
    for (const XmlElement* one : sequences)
        segment.sequences.append(readSequence(in, *one));
    return segment;
}

EssenceDescriptor readDescriptor(FieldReader& in, const XmlElement& element)
{
    EssenceDescriptor descriptor;
    descriptor.id = in.uuid(element, "Id");
    const auto children = element.elements();
    for (const XmlElement* one : children) {
        if (one->nameSpace != in.nameSpace())
            descriptor.regXml = toXml(*one);
    }
    return descriptor;
}

ContentVersion readVersion(FieldReader& in, const XmlElement& element)
{
    return {in.text(element, "Id"), in.userText(element, "LabelText"), in.unknown(element, {"Id", "LabelText"})};
}

Locale readLocale(FieldReader& in, const XmlElement& element)
{
    Locale locale;
    locale.annotation = in.userText(element, "Annotation");
    const auto languages = in.list(element, "LanguageList", "Language");
    for (const XmlElement* one : languages)
        locale.languages.append(one->content());
    const auto regions = in.list(element, "RegionList", "Region");
    for (const XmlElement* one : regions)
        locale.regions.append(one->content());
    locale.unknown = in.unknown(element, {"Annotation", "LanguageList", "RegionList"});
    return locale;
}

void readTimecode(FieldReader& in, const XmlElement& root, Composition& composition)
{
    const XmlElement* element = root.child(in.nameSpace(), QStringLiteral("CompositionTimecode"));
    if (!element)
        return;
    const QString drop = in.text(*element, "TimecodeDropFrame");
    CompositionTimecode timecode;
    timecode.dropFrame = drop == QLatin1String("true") || drop == QLatin1String("1");
    timecode.rate = int(qBound<qint64>(0, in.number(*element, "TimecodeRate").value_or(0), 1000));
    timecode.start = in.text(*element, "TimecodeStartAddress");
    composition.timecode = timecode;
}

void readExtensions(FieldReader& in, const XmlElement& root, Composition& composition)
{
    composition.applicationIds.clear();
    const XmlElement* list = root.child(in.nameSpace(), QStringLiteral("ExtensionProperties"));
    const auto properties = list ? list->elements() : QVector<const XmlElement*>();
    for (const XmlElement* one : properties) {
        const bool isCore = names::coreEditions().contains(one->nameSpace);
        if (!isCore || one->name != QLatin1String(names::applicationIdentification)) {
            composition.extensions.append(toXml(*one));
            continue;
        }
        composition.coreNameSpace = one->nameSpace;
        composition.applicationIds += one->content().simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    }
}

void readSegments(FieldReader& in, const XmlElement& root, Composition& composition)
{
    const auto segments = in.list(root, "SegmentList", "Segment", Need::Required);
    for (const XmlElement* one : segments) {
        composition.segments.append(readSegment(in, *one));
        for (const Sequence& sequence : qAsConst(composition.segments.last().sequences)) {
            if (names::coreEditions().contains(sequence.nameSpace))
                composition.coreNameSpace = sequence.nameSpace;
        }
    }
}

void readLists(FieldReader& in, const XmlElement& root, Composition& composition)
{
    const auto versions = in.list(root, "ContentVersionList", "ContentVersion");
    for (const XmlElement* one : versions)
        composition.contentVersions.append(readVersion(in, *one));
    const auto descriptors = in.list(root, "EssenceDescriptorList", "EssenceDescriptor");
    for (const XmlElement* one : descriptors)
        composition.essenceDescriptors.append(readDescriptor(in, *one));
    const auto locales = in.list(root, "LocaleList", "Locale");
    for (const XmlElement* one : locales)
        composition.locales.append(readLocale(in, *one));
    readExtensions(in, root, composition);
    readSegments(in, root, composition);
}

} // namespace

Result<bool> holdsComposition(const QByteArray& xml, const QString& fileName)
{
    const Result<QString> root = rootName(xml, fileName);
    if (!root)
        return root.error();
    return *root == QLatin1String(names::compositionPlaylist);
}

Result<Composition> readComposition(const QByteArray& xml, const QString& fileName)
{
    const Result<XmlElement> root =
        parseDocument(xml, fileName, QLatin1String(names::compositionPlaylist), names::compositionEditions());
    if (!root)
        return root.error();
    FieldReader in(fileName, root->nameSpace);
    Composition composition;
    composition.nameSpace = root->nameSpace;
    composition.id = in.uuid(*root, "Id");
    composition.annotation = in.userText(*root, "Annotation");
    composition.issueDate = in.date(*root, "IssueDate");
    composition.issuer = in.userText(*root, "Issuer");
    composition.creator = in.userText(*root, "Creator");
    composition.contentOriginator = in.userText(*root, "ContentOriginator");
    composition.contentTitle = in.userText(*root, "ContentTitle");
    composition.contentKind =
        readScoped(*root, in.nameSpace(), QStringLiteral("ContentKind"), edition::contentKindScope);
    composition.editRate = in.rational(*root, "EditRate", Need::Required);
    composition.totalRunningTime = in.text(*root, "TotalRunningTime");
    readTimecode(in, *root, composition);
    readLists(in, *root, composition);
    composition.unknown = in.unknown(*root, names::compositionChildren());
    if (in.failed())
        return in.error();
    return composition;
}

} // namespace desk::imf
