#include "StratacutUI/AudioMappingWidget.h"

#include "TrackMappingWidget.h"

#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/ImfDict.h"

#include <QCoreApplication>
#include <QEvent>
#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace
{
constexpr int rowSpacing = 6;

/// The rows in a CPL's document, or in a mapping alone. What is neither has none.
QJsonArray rowsOf(const QVariant& value)
{
    const QJsonObject document = value.toJsonObject();
    const QJsonValue own = document.value(QLatin1String(ImfDict::AudioMapping));
    if (own.isArray())
        return JSON::VerifyAudioMapping(own.toArray(), true) ? own.toArray() : QJsonArray();
    const QJsonObject audio = document.value(QLatin1String(ImfDict::Audio)).toObject();
    const QJsonObject mix = audio.value(QLatin1String(ImfDict::MultipleAudioMix)).toObject();
    const bool burned = !document.value(QLatin1String(ImfDict::Mutable)).toBool();
    // Reading out of a document takes a good one for granted.
    return JSON::VerifyMultiMix(mix, burned) ? JSON::GetAudioMapping(document) : QJsonArray();
}

/// The widget that the Tab key visits before this one.
QWidget* tabStopBefore(const QWidget* stop)
{
    QWidget* widget = stop->previousInFocusChain();
    while (widget != stop && (widget->focusPolicy() == Qt::NoFocus || widget->focusProxy()))
        widget = widget->previousInFocusChain();
    return widget == stop ? nullptr : widget;
}
} // namespace

AudioMappingWidget::AudioMappingWidget(const QString& name, std::unique_ptr<ITrackGroupingManger> manager,
                                       QWidget* parent)
    : AbstractParamWidget(name, parent),
      m_manager(std::move(manager)),
      m_layout(new QVBoxLayout(this)),
      m_choices(std::make_unique<MappingChoices>())
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(rowSpacing);
    insertTrackMapping(0, false);
    validateWidgets();
}

AudioMappingWidget::~AudioMappingWidget()
{
    // Before the choices that they refer to.
    qDeleteAll(m_rows);
}

QVariant AudioMappingWidget::getValue() const
{
    QJsonArray rows;
    for (const TrackMappingWidget* row : m_rows)
        rows.append(row->rowObject());
    if (!m_manager)
        return JSON::MakeMultiMix(rows, {}, {});
    const QJsonArray groups = m_manager->getTrackGroups();
    return JSON::MakeMultiMix(rows, groups, QJsonArray::fromStringList(m_manager->getAllActiveTracks()));
}

void AudioMappingWidget::setValue(const QVariant& value)
{
    const QJsonArray rows = rowsOf(value);
    if (rows.isEmpty())
        return resetTrackMapping();
    m_choices->update(m_manager.get());
    for (int index = 0; index < rows.size(); ++index) {
        if (index == m_rows.size())
            insertRow(index);
        m_rows.at(index)->setRowObject(rows.at(index).toObject());
    }
    validateWidgets();
    while (m_rows.size() > rows.size())
        removeTrackMapping(rows.size(), false);
}

void AudioMappingWidget::setReadOnly(bool readOnly)
{
    AbstractParamWidget::setReadOnly(readOnly);
    for (TrackMappingWidget* row : qAsConst(m_rows))
        row->setReadOnly(readOnly);
}

void AudioMappingWidget::setTrackGroupingManager(std::unique_ptr<ITrackGroupingManger> manager)
{
    m_manager = std::move(manager);
    m_choices->update(m_manager.get());
    for (TrackMappingWidget* row : qAsConst(m_rows))
        row->setTrackGroupingManager(m_manager.get());
}

void AudioMappingWidget::insertTrackMapping(int index, bool notify)
{
    m_choices->update(m_manager.get());
    insertRow(qBound(0, index, m_rows.size()));
    validateWidgets();
    if (notify)
        onTrackMappingChanged();
}

