#include "desk/imf/xml/DescriptorProperties.h"

#include "desk/base/Rational.h"
#include "desk/imf/xml/XmlElement.h"

#include <QHash>
#include <QRegularExpression>

namespace desk::imf
{
namespace
{

QString normalised(const QString& value)
{
    static const QRegularExpression ratio(QStringLiteral("\\A(\\d{1,18})/(\\d{1,18})\\z"));
    const QRegularExpressionMatch match = ratio.match(value);
    if (match.hasMatch()) {
        const Rational reduced(match.captured(1).toLongLong(), match.captured(2).toLongLong());
        return QStringLiteral("%1/%2").arg(reduced.num).arg(reduced.den);
    }
    return value.startsWith(QLatin1String("urn:")) ? value.toLower() : value;
}

QString instanceOf(const XmlElement& element)
{
    const auto children = element.elements();
    for (const XmlElement* one : children) {
        if (one->name == QLatin1String("InstanceID"))
            return one->content().toLower();
    }
    return {};
}

void flatten(const XmlElement& element, const QString& path, QMap<QString, QString>& out)
{
    QVector<const XmlElement*> children = element.elements();
    if (children.isEmpty()) {
        out.insert(path, normalised(element.content()));
        return;
    }
    std::stable_sort(children.begin(), children.end(), [](const XmlElement* a, const XmlElement* b) {
        return a->name == b->name && instanceOf(*a) < instanceOf(*b);
    });
    QHash<QString, int> seen;
    for (const XmlElement* one : qAsConst(children)) {
        const int number = seen[one->name]++;
        const QString name = number == 0 ? one->name : QStringLiteral("%1#%2").arg(one->name).arg(number);
        flatten(*one, path.isEmpty() ? name : path + QLatin1Char('/') + name, out);
    }
}

} // namespace

DescriptorProperties descriptorProperties(const QByteArray& regXml)
{
    const Result<XmlElement> root = parseXml(regXml, {});
    if (!root)
        return {};
    DescriptorProperties result;
    result.kind = root->name;
    flatten(*root, {}, result.values);
    return result;
}

} // namespace desk::imf
