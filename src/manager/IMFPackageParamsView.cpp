// Checks name this file as their source: it keeps its name without the underscore.
#include "StratacutUI/IMF_PackageParamsView.h"

#include "PanePalette.h"
#include "ParamIds.h"
#include "ParamValues.h"

#include "NvCore/Assert.h"
#include "NvCore/NvText.h"
#include "StratacutUI/AudioMappingWidget.h"
#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/ImfDict.h"
#include "StratacutUI/MXE_Bridge.h"
#include "ViewDeckQt/PWContainer.h"
#include "ViewDeckQt/PWSetDirectory.h"
#include "ViewDeckQt/PWTextInput.h"
#include "ViewDeckQt/QFFLineEditQt.h"

#include <QCoreApplication>
#include <QDialog>
#include <QEvent>
#include <QItemSelection>
#include <QJsonObject>
#include <QPair>
#include <QPointer>
#include <QPushButton>
#include <QStackedWidget>
#include <QTextEdit>
#include <QVBoxLayout>

#include <algorithm>

using namespace ViewDeckQt;

namespace
{
using Model = IMF_PackageMgrQtModel;

constexpr const char* validatedIds[] = {ParamIds::Name, ParamIds::Creator, ParamIds::ContentTitle,
                                        ParamIds::SetDirectory};

struct IdAndRole {
    const char* id;
    int role;
};

constexpr IdAndRole rolesOfIds[] = {
    {ParamIds::Issuer, Model::IssuerRole},
    {ParamIds::Creator, Model::CreatorRole},
    {ParamIds::SetDirectory, Model::PathRole},
};

int roleOfId(const QString& id)
{
    const auto* found = std::find_if(std::begin(rolesOfIds), std::end(rolesOfIds),
                                     [&id](const IdAndRole& row) { return id == QLatin1String(row.id); });
    return found == std::end(rolesOfIds) ? -1 : found->role;
}

QVariant keyAndText(const QString& key, const QVariant& value)
{
    return QVariant::fromValue(QPair<QString, QString>(key, value.toString()));
}

bool isMutable(const QJsonObject& document)
{
    return document.value(QLatin1String(ImfDict::Mutable)).toBool();
}

/// Empty where a document tells none.
QString typeText(IMF_PackageMgr::Version version)
{
    switch (version) {
    case IMF_PackageMgr::Original:
        return stx_func("Original");
    case IMF_PackageMgr::Supplemental:
        return stx_func("Supplemental");
    case IMF_PackageMgr::None:
        break;
    }
    return {};
}

/// The parameter widgets of a page, without their containers, in the order of their making. A dialog that belongs to
/// one of them has fields of its own, which may go while the page is shown.
QList<AbstractParamWidget*> paramsOf(const QWidget& page)
{
    const auto isNone = [&page](const AbstractParamWidget* widget) {
        return qobject_cast<const PWContainer*>(widget) || widget->window() != page.window();
    };
    QList<AbstractParamWidget*> params = page.findChildren<AbstractParamWidget*>();
    params.erase(std::remove_if(params.begin(), params.end(), isNone), params.end());
    return params;
}

void hilightIfEmpty(AbstractParamWidget* widget)
{
    const bool empty = widget->getValue().toString().isEmpty();
    if (auto* text = qobject_cast<PWTextInput*>(widget))
        text->hilightTitle(empty);
    else if (auto* directory = qobject_cast<PWSetDirectory*>(widget))
        directory->hilightTitle(empty);
}
} // namespace

IMF_PackageParamsView::IMF_PackageParamsView(QAbstractItemModel* model, QWidget* parent)
    : QWidget(parent), m_model(model), m_stack(new QStackedWidget)
{
    setObjectName(QStringLiteral("IMFParamsView"));
    m_cplPage = createCPLWidget();
    m_impPage = createIMPWidget();
    m_deliverablePage = createIMFWidget();
    m_hintPage = createPassiveHint();
    m_emptyPage = new QWidget;
    QWidget* const pages[PageCount] = {m_cplPage, m_impPage, m_deliverablePage, m_hintPage, m_emptyPage};
    for (QWidget* page : pages) {
        page->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        m_stack->addWidget(page);
    }
    m_stack->setCurrentWidget(m_hintPage);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_stack);
    updatePalette();
    if (!model)
        return;
    connect(model, &QAbstractItemModel::dataChanged, this, &IMF_PackageParamsView::onDataChanged);
    connect(model, &QAbstractItemModel::layoutChanged, this, &IMF_PackageParamsView::reload);
    connect(model, &QAbstractItemModel::modelReset, this, &IMF_PackageParamsView::reload);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &IMF_PackageParamsView::onRowsRemoved);
}

IMF_PackageParamsView::~IMF_PackageParamsView() = default;

