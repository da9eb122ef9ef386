#include "desk/imf/xml/ElementOrder.h"

#include <QHash>

namespace desk::imf
{

namespace
{
/// The children of an element in the order of the schemas. Asset stands for that of both documents.
QStringList orderIn(const QString& element)
{
    static const QStringList sequence{"Id", "TrackId", "ResourceList"};
    static const QHash<QString, QStringList> orders{
        {"AssetMap", {"Id", "AnnotationText", "Creator", "VolumeCount", "IssueDate", "Issuer", "AssetList"}},
        {"PackingList",
         {"Id", "AnnotationText", "IconId", "IssueDate", "Issuer", "Creator", "GroupId", "AssetList", "Signer"}},
        {"Asset",
         {"Id", "AnnotationText", "PackingList", "ChunkList", "Hash", "Size", "Type", "OriginalFileName",
          "HashAlgorithm"}},
        {"Chunk", {"Path", "VolumeIndex", "Offset", "Length"}},
        {"CompositionPlaylist",
         {"Id", "Annotation", "IssueDate", "Issuer", "Creator", "ContentOriginator", "ContentTitle", "ContentKind",
          "ContentVersionList", "EssenceDescriptorList", "CompositionTimecode", "EditRate", "TotalRunningTime",
          "LocaleList", "ExtensionProperties", "SegmentList", "Signer"}},
        {"ContentVersion", {"Id", "LabelText"}},
        {"CompositionTimecode", {"TimecodeDropFrame", "TimecodeRate", "TimecodeStartAddress"}},
        {"Locale", {"Annotation", "LanguageList", "RegionList", "ContentMaturityRatingList"}},
        {"Segment", {"Id", "Annotation", "SequenceList"}},
        {"Resource",
         {"Id", "Annotation", "EditRate", "IntrinsicDuration", "EntryPoint", "SourceDuration", "RepeatCount",
          "SourceEncoding", "TrackFileId", "KeyId", "Hash", "HashAlgorithm", "Marker"}},
        {"Marker", {"Annotation", "Label", "Offset"}}};
    return element.endsWith(QLatin1String("Sequence")) ? sequence : orders.value(element);
}

void collect(const XmlElement& element, const QString& nameSpace, QStringList& found)
{
    const QStringList order = orderIn(element.name);
    const XmlElement* last = nullptr;
    bool isTold = false;
    const auto children = element.elements();
    for (const XmlElement* child : children) {
        collect(*child, nameSpace, found);
        if (child->nameSpace != nameSpace || !order.contains(child->name))
            continue;
        if (last != nullptr && !isTold && order.indexOf(child->name) < order.indexOf(last->name)) {
            found += QStringLiteral("line %1: %2 stands behind %3").arg(child->line).arg(child->name, last->name);
            isTold = true;
        }
        last = child;
    }
}
} // namespace

QStringList misplacedElements(const XmlElement& root)
{
    QStringList found;
    collect(root, root.nameSpace, found);
    return found;
}

} // namespace desk::imf
