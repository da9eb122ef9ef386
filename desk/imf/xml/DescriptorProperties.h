#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace desk::imf
{

/// An essence descriptor (ST 2001-1) as a flat table, so that two of them compare whatever the order of their elements.
struct DescriptorProperties {
    /// Local name of the descriptor: "CDCIDescriptor".
    QString kind;
    /// "StoredWidth", "SubDescriptors/JPEG2000SubDescriptor/Rsiz", "PixelLayout/RGBAComponent#1/Code" to the value;
    /// ratios in lowest terms, labels in lower case. Sub-descriptors of one kind are told apart by "#n" in the order
    /// of their instance identifiers.
    QMap<QString, QString> values;

    bool isEmpty() const { return kind.isEmpty(); }
};

/// Empty where the text is no XML.
DescriptorProperties descriptorProperties(const QByteArray& regXml);

} // namespace desk::imf
