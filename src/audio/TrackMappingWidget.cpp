#include "TrackMappingWidget.h"

#include "IMF_AudioMetadataDialog.h"

#include "NvCore/Assert.h"
#include "NvCore/NvText.h"
#include "NvCore/Toggles.h"
#include "StratacutUI/ImfDict.h"
#include "ViewDeckQt/DecorationManager.h"
#include "ViewDeckQt/NineSlice.h"
#include "ViewDeckQt/StyledButton.h"
#include "images/IconCatalogue.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPointer>
#include <QStyle>

using ViewDeckQt::StyledButton;

namespace
{
const QLatin1String allActiveTracks("All Active Tracks");
const QLatin1String noRegion("None");
constexpr QLatin1Char tagSeparator('-');
constexpr int sourceWidth = 180;
constexpr int iconLabelWidth = 25;
constexpr int buttonSize = 19;
constexpr int iconSize = 16;
constexpr int spacing = 6;

bool hasMetadata()
{
    return TGL_GetToggle("/Stratacut/IMFMCAMetadata");
}

StyledButton* makeButton(const QString& text, const char* name, QWidget* parent)
{
    auto* button = new StyledButton(text, parent);
    button->setObjectName(QLatin1String(name));
    button->setFixedSize(buttonSize, buttonSize);
    return button;
}

QPixmap attentionIcon()
{
    const QIcon icon = ViewDeckQt::DecorationManager::style()->standardIcon(QStyle::SP_MessageBoxWarning);
    return icon.pixmap(iconSize);
}

/// Saved documents may hold a number where a text belongs.
QString textOf(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toVariant().toString();
}
} // namespace

TrackMappingWidget::TrackMappingWidget(ITrackGroupingManger* manager, GetIdProc getIdProc,
                                       const MappingChoices& choices, QWidget* parent)
    : QWidget(parent),
      m_manager(manager),
      m_getIdProc(std::move(getIdProc)),
      m_metadata(IMF_AudioMetadataDialog::defaultMetadata()),
      m_choices(choices)
{
    NV_ASSERT(m_getIdProc);
    createWidgets();
    layOut();
    connectAll();
    fillChoices();
    updateIcons();
}

TrackMappingWidget::~TrackMappingWidget() = default;

void TrackMappingWidget::createWidgets()
{
    m_trackAndGroup = new AudioChoiceBox(this);
    m_trackAndGroup->setObjectName(QStringLiteral("m_TrackAndGroupCBox"));
    m_trackAndGroup->setMinimumWidth(sourceWidth);
    m_trackAndGroup->setMissingToolTip(
        stx_func("The sequence and its groups do not have this source. Choose another one:\n%1"));
    m_iconLabel = new QLabel(this);
    m_iconLabel->setFixedWidth(iconLabelWidth);
    m_iconLabel->setAlignment(Qt::AlignCenter);
    m_trackLabel = new QLabel(this);
    m_mapTo = new AudioChoiceBox(this);
    m_mapTo->setObjectName(QStringLiteral("m_mapToCBox"));
    m_mapTo->setMissingToolTip(stx_func("The sequence cannot be mixed like this. Choose another mix mode:\n%1"));
    if (hasMetadata())
        createMetadataButton();
    m_plusButton = makeButton(QStringLiteral("+"), "m_plusButton", this);
    m_plusButton->setToolTip(stx_func("Add an IMF track below"));
    m_minusButton = makeButton(QStringLiteral("-"), "m_minusButton", this);
    m_minusButton->setToolTip(stx_func("Remove this IMF track"));
}

void TrackMappingWidget::createMetadataButton()
{
    m_metadataButton = makeButton({}, "m_metadataButton", this);
    m_metadataButton->setIconSize({iconSize, iconSize});
    m_metadataDialog = new IMF_AudioMetadataDialog({}, m_metadata, this);
    connect(m_metadataButton, &QPushButton::clicked, this, &TrackMappingWidget::openAudioMetadata);
    updateMetadataToolTip();
}

void TrackMappingWidget::layOut()
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing);
    row->addWidget(m_trackAndGroup, 3);
    row->addWidget(m_iconLabel);
    row->addWidget(m_trackLabel);
    row->addWidget(m_mapTo, 2);
    if (m_metadataButton)
        row->addWidget(m_metadataButton);
    row->addWidget(m_plusButton);
    row->addWidget(m_minusButton);
}

