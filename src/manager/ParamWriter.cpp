// What the parameters view writes into a document on request.

#include "StratacutUI/IMF_PackageParamsView.h"

#include "ParamIds.h"

#include "StratacutUI/ImfDict.h"
#include "ViewDeckQt/AbstractParamWidget.h"

#include <QJsonObject>

#include <algorithm>

using ViewDeckQt::AbstractParamWidget;

namespace
{
AbstractParamWidget* findParam(const QWidget& root, const QString& id)
{
    const QList<AbstractParamWidget*> all = root.findChildren<AbstractParamWidget*>();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&id](const AbstractParamWidget* widget) { return widget->getId() == id; });
    return found == all.end() ? nullptr : *found;
}
} // namespace

void IMF_PackageParamsView::write(QJsonObject& document) const
{
    const QString type = document.value(QLatin1String(ImfDict::Type)).toString();
    if (type == QLatin1String("Delivery"))
        writeIMF(document);
    else if (type == QLatin1String("IMP"))
        writeIMP(document);
    else if (type == QLatin1String("CPL"))
        writeCPL(document);
}

void IMF_PackageParamsView::writeCPL(QJsonObject& document) const
{
    for (const char* container : {ParamIds::DescriptiveMetadata, ParamIds::Video, ParamIds::Audio})
        containerWidgetToJson(document, QLatin1String(container));
}

void IMF_PackageParamsView::writeIMF(QJsonObject& document) const
{
    containerWidgetToJson(document, QLatin1String(ParamIds::DescriptiveMetadata));
}

void IMF_PackageParamsView::writeIMP(QJsonObject& document) const
{
    if (const AbstractParamWidget* name = findParam(*m_impPage, QLatin1String(ParamIds::Name)))
        document[QLatin1String(ImfDict::Name)] = name->getValue().toString();
    containerWidgetToJson(document, QLatin1String(ParamIds::DescriptiveMetadata));
}

void IMF_PackageParamsView::containerWidgetToJson(QJsonObject& document, const QString& containerId) const
{
    const AbstractParamWidget* container = findParam(*this, containerId);
    if (!container)
        return;
    QJsonObject section;
    const QList<AbstractParamWidget*> contents = container->findChildren<AbstractParamWidget*>();
    for (const AbstractParamWidget* widget : contents) {
        // Not the fields of a parameter's own dialog.
        if (widget->window() == window())
            setParamValue(section, widget);
    }
    document[id2jsonKey(containerId)] = section;
}

void IMF_PackageParamsView::setParamValue(QJsonObject& document, const AbstractParamWidget* widget) const
{
    document[id2jsonKey(widget->getId())] = widget->getValue().toString();
}
