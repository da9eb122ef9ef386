#include "ParamRow.h"

#include "FamilyStyle.h"
#include "ParamTitle.h"

#include "ViewDeckQt/AbstractParamWidget.h"

#include <QHBoxLayout>

namespace ViewDeckQt
{

ParamTitle* layOutParam(AbstractParamWidget* param, const QString& label, std::initializer_list<QWidget*> fields)
{
    auto* title = new ParamTitle(label, param);
    auto* row = new QHBoxLayout(param);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(Spacing::titleToField);
    row->addWidget(title, 0, Qt::AlignTop);
    FamilyStyle::apply(title);
    for (QWidget* field : fields) {
        FamilyStyle::apply(field);
        row->addWidget(field, field == *fields.begin() ? 1 : 0, Qt::Alignment());
    }
    title->setField(*fields.begin());
    param->setFocusProxy(*fields.begin());
    return title;
}

} // namespace ViewDeckQt