void TrackMappingWidget::connectAll()
{
    connect(m_plusButton, &QPushButton::clicked, this, [this] { emit plusButtonClicked(index()); });
    connect(m_minusButton, &QPushButton::clicked, this, [this] { emit minusButtonClicked(index()); });
    connect(m_trackAndGroup, QOverload<int>::of(&QComboBox::activated), this, [this](int id) {
        m_sourceGiven = true;
        updateWarning();
        emit sourceTrackChanged(index(), id);
    });
    connect(m_mapTo, QOverload<int>::of(&QComboBox::activated), this, [this](int id) {
        m_mixModeGiven = true;
        updateWarning();
        emit destTrackChanged(index(), id);
    });
}

void TrackMappingWidget::setTrackGroupingManager(ITrackGroupingManger* manager)
{
    const QString chosen = source();
    const QString mode = m_mapTo->currentText();
    m_manager = manager;
    fillChoices();
    if (m_sourceGiven)
        showSource(chosen);
    if (m_hasFixedMixMode)
        showFixedMixMode(mode);
    else if (m_mixModeGiven)
        m_mapTo->choose(mode);
    updateWarning();
}

void TrackMappingWidget::fillChoices()
{
    if (!m_manager)
        return;
    m_trackAndGroup->setChoices(m_choices.sources());
    m_mapTo->setChoices(m_choices.mixModes());
}

QString TrackMappingWidget::source() const
{
    const QString shown = m_trackAndGroup->currentText();
    const bool isFirst = m_trackAndGroup->currentIndex() == 0 && !m_trackAndGroup->isMissing();
    const bool isAll = m_trackAndGroup->isMissing() && shown == stx_func("All Active Tracks").toQString();
    return isFirst || isAll ? QString(allActiveTracks) : shown;
}

void TrackMappingWidget::showSource(const QString& source)
{
    if (source != allActiveTracks)
        m_trackAndGroup->choose(source);
    else if (m_trackAndGroup->choiceCount() > 0)
        // By its place: its text is translated.
        m_trackAndGroup->choose(0);
    else
        m_trackAndGroup->choose(stx_func("All Active Tracks").toQString());
}

void TrackMappingWidget::showFixedMixMode(const QString& mode)
{
    m_mapTo->setChoices(AudioChoiceBox::makeChoices({mode}));
}

QJsonObject TrackMappingWidget::rowObject() const
{
    QJsonObject object;
    object[ImfDict::TargetTrack] = QStringLiteral("A%1").arg(index() + 1);
    object[ImfDict::MixMode] = m_mapTo->currentText();
    if (m_metadataDialog && hasMetadata())
        object[ImfDict::Metadata] = m_metadata;
    object[ImfDict::SourceTracksGroups] = source();
    return object;
}

void TrackMappingWidget::setRowObject(const QJsonObject& object)
{
    const QString mode = textOf(object, ImfDict::MixMode);
    m_hasFixedMixMode = !object.contains(QLatin1String(ImfDict::SourceTracksGroups));
    m_mixModeGiven = !mode.isEmpty();
    if (m_hasFixedMixMode) {
        showFixedMixMode(mode);
    } else {
        m_sourceGiven = true;
        showSource(textOf(object, ImfDict::SourceTracksGroups));
        m_mapTo->setChoices(m_choices.mixModes());
        if (m_mixModeGiven)
            m_mapTo->choose(mode);
    }
    m_trackAndGroup->setVisible(!m_hasFixedMixMode);
    if (m_metadataDialog && hasMetadata()) {
        const QJsonValue metadata = object.value(QLatin1String(ImfDict::Metadata));
        setMetadata(metadata.toObject(IMF_AudioMetadataDialog::defaultMetadata()));
    }
    updateWarning();
}

void TrackMappingWidget::setMetadata(const QJsonObject& metadata)
{
    if (metadata == m_metadata)
        return;
    m_metadata = metadata;
    m_metadataDialog->setMetadata(metadata);
    updateMetadataToolTip();
}

QString TrackMappingWidget::trackName(int number)
{
    return stx_func("IMF Track A%1").toQString().arg(number);
}

