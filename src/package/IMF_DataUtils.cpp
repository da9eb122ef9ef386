#include "StratacutUI/IMF_DataUtils.h"

#include "StratacutUI/IMF_Node.h"

#include <QJsonDocument>

namespace
{
constexpr char defaultDelivery[] = R"({
    "Name": "IMF_name",
    "Type": "Delivery",
    "Mutable": true,
    "Original": true,
    "DescriptiveMetadata": { "Issuer": "", "Creator": "", "Annotation": "" }
})";

constexpr char defaultIMP[] = R"({
    "Name": "IMP_name",
    "Type": "IMP",
    "Mutable": true,
    "DescriptiveMetadata": { "Issuer": "", "Creator": "", "Annotation": "" }
})";

constexpr char defaultCPL[] = R"({
    "Name": "name_CPL",
    "Type": "CPL",
    "Mutable": true,
    "Video": {
        "Compression": "", "Resolution": "", "Aspect Ratio": "", "Color Space": "",
        "Stereoscopic Settings": "", "Alternative Center Cut": ""
    },
    "Audio": { "Format": "", "Sample Rate": "", "Bit Depth": "", "Audio Mix": "" },
    "DescriptiveMetadata": {
        "Issuer": "", "Creator": "", "Annotation": "", "ContentOriginator": "", "ContentTitle": "",
        "ContentKind": { "Scope": "", "Value": "" }
    }
})";

QJsonObject getDefaultJsonObject(const QString& text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (document.isNull()) {
        qDebug("Invalid JSON...\n%s", qUtf8Printable(text));
        return {};
    }
    if (!document.isObject()) {
        qDebug("Document is not an object");
        return {};
    }
    return document.object();
}
} // namespace

QJsonObject IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::NodeType type)
{
    switch (type) {
    case IMF_PackageMgr::Delivery:
        return ::getDefaultJsonObject(QString::fromUtf8(defaultDelivery));
    case IMF_PackageMgr::IMP:
        return ::getDefaultJsonObject(QString::fromUtf8(defaultIMP));
    case IMF_PackageMgr::CPL:
        return ::getDefaultJsonObject(QString::fromUtf8(defaultCPL));
    }
    return {};
}

IMF_PackageMgr::NodeType IMF_Utils::NodeTypeVisitor::operator()(const IMF_Deliverable&) const
{
    return IMF_PackageMgr::Delivery;
}

IMF_PackageMgr::NodeType IMF_Utils::NodeTypeVisitor::operator()(const IMF_IMP&) const
{
    return IMF_PackageMgr::IMP;
}

IMF_PackageMgr::NodeType IMF_Utils::NodeTypeVisitor::operator()(const IMF_CPL&) const
{
    return IMF_PackageMgr::CPL;
}

QJsonObject IMF_Utils::GetJsonVisitor::operator()(const IMF_Deliverable& deliverable) const
{
    return deliverable.jsonObject();
}

QJsonObject IMF_Utils::GetJsonVisitor::operator()(const IMF_IMP& imp) const
{
    return imp.jsonObject();
}

QJsonObject IMF_Utils::GetJsonVisitor::operator()(const IMF_CPL& cpl) const
{
    return cpl.jsonObject();
}

QString IMF_Utils::GetIdVisitor::operator()(const IMF_Deliverable& deliverable) const
{
    return deliverable.id();
}

QString IMF_Utils::GetIdVisitor::operator()(const IMF_IMP& imp) const
{
    return imp.id();
}

QString IMF_Utils::GetIdVisitor::operator()(const IMF_CPL& cpl) const
{
    return cpl.id();
}