void AudioMappingWidget::insertRow(int index)
{
    auto* row = new TrackMappingWidget(
        m_manager.get(), [this](const TrackMappingWidget* asking) { return findIndex(asking); }, *m_choices, this);
    if (isReadOnly())
        row->setReadOnly(true);
    m_layout->insertWidget(index, row);
    connect(row, &TrackMappingWidget::plusButtonClicked, this, [this, row] { onAddButtonClicked(findIndex(row)); });
    connect(row, &TrackMappingWidget::minusButtonClicked, this, [this, row] { onRemoveButtonClicked(findIndex(row)); });
    connect(row, &TrackMappingWidget::sourceTrackChanged, this, &AudioMappingWidget::onTrackMappingChanged);
    connect(row, &TrackMappingWidget::destTrackChanged, this, &AudioMappingWidget::onTrackMappingChanged);
    // A row without metadata has nothing to report here.
    connect(row, &TrackMappingWidget::metadataChanged, this, &AudioMappingWidget::onTrackMappingChanged);
    enterTabOrder(row, index);
    m_rows.insert(index, row);
}

void AudioMappingWidget::enterTabOrder(const TrackMappingWidget* row, int index)
{
    QWidget* last = nullptr;
    if (index > 0)
        last = m_rows.at(index - 1)->tabStops().last();
    else if (!m_rows.isEmpty())
        last = tabStopBefore(m_rows.first()->tabStops().first());
    const QWidgetList stops = row->tabStops();
    for (QWidget* stop : stops) {
        if (last)
            setTabOrder(last, stop);
        last = stop;
    }
}

void AudioMappingWidget::onAddButtonClicked(int index)
{
    insertTrackMapping(index + 1, true);
    if (index + 1 < m_rows.size())
        revealLater(m_rows.at(index + 1));
}

void AudioMappingWidget::revealLater(TrackMappingWidget* row)
{
    QTimer::singleShot(0, row, [row] {
        // Layouts are told of a new row by posted events, each level by the one below: all have to give it its place.
        row->show();
        for (QWidget* widget = row->parentWidget(); widget; widget = widget->parentWidget()) {
            QCoreApplication::sendPostedEvents(widget, QEvent::LayoutRequest);
            if (auto* area = qobject_cast<QScrollArea*>(widget))
                return area->ensureWidgetVisible(row);
        }
    });
}

void AudioMappingWidget::removeTrackMapping(int index, bool notify)
{
    if (QLayoutItem* item = index >= 0 ? m_layout->takeAt(index) : nullptr) {
        moveFocusFrom(index);
        delete item->widget();
        delete item;
    }
    m_rows.removeAt(index);
    validateWidgets();
    if (notify)
        onTrackMappingChanged();
}

void AudioMappingWidget::moveFocusFrom(int index)
{
    const QWidget* focus = window()->focusWidget();
    if (m_rows.size() < 2 || !focus || !m_rows.at(index)->isAncestorOf(focus))
        return;
    // The row that comes to stand below the pointer; its remove button, unless that is about to be disabled.
    const TrackMappingWidget* next = m_rows.at(index + 1 < m_rows.size() ? index + 1 : index - 1);
    (m_rows.size() > 2 ? next->minusButton() : next->plusButton())->setFocus();
}

void AudioMappingWidget::onRemoveButtonClicked(int index)
{
    if (m_rows.size() > 1)
        removeTrackMapping(index, true);
}

void AudioMappingWidget::onTrackMappingChanged()
{
    emit valueChanged(getValue());
}

int AudioMappingWidget::findIndex(const TrackMappingWidget* row) const
{
    return m_rows.indexOf(const_cast<TrackMappingWidget*>(row));
}

void AudioMappingWidget::resetTrackMapping()
{
    m_choices->update(m_manager.get());
    // The fresh row comes first: it takes the place of the former ones in the tab order.
    insertRow(0);
    while (m_rows.size() > 1)
        removeTrackMapping(m_rows.size() - 1, false);
    validateWidgets();
    onTrackMappingChanged();
}

void AudioMappingWidget::validateWidgets()
{
    const bool removable = m_rows.size() > 1;
    const QString longest = TrackMappingWidget::trackName(m_rows.size());
    const int width = fontMetrics().size(Qt::TextSingleLine, longest).width() + 1;
    for (int index = 0; index < m_rows.size(); ++index) {
        TrackMappingWidget* row = m_rows.at(index);
        row->minusButton()->setEnabled(removable);
        row->setNumber(index + 1, width);
    }
}