void IMF_PackageParamsView::setMXEBridge(std::unique_ptr<MXE_Bridge> bridge)
{
    m_mxeBridge = std::move(bridge);
}

void IMF_PackageParamsView::onSelectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    Q_UNUSED(deselected);
    writeUnfinished();
    // A parameter's dialog that is still open was opened for the item shown until now.
    const QList<QDialog*> dialogs = m_stack->currentWidget()->findChildren<QDialog*>();
    for (QDialog* dialog : dialogs) {
        if (dialog->isVisible())
            dialog->reject();
    }
    m_current = selected.size() == 1 ? selected.first().topLeft() : QPersistentModelIndex();
    reload();
}

/// What stands in a field that was not left belongs to the item shown until now. It is written once the selection has
/// settled: a refusal opens a message, and the item itself may be on its way out.
void IMF_PackageParamsView::writeUnfinished()
{
    const QList<AbstractParamWidget*> params = paramsOf(*m_stack->currentWidget());
    for (AbstractParamWidget* widget : params) {
        auto* line = widget->findChild<QFFLineEditQt*>();
        if (!line || !line->isUnfinished())
            continue;
        const bool isName = widget->getId() == QLatin1String(ParamIds::Name);
        const int role = isName ? int(Qt::EditRole) : roleOfId(widget->getId());
        const auto write = [model = m_model, item = m_current, text = line->text(), role] {
            if (item.isValid())
                model->setData(item, text, role);
        };
        if (m_current.isValid())
            QMetaObject::invokeMethod(m_model, write, Qt::QueuedConnection);
        line->revert();
    }
}

void IMF_PackageParamsView::reload()
{
    if (m_current.isValid())
        updateView();
    else
        m_stack->setCurrentWidget(m_hintPage);
}

void IMF_PackageParamsView::onRowsRemoved()
{
    if (!m_current.isValid())
        m_stack->setCurrentWidget(m_hintPage);
}

QWidget* IMF_PackageParamsView::currentStackWidget(const QModelIndex& index) const
{
    switch (Model::NodeTypeFromIndex(index)) {
    case IMF_PackageMgr::Delivery:
        return m_deliverablePage;
    case IMF_PackageMgr::IMP:
        return m_impPage;
    case IMF_PackageMgr::CPL:
        return m_cplPage;
    }
    return nullptr;
}

void IMF_PackageParamsView::switchView()
{
    QWidget* page = currentStackWidget(m_current);
    m_stack->setCurrentWidget(page ? page : m_emptyPage);
}

void IMF_PackageParamsView::updateView()
{
    switchView();
    const QJsonObject document = Model::MetadataJsonFromIndex(m_current);
    const QList<AbstractParamWidget*> params = paramsOf(*m_stack->currentWidget());
    for (AbstractParamWidget* widget : params)
        showValue(*widget, document);
    setReadOnly(!isMutable(document));
    for (const char* id : validatedIds)
        validateTextField(QLatin1String(id));
}

void IMF_PackageParamsView::showValue(AbstractParamWidget& widget, const QJsonObject& document)
{
    const QString id = widget.getId();
    if (id == QLatin1String(ParamIds::FileName)) {
        widget.setValue(isMutable(document) ? QString() : m_current.data(Model::NameRole).toString());
    } else if (id == QLatin1String(ParamIds::ImfType)) {
        widget.setValue(typeText(Model::VersionFromIndex(m_current)));
    } else if (auto* mapping = qobject_cast<AudioMappingWidget*>(&widget)) {
        showMapping(*mapping, document);
    } else {
        ParamValues::show(widget, id2jsonKey(id), document);
    }
}

void IMF_PackageParamsView::setReadOnly(bool readOnly)
{
    const QWidget* page = m_stack->currentWidget();
    const char* alwaysReadOnly = page == m_cplPage ? ParamIds::FileName : page == m_impPage ? ParamIds::Name : "";
    const QList<AbstractParamWidget*> widgets = page->findChildren<AbstractParamWidget*>();
    for (AbstractParamWidget* widget : widgets)
        widget->setReadOnly(readOnly || widget->getId() == QLatin1String(alwaysReadOnly));
    if (auto* grouping = page->findChild<QPushButton*>(QLatin1String(ParamIds::GroupingButton)))
        grouping->setEnabled(!readOnly);
}

void IMF_PackageParamsView::validateTextField(const QString& id)
{
    if (std::find(std::begin(validatedIds), std::end(validatedIds), id) == std::end(validatedIds))
        return;
    const QList<AbstractParamWidget*> params = paramsOf(*m_stack->currentWidget());
    for (AbstractParamWidget* widget : params) {
        if (widget->getId() == id && widget->isVisible())
            hilightIfEmpty(widget);
    }
}