void TrackMappingWidget::setNumber(int number, int labelWidth)
{
    m_trackLabel->setMinimumWidth(labelWidth);
    if (number == m_number)
        return;
    m_number = number;
    const QString name = trackName(number);
    m_trackLabel->setText(name);
    if (m_metadataDialog && hasMetadata())
        m_metadataDialog->setTrackName(name);
    nameForAssistance(name);
}

void TrackMappingWidget::nameForAssistance(const QString& trackName)
{
    m_trackAndGroup->setPurpose(stx_func("Source of %1").toQString().arg(trackName));
    m_mapTo->setPurpose(stx_func("Mix mode of %1").toQString().arg(trackName));
    m_plusButton->setAccessibleName(stx_func("Add a track below %1").toQString().arg(trackName));
    m_minusButton->setAccessibleName(stx_func("Remove %1").toQString().arg(trackName));
    if (m_metadataButton)
        m_metadataButton->setAccessibleName(stx_func("Metadata of %1").toQString().arg(trackName));
}

void TrackMappingWidget::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
    m_iconLabel->setHidden(readOnly);
    m_plusButton->setHidden(readOnly);
    m_minusButton->setHidden(readOnly);
    m_trackAndGroup->setDisabled(readOnly);
    m_mapTo->setDisabled(readOnly);
    if (m_metadataDialog && hasMetadata())
        m_metadataDialog->setReadOnly(readOnly);
}

QWidgetList TrackMappingWidget::tabStops() const
{
    QWidgetList stops{m_trackAndGroup, m_mapTo, m_metadataButton, m_plusButton, m_minusButton};
    stops.removeAll(nullptr);
    return stops;
}

void TrackMappingWidget::openAudioMetadata()
{
    // What was picked and then cancelled is not to show again.
    m_metadataDialog->setMetadata(m_metadata);
    const QPointer<TrackMappingWidget> self(this);
    const int answer = m_metadataDialog->exec();
    // The row may be gone by now, together with its dialog.
    if (!self || answer != QDialog::Accepted || m_readOnly)
        return;
    m_metadata = m_metadataDialog->metadata();
    updateMetadataToolTip();
    updateWarning();
    emit metadataChanged();
}

void TrackMappingWidget::updateMetadataToolTip()
{
    const QStringList parts = textOf(m_metadata, ImfDict::RFC5646SpokenLanguage).split(tagSeparator);
    const QString region = parts.size() == 2 ? parts.last() : QString(noRegion);
    m_metadataButton->setToolTip(
        stx_func("Edit multi - channel audio metadata\nMCA Language: %1\nRegion: %2\nMCA ContentKind: %3")
            .toQString()
            .arg(m_metadataDialog->languageText(), region, m_metadataDialog->contentKindText()));
}

QString TrackMappingWidget::warning() const
{
    if (m_trackAndGroup->isMissing())
        return m_trackAndGroup->toolTip();
    if (m_mapTo->isMissing())
        return m_mapTo->toolTip();
    const bool hasLanguage = !textOf(m_metadata, ImfDict::RFC5646SpokenLanguage).isEmpty();
    if (m_metadataDialog && hasLanguage && !m_metadataDialog->isLanguageTagListed())
        return stx_func("The language tag of this track is not in the table of languages and regions.");
    return {};
}

void TrackMappingWidget::updateWarning()
{
    const QString text = warning();
    if (text == m_iconLabel->toolTip())
        return;
    m_iconLabel->setToolTip(text);
    updateIcons();
}

void TrackMappingWidget::updateIcons()
{
    const bool isFine = m_iconLabel->toolTip().isEmpty();
    m_iconLabel->setPixmap(isFine ? NineSlice::GetImage(IconCatalogue::thinArrowRight, devicePixelRatioF())
                                  : attentionIcon());
    if (!m_metadataButton)
        return;
    const NineSlice::IconColorSubstitution tint = NineSlice::GetIconColorSubstitution();
    m_metadataButton->setIcon(
        NineSlice::GetImage(NineSlice::CreateCustomResourceData(IconCatalogue::profileEditor, tint.first, tint.second),
                            devicePixelRatioF()));
}

void TrackMappingWidget::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        updateIcons();
}
