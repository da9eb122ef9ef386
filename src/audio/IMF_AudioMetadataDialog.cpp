#include "IMF_AudioMetadataDialog.h"

#include "AudioChoiceBox.h"
#include "MetadataTables.h"

#include "NvCore/Assert.h"
#include "NvCore/NvText.h"
#include "StratacutUI/ImfDict.h"
#include "ViewDeckQt/DecorationManager.h"
#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/StyledButton.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QRegularExpression>
#include <QVBoxLayout>

using ViewDeckQt::PWDiscrete;
using ViewDeckQt::StyledButton;

namespace
{
const QLatin1String none("None");
const QLatin1String regionSeparator("----------");
const QLatin1String kindSeparator("Separator");
constexpr QLatin1Char tagSeparator('-');
constexpr int regionWidth = 170;
constexpr int margin = 16;
/// Room for a title and the longest language, in average characters.
constexpr int languageCharacters = 54;

QString choiceText(const QString& code, const QString& name)
{
    return name.isEmpty() ? code : code + QStringLiteral(" (%1)").arg(name);
}

QString codeOf(QString choice)
{
    static const QRegularExpression name(QStringLiteral("\\((.*)\\)"));
    return choice.remove(name).trimmed();
}

QString textOf(const QJsonObject& metadata, const char* key)
{
    return metadata.value(QLatin1String(key)).toString();
}

QStringList partsOfTag(const QJsonObject& metadata)
{
    QStringList parts = textOf(metadata, ImfDict::RFC5646SpokenLanguage).split(tagSeparator);
    NV_ASSERT(!parts.isEmpty());
    return parts;
}

/// The second of two parts; empty for a tag with fewer or more.
QString regionCode(const QJsonObject& metadata)
{
    const QStringList parts = partsOfTag(metadata);
    return parts.size() == 2 && parts.last() != none ? parts.last() : QString();
}

QJsonObject namesOf(const QString& languageCode)
{
    return MetadataTables::languages().value(languageCode).toObject();
}
} // namespace

IMF_AudioMetadataDialog::IMF_AudioMetadataDialog(const QString& trackName, const QJsonObject& metadata, QWidget* parent,
                                                 Contents contents)
    : ViewDeckQt::ManagedDialog<QDialog>(parent), m_metadata(metadata), m_trackName(trackName)
{
    setManagedTitle(stx_func("Multi-Channel Audio Metadata"));
    if (contents == Contents::AtOnce)
        createContents();
}

IMF_AudioMetadataDialog::~IMF_AudioMetadataDialog() = default;

QJsonObject IMF_AudioMetadataDialog::defaultMetadata()
{
    return {{QLatin1String(ImfDict::RFC5646SpokenLanguage), QStringLiteral("en")},
            {QLatin1String(ImfDict::AudioContentKind), none}};
}

void IMF_AudioMetadataDialog::createContents()
{
    ViewDeckQt::DecorationManager::decorate(this);
    m_heading = new QLabel(m_trackName);
    m_heading->setTextFormat(Qt::PlainText);
    m_contentKind = new PWDiscrete(this, stx_func("MCA Content Kind:"), QStringLiteral("id_mca_content_kind"), {});
    m_note = new QLabel;
    m_note->setTextFormat(Qt::PlainText);
    m_note->setWordWrap(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->addWidget(m_heading);
    layout->addLayout(createLanguageRow());
    layout->addWidget(m_contentKind);
    layout->addWidget(m_note);
    layout->addStretch();
    layout->addLayout(createButtonRow());
    fillContentKinds();
    fillLanguages();
    showMetadata();
    setReadOnly(m_readOnly);
    m_ok->setFocus();
}

QHBoxLayout* IMF_AudioMetadataDialog::createLanguageRow()
{
    m_language = new PWDiscrete(this, stx_func("MCA Language:"), QStringLiteral("id_mca_language"), {});
    m_language->setToolTip({});
    m_language->setMinimumWidth(languageCharacters * fontMetrics().averageCharWidth());
    m_region = new AudioChoiceBox(this);
    m_region->setFixedWidth(regionWidth);
    m_region->setMissingToolTip(stx_func("This region is not in the table of the language:\n%1"));
    auto* label = new QLabel(stx_func("Region"));
    label->setBuddy(m_region);
    m_region->setAccessibleName(label->text());
    auto* row = new QHBoxLayout;
    row->addWidget(m_language);
    row->addWidget(label);
    row->addWidget(m_region);
    row->addStretch();
    connect(m_language, &PWDiscrete::valueChanged, this, &IMF_AudioMetadataDialog::populateRegionComboBox);
    // What the note is about is not what will be stored any more.
    connect(m_language, &PWDiscrete::valueChanged, m_note, &QLabel::hide);
    return row;
}

QHBoxLayout* IMF_AudioMetadataDialog::createButtonRow()
{
    m_cancel = new StyledButton(stx_func("Cancel"), this);
    m_ok = new StyledButton(stx_func("Ok"), this);
    m_ok->setDefault(true);
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(m_cancel);
    row->addWidget(m_ok);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_ok, &QPushButton::clicked, this, &IMF_AudioMetadataDialog::onOkButtonClicked);
    setTabOrder(m_language, m_region);
    setTabOrder(m_region, m_contentKind);
    setTabOrder(m_contentKind, m_cancel);
    setTabOrder(m_cancel, m_ok);
    return row;
}

void IMF_AudioMetadataDialog::fillContentKinds()
{
    QStringList choices{none, kindSeparator};
    const QJsonObject& kinds = MetadataTables::contentKinds();
    for (auto kind = kinds.begin(); kind != kinds.end(); ++kind)
        choices << choiceText(kind.key(), kind.value().toString());
    m_contentKind->setItems(choices, 0);
}