void IMF_PackageParamsView::onValueChanged(const QString& id, const QVariant& value)
{
    // A message box in the middle of a change takes the focus from the field, which then reports once more.
    if (m_updating || !m_current.isValid())
        return;
    validateTextField(id);
    // The host's refusal is shown to the user: the view may go behind the message.
    const QPointer<IMF_PackageParamsView> self(this);
    m_updating = true;
    writeValue(id, value);
    if (!self)
        return;
    m_updating = false;
    emit valueChanged(m_current);
}

void IMF_PackageParamsView::writeValue(const QString& id, const QVariant& newValue)
{
    if (id == QLatin1String(ParamIds::Name)) {
        const QPointer<IMF_PackageParamsView> self(this);
        // A name that the host refuses does not stay in the field.
        if (!m_model->setData(m_current, newValue, Qt::EditRole) && self && !newValue.toString().isEmpty())
            reload();
    } else if (id == QLatin1String(ParamIds::SetDirectory)) {
        setPathOf(m_current, newValue);
    } else if (id == QLatin1String(ParamIds::ContentTitle)) {
        m_model->setData(m_current, keyAndText(QLatin1String(ImfDict::ContentTitle), newValue),
                         Model::ContentTitleRole);
    } else if (id == QLatin1String(ParamIds::MultipleAudioMix)) {
        const bool burned = !isMutable(Model::MetadataJsonFromIndex(m_current));
        NV_ASSERT(JSON::VerifyMultiMix(newValue.toJsonObject(), burned));
        m_model->setData(m_current, newValue.toJsonObject(), Model::MultiMixRole);
    } else if (isRequiredMetadata(id)) {
        onRequiredMetadataChanged(id, newValue);
    } else {
        m_model->setData(m_current, keyAndText(id2jsonKey(id), newValue), Model::MetadataRole);
    }
}

void IMF_PackageParamsView::setPathOf(const QModelIndex& index, const QVariant& path)
{
    const QVariant former = index.data(Model::PathRole);
    if (m_model->setData(index, path, Model::PathRole))
        return;
    const QList<PWSetDirectory*> widgets = findChildren<PWSetDirectory*>();
    for (PWSetDirectory* widget : widgets) {
        if (widget->getId() == QLatin1String(ParamIds::SetDirectory))
            widget->setValue(former);
    }
}

bool IMF_PackageParamsView::isRequiredMetadata(const QString& id)
{
    return id == QLatin1String(ParamIds::Issuer) || id == QLatin1String(ParamIds::Creator);
}

void IMF_PackageParamsView::onRequiredMetadataChanged(const QString& id, const QVariant& value)
{
    const int role = roleOfId(id);
    const QVariant written = keyAndText(id2jsonKey(id), value);
    QPersistentModelIndex index = m_current;
    do {
        m_model->setData(index, written, role);
        index = index.parent();
    } while (index.isValid() && index.data(role).toString().isEmpty() && !value.toString().isEmpty());
}

void IMF_PackageParamsView::onSetPathButtonClicked()
{
    emit setDeliverableDirPathClickedWithIndex(m_current);
}

void IMF_PackageParamsView::onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                          const QVector<int>& roles)
{
    Q_UNUSED(bottomRight);
    Q_UNUSED(roles);
    if (!m_current.isValid() || topLeft != m_current)
        return;
    updateView();
    for (const char* id : validatedIds)
        validateTextField(QLatin1String(id));
}

void IMF_PackageParamsView::updatePalette()
{
    // Only what is set here is the pages' own; the rest follows the skin.
    QPalette own;
    own.setColor(QPalette::Base, PanePalette::background(*this));
    own.setColor(QPalette::Text, PanePalette::text(*this));
    for (int page = 0; page < m_stack->count(); ++page)
        m_stack->widget(page)->setPalette(own);
}

bool IMF_PackageParamsView::event(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange) {
        for (QWidget* widget : m_paletteWidgets)
            QCoreApplication::sendEvent(widget, event);
        updatePalette();
    }
    const bool handled = QWidget::event(event);
    // A field that was hidden has not been checked.
    if (event->type() == QEvent::Show)
        for (const char* id : validatedIds)
            validateTextField(QLatin1String(id));
    return handled;
}

bool IMF_PackageParamsView::focusNextPrevChild(bool next)
{
    QWidget* start = focusWidget() ? focusWidget() : this;
    const auto step = [next](QWidget* widget) {
        return next ? widget->nextInFocusChain() : widget->previousInFocusChain();
    };
    for (QWidget* widget = step(start); widget != start; widget = step(widget)) {
        const bool takesFocus = (widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy();
        if (!takesFocus || !widget->isVisible() || !widget->isEnabled() || widget->window() != window())
            continue;
        widget->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }
    return false;
}
