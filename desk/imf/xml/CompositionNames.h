#pragma once

#include <QStringList>

namespace desk::imf::names
{

inline constexpr char compositionPlaylist[] = "CompositionPlaylist";
inline constexpr char markerSequence[] = "MarkerSequence";
inline constexpr char mainImageSequence[] = "MainImageSequence";
inline constexpr char mainAudioSequence[] = "MainAudioSequence";
inline constexpr char applicationIdentification[] = "ApplicationIdentification";
inline constexpr char schemaInstance[] = "http://www.w3.org/2001/XMLSchema-instance";

/// Namespaces of ST 2067-3.
inline QStringList compositionEditions()
{
    return {QStringLiteral("http://www.smpte-ra.org/schemas/2067-3/2016"),
            QStringLiteral("http://www.smpte-ra.org/schemas/2067-3/2013")};
}

/// Namespaces of ST 2067-2.
inline QStringList coreEditions()
{
    return {QStringLiteral("http://www.smpte-ra.org/ns/2067-2/2020"),
            QStringLiteral("http://www.smpte-ra.org/schemas/2067-2/2016"),
            QStringLiteral("http://www.smpte-ra.org/schemas/2067-2/2013")};
}

/// Elements of a composition playlist that are read one by one; Signer goes with a signature and is dropped with it.
inline QStringList compositionChildren()
{
    return {"Id",
            "Annotation",
            "IssueDate",
            "Issuer",
            "Creator",
            "ContentOriginator",
            "ContentTitle",
            "ContentKind",
            "ContentVersionList",
            "EditRate",
            "CompositionTimecode",
            "EssenceDescriptorList",
            "LocaleList",
            "TotalRunningTime",
            "ExtensionProperties",
            "SegmentList",
            "Signer"};
}

} // namespace desk::imf::names