void IMF_AudioMetadataDialog::fillLanguages()
{
    QStringList choices;
    const QJsonObject& languages = MetadataTables::languages();
    for (auto language = languages.begin(); language != languages.end(); ++language)
        choices << choiceText(language.key(), language.value().toObject().value(language.key()).toString());
    choices.sort();
    m_language->setItems(choices, 0);
    populateRegionComboBox(m_language->getValue());
}

void IMF_AudioMetadataDialog::populateRegionComboBox(const QVariant& language)
{
    const QString code = language.toString().section(QLatin1Char('('), 0, 0).trimmed();
    const QJsonObject names = namesOf(code);
    m_hasRegions = names.size() != 1;
    enableRegion();
    QStringList choices{none, regionSeparator};
    for (auto name = names.begin(); name != names.end(); ++name) {
        if (name.key() != code)
            choices << choiceText(name.key(), name.value().toString());
    }
    m_region->setChoices(AudioChoiceBox::makeChoices(choices));
}

void IMF_AudioMetadataDialog::enableRegion()
{
    m_region->setEnabled(m_hasRegions && !m_readOnly);
}

void IMF_AudioMetadataDialog::setTrackName(const QString& trackName)
{
    m_trackName = trackName;
    if (m_heading)
        m_heading->setText(trackName);
}

void IMF_AudioMetadataDialog::setMetadata(const QJsonObject& metadata)
{
    m_metadata = metadata;
    if (m_heading)
        showMetadata();
}

void IMF_AudioMetadataDialog::showMetadata()
{
    m_language->setValue(languageText());
    populateRegionComboBox(partsOfTag(m_metadata).constFirst());
    const QString region = regionText();
    if (!region.isEmpty())
        m_region->choose(region);
    m_contentKind->setValue(contentKindText());
    showNote();
}

void IMF_AudioMetadataDialog::showNote()
{
    const QString tag = textOf(m_metadata, ImfDict::RFC5646SpokenLanguage);
    NvText note = stx_func("The language tag \"%1\" is not in the table of languages and regions.");
    if (tag.isEmpty())
        note = stx_func("No language has been chosen.");
    else if (partsOfTag(m_metadata).size() > 2)
        note = stx_func("The language tag \"%1\" has more parts than can be chosen here. Ok stores the language and "
                        "region that are shown.");
    m_note->setText(note.toQString().replace(QLatin1String("%1"), tag));
    m_note->setVisible(!isLanguageTagListed());
}

QString IMF_AudioMetadataDialog::languageText() const
{
    const QString code = partsOfTag(m_metadata).constFirst();
    return choiceText(code, namesOf(code).value(code).toString());
}

QString IMF_AudioMetadataDialog::regionText() const
{
    const QString region = regionCode(m_metadata);
    return choiceText(region, namesOf(partsOfTag(m_metadata).constFirst()).value(region).toString());
}

QString IMF_AudioMetadataDialog::contentKindText() const
{
    const QString code = textOf(m_metadata, ImfDict::AudioContentKind);
    if (code == none)
        return {};
    return choiceText(code, MetadataTables::contentKinds().value(code).toString());
}

bool IMF_AudioMetadataDialog::isLanguageTagListed() const
{
    const QStringList parts = partsOfTag(m_metadata);
    const QString& code = parts.first();
    const QString region = regionCode(m_metadata);
    if (parts.size() > 2)
        return false;
    const QJsonObject names = namesOf(code);
    return names.contains(code) && (region.isEmpty() || (region != code && names.contains(region)));
}

void IMF_AudioMetadataDialog::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
    if (!m_heading)
        return;
    m_language->setReadOnly(readOnly);
    m_contentKind->setReadOnly(readOnly);
    enableRegion();
    m_cancel->setHidden(readOnly);
}

void IMF_AudioMetadataDialog::onOkButtonClicked()
{
    // What could not be chosen stays as it was stored, to the letter.
    if (m_readOnly)
        return accept();
    QString tag = codeOf(m_language->getValue().toString());
    const QString region = codeOf(m_region->currentText());
    const QString kind = codeOf(m_contentKind->getValue().toString());
    // A dialog that was never painted still shows "None".
    if (!region.isEmpty() && region != none)
        tag += tagSeparator + region;
    m_metadata[ImfDict::RFC5646SpokenLanguage] = tag;
    m_metadata[ImfDict::AudioContentKind] = kind.isEmpty() ? QString(none) : kind;
    accept();
}

void IMF_AudioMetadataDialog::setVisible(bool visible)
{
    if (visible && !m_heading)
        createContents();
    if (visible)
        m_ok->setFocus();
    if (visible && isWindow()) {
        rememberSize(QStringLiteral("IMF_AudioMetadataDialog"), sizeHint());
        // The note, which the dialog of another track may not have had, takes more lines where there is less room.
        resize(size().expandedTo({0, layout()->totalHeightForWidth(width())}));
    }
    ViewDeckQt::ManagedDialog<QDialog>::setVisible(visible);
}

void IMF_AudioMetadataDialog::paintEvent(QPaintEvent* event)
{
    // Nobody is to read "None" as a choice that was made.
    if (m_region && m_region->currentText() == none)
        m_region->setCurrentIndex(-1);
    if (m_contentKind && m_contentKind->getValue().toString() == none)
        m_contentKind->setValue(QString());
    ViewDeckQt::ManagedDialog<QDialog>::paintEvent(event);
}
