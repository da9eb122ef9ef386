#include "ParamValues.h"

#include "StratacutUI/ImfDict.h"
#include "ViewDeckQt/PWDiscrete.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

using ViewDeckQt::AbstractParamWidget;
using ViewDeckQt::PWDiscrete;

namespace
{
QStringList texts(const QJsonValue& list)
{
    return list.toVariant().toStringList();
}

/// A kind is stored as a code; the label that contains it stands for it.
void showContentKind(AbstractParamWidget& widget, const QJsonObject& kind)
{
    const QString value = kind.value(QLatin1String(ImfDict::Value)).toString();
    QStringList labels = texts(kind.value(QLatin1String(ImfDict::values)));
    auto found = std::find_if(labels.begin(), labels.end(),
                              [&value](const QString& label) { return label.contains(value, Qt::CaseInsensitive); });
    const int chosen = int(found - labels.begin());
    if (found == labels.end())
        labels.append(value);
    if (auto* discrete = qobject_cast<PWDiscrete*>(&widget))
        discrete->setItems(labels, chosen);
    else
        widget.setValue(labels.value(chosen));
}

void showChoice(AbstractParamWidget& widget, const QJsonValue& entry)
{
    // A document that is read from disk need not tell of choices.
    const QString text = entry.toString();
    if (!text.isEmpty())
        return widget.setValue(text);
    const QStringList values = texts(entry[QLatin1String(ImfDict::values)]);
    if (values.isEmpty())
        return;
    const int current = entry[QLatin1String(ImfDict::currentIndex)].toInt();
    if (auto* discrete = qobject_cast<PWDiscrete*>(&widget))
        discrete->setItems(values, current);
    else
        widget.setValue(current >= 0 && current < values.size() ? values.at(current) : values.first());
}

QJsonValue encodingEntry(const QString& key, const QJsonObject& document)
{
    for (const char* section : {ImfDict::Video, ImfDict::Audio}) {
        const QJsonObject object = document.value(QLatin1String(section)).toObject();
        const auto entry = object.constFind(key);
        if (entry != object.constEnd())
            return entry.value();
    }
    return {};
}
} // namespace

void ParamValues::show(AbstractParamWidget& widget, const QString& key, const QJsonObject& document)
{
    const auto top = document.constFind(key);
    if (top != document.constEnd())
        return widget.setValue(top.value().toVariant());
    const QJsonObject metadata = document.value(QLatin1String(ImfDict::DescriptiveMetadata)).toObject();
    const auto described = metadata.constFind(key);
    if (described == metadata.constEnd() && key == QLatin1String(ImfDict::MultipleAudioMix))
        return widget.setValue(document);
    if (described == metadata.constEnd())
        return showChoice(widget, encodingEntry(key, document));
    if (key == QLatin1String(ImfDict::ContentKind))
        return showContentKind(widget, described.value().toObject());
    widget.setValue(described.value().toVariant());
}
