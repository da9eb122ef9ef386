#include "StratacutUI/IMF_CPL.h"

#include "DocumentText.h"
#include "EncodingParameters.h"
#include "NodeId.h"
#include "StratacutUI/IMFO_Bridge.h"
#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/ImfDict.h"
#include "StratacutUI/MXE_Bridge.h"
#include "StratacutUI/TargetFormatBuilder.h"

#include <QVariant>

#include <algorithm>

namespace
{
const QLatin1String audioKey(ImfDict::Audio);
const QLatin1String metadataKey(ImfDict::DescriptiveMetadata);
const QLatin1String contentKindKey(ImfDict::ContentKind);
const QLatin1String unknown("Unknown");

QString contentKindOf(const QJsonObject& document)
{
    const QJsonValue kind = document.value(metadataKey).toObject().value(contentKindKey);
    return kind.isObject() ? kind.toObject().value(QLatin1String(ImfDict::Value)).toString() : kind.toString();
}

// The mix, or an empty object where it is absent or of no use.
QJsonObject multiMixOf(const QJsonObject& document)
{
    if (!document.value(audioKey).isObject())
        return {};
    return JSON::GetAudioValue(document, QString::fromLatin1(ImfDict::MultipleAudioMix)).toJsonObject();
}

bool hasGroup(const QJsonObject& multiMix, const QJsonValue& name)
{
    const QJsonArray groups = multiMix.value(QLatin1String(ImfDict::TrackGroups)).toArray();
    return std::any_of(groups.begin(), groups.end(), [&name](const QJsonValue& group) {
        return group.toObject().value(QLatin1String(ImfDict::Name)) == name;
    });
}

// For each row the group or "All Active Tracks" that it names; empty for a track. The flat list knows all three by the
// numbers of their tracks alone.
QStringList namedSourcesOf(const QJsonObject& multiMix)
{
    QStringList named;
    const QJsonArray rows = multiMix.value(QLatin1String(ImfDict::AudioMapping)).toArray();
    for (const QJsonValue& row : rows) {
        const QJsonValue source = row.toObject().value(QLatin1String(ImfDict::SourceTracksGroups));
        const bool isNamed = source == QJsonValue("All Active Tracks") || hasGroup(multiMix, source);
        named += isNamed ? source.toString() : QString();
    }
    return named;
}

bool isLegacyMapping(const QJsonArray& mapping)
{
    const QJsonObject first = mapping.first().toObject();
    return first.contains(QLatin1String(ImfDict::AudioMixdownSettings)) &&
           !first.contains(QLatin1String(ImfDict::MixMode));
}

// Neighbours in a tree mostly come from the same project, bin and frame rate: they share these texts.
const QString& sharedWith(QString& last, const QString& text)
{
    if (last != text)
        last = text;
    return last;
}

CPL_TokenInfo tokenInfoOf(const QJsonObject& document)
{
    static thread_local CPL_TokenInfo last;
    const auto text = [&document](const char* key) { return document.value(QLatin1String(key)).toString(); };
    return {text(ImfDict::CPLMobID), sharedWith(last.frameRate, text(ImfDict::CPLFPSValue)),
            sharedWith(last.projectName, text(ImfDict::CPLProjectName)), sharedWith(last.bin, text(ImfDict::CPLBin)),
            text(ImfDict::CPLToken).toStdString()};
}

QString chosen(const IMFO_TrackInfo& info)
{
    return info.values.value(info.currentIndex);
}
} // namespace

IMF_CPL::IMF_CPL(std::weak_ptr<IMF_Node> owner, QJsonObject json, IMF_PackageMgr::Status status)
    : m_owner(std::move(owner)), m_json(std::move(json)), m_status(status)
{
    MXE_Bridge* mediaEngine = IMF_MXE_bridge::Instance();
    const CPL_TokenInfo info = tokenInfoOf(m_json);
    if (mediaEngine)
        m_targetFormatBuilder = mediaEngine->createTargetFormatBuilder(id(), info.mobID);
    InitializeMultiMix();
    if (m_targetFormatBuilder)
        EncodingParameters::restore(*m_targetFormatBuilder, m_json);
    UpdateJsonFromTargetFormatBuilder();
    UpdateJsonFromAAF();
    setTokenInfo(info);
    if (mediaEngine) {
        mediaEngine->prepareTrackData(m_audioGroupingModel);
        mediaEngine->prepareAudioGroupingData(m_audioGroupingModel);
    }
    UpdateFPSJsonValueFromTargetFormatBuilder();
    UpdateContentKind(contentKindOf(m_json));
    validateParams();
}

void IMF_CPL::setJsonObject(const QJsonObject& json)
{
    m_json = json;
    validateParams();
}

void IMF_CPL::updateCommittedJsonObject(const QJsonObject& json)
{
    m_status = IMF_PackageMgr::Committed;
    setJsonObject(json);
    UpdateJsonFromAAF();
}

QString IMF_CPL::name() const
{
    return DocumentText::name(m_json);
}

bool IMF_CPL::setName(const QString&)
{
    return false;
}

bool IMF_CPL::setDisplayName(const QString& name)
{
    return setContentTitle(name);
}

QString IMF_CPL::contentTitle() const
{
    return getProperty(QString::fromLatin1(ImfDict::ContentTitle));
}

bool IMF_CPL::setContentTitle(const QString& title)
{
    return setProperty(QString::fromLatin1(ImfDict::ContentTitle), title);
}

QString IMF_CPL::id() const
{
    return NodeId::below(m_owner, name());
}

QString IMF_CPL::getProperty(const QString& key) const
{
    return DocumentText::read(m_json, key);
}

QString IMF_CPL::value(std::string_view key) const
{
    return m_json.value(QLatin1String(key.data(), static_cast<int>(key.size()))).toString();
}

bool IMF_CPL::setProperty(const QString& key, const QVariant& value)
{
    if (m_status == IMF_PackageMgr::Committed)
        return false;
    const bool changed = key == QLatin1String(ImfDict::MultipleAudioMix) ? SetMultiMix(value.toJsonObject())
                                                                         : SetStringProperty(key, value.toString());
    if (changed)
        validateParams();
    return changed;
}

QString IMF_CPL::settings() const
{
    return m_targetFormatBuilder ? m_targetFormatBuilder->settings() : QString();
}

void IMF_CPL::setTokenInfo(const CPL_TokenInfo& info)
{
    m_tokenInfo = info;
    validateParams();
}

bool IMF_CPL::validateParams()
{
    m_valid = !name().isEmpty();
    MXE_Bridge* mediaEngine = IMF_MXE_bridge::Instance();
    if (mediaEngine && !m_tokenInfo.mobID.isEmpty() && !mediaEngine->isSequence(m_tokenInfo.mobID))
        m_valid = false;
    return m_valid;
}

bool IMF_CPL::SetStringProperty(const QString& key, const QString& text)
{
    if (EncodingParameters::isManaged(key)) {
        if (!m_targetFormatBuilder || m_targetFormatBuilder->value(key) == text)
            return false;
        m_targetFormatBuilder->setValue(key, text);
        UpdateJsonFromTargetFormatBuilder();
        return true;
    }
    const bool standsAtTopLevel = m_json.contains(key) && m_json.value(key).toString() != text;
    return key == contentKindKey && !standsAtTopLevel ? SetContentKind(text) : DocumentText::write(m_json, key, text);
}

bool IMF_CPL::SetContentKind(const QString& kind)
{
    if (!m_json.value(metadataKey).toObject().contains(contentKindKey) ||
        contentKindOf(m_json) == ImfDict::contentKindCode(kind))
        return false;
    UpdateContentKind(kind);
    return true;
}

bool IMF_CPL::SetMultiMix(const QJsonObject& multiMix)
{
    const QJsonObject current = multiMixOf(m_json);
    if (!current.isEmpty() && JSON::FlattenMultiMix(current) == JSON::FlattenMultiMix(multiMix)) {
        // Nothing new for the host. But a group that was chosen or removed is not to turn into the former source.
        if (namedSourcesOf(current) != namedSourcesOf(multiMix))
            StoreMultiMix(multiMix);
        return false;
    }
    StoreMultiMix(multiMix);
    UpdateJsonFromTargetFormatBuilder();
    return true;
}

void IMF_CPL::StoreMultiMix(const QJsonObject& multiMix)
{
    QJsonObject audio = m_json.value(audioKey).toObject();
    audio[QLatin1String(ImfDict::MultipleAudioMix)] = multiMix;
    m_json[audioKey] = audio;
}

// Stores directly what setProperty would: the sections follow once, when the builder has all choices.
void IMF_CPL::InitializeMultiMix()
{
    if (m_status != IMF_PackageMgr::Committed && multiMixOf(m_json).isEmpty())
        StoreMultiMix(JSON::DefaultMultiMix());
}

void IMF_CPL::UpdateContentKind(const QString& kind)
{
    const QJsonObject contentKind = ImfDict::contentKindObject(kind);
    QJsonObject metadata = m_json.value(metadataKey).toObject();
    metadata[contentKindKey] = contentKind;
    m_json[metadataKey] = metadata;
}

void IMF_CPL::UpdateJsonFromTargetFormatBuilder()
{
    using EncodingParameters::Precedence;
    if (!m_targetFormatBuilder)
        return;
    // What was written to disk stays as it is, whether or not the builder would offer it today.
    const bool committed = m_status == IMF_PackageMgr::Committed;
    const QString rateKey = QString::fromLatin1(ImfDict::FrameRate);
    const bool isRateMissing = committed && EncodingParameters::choice(m_json, rateKey).isEmpty();
    EncodingParameters::write(m_json, *m_targetFormatBuilder, committed ? Precedence::Document : Precedence::Builder);
    // The builder's value is always one of its choices, also where the rate is none of them.
    if (isRateMissing && m_targetFormatBuilder->frameRate().isEmpty())
        EncodingParameters::store(m_json, rateKey, EncodingParameters::entry({unknown}, 0));
    m_targetFormatBuilder->setAudioMapping(JSON::FlattenMultiMix(multiMixOf(m_json)));
}

void IMF_CPL::UpdateJsonFromAAF()
{
    IMFO_Bridge* output = IMF_IMFO_bridge::Instance();
    if (m_status != IMF_PackageMgr::Committed || !output)
        return;
    IMFO_Bridge::IMFO_Error_t error;
    QMap<QString, IMFO_TrackInfo> reported;
    output->getCPLTrackInfo(error, reported, id().toUtf8());
    if (error.isError())
        reported.clear();
    const IMFO_TrackInfo mix = reported.take(QString::fromLatin1(ImfDict::MultipleAudioMix));
    UpdateCommittedMapping(mix.audioMapping);
    const QString kind = chosen(reported.take(contentKindKey));
    if (!kind.isEmpty())
        UpdateContentKind(kind);
    for (auto info = reported.constBegin(); info != reported.constEnd(); ++info) {
        if (!info->values.isEmpty())
            EncodingParameters::store(m_json, info.key(), EncodingParameters::entry(info->values, info->currentIndex));
    }
    UpdateCommittedFrameRate();
}

// A mapping that the host does not report is taken from the document; either may be in the older form.
void IMF_CPL::UpdateCommittedMapping(const QJsonArray& reported)
{
    const QLatin1String mixKey(ImfDict::MultipleAudioMix);
    const QLatin1String mappingKey(ImfDict::AudioMapping);
    QJsonObject multiMix = m_json.value(audioKey).toObject().value(mixKey).toObject();
    const QJsonArray stored = multiMix.value(mappingKey).toArray();
    const QJsonArray mapping = reported.isEmpty() ? stored : reported;
    const QJsonArray present = isLegacyMapping(mapping) ? JSON::MigrateLegacyMapping(mapping) : mapping;
    if (present == stored)
        return;
    multiMix[mappingKey] = present;
    StoreMultiMix(multiMix);
}

void IMF_CPL::UpdateCommittedFrameRate()
{
    const QString key = QString::fromLatin1(ImfDict::FrameRate);
    if (!EncodingParameters::choice(m_json, key).isEmpty())
        return;
    const QString rate = m_targetFormatBuilder ? m_targetFormatBuilder->frameRate() : QString();
    EncodingParameters::store(m_json, key, EncodingParameters::entry({rate.isEmpty() ? unknown : rate}, 0));
}

void IMF_CPL::UpdateFPSJsonValueFromTargetFormatBuilder()
{
    if (m_status == IMF_PackageMgr::Committed)
        return;
    const QString key = QString::fromLatin1(ImfDict::FrameRate);
    const QStringList choices = m_targetFormatBuilder ? m_targetFormatBuilder->choices(key) : QStringList();
    const QString& rate = m_tokenInfo.frameRate;
    m_validFPS = choices.contains(rate) && rate != unknown;
    if (!m_validFPS)
        return;
    // Another rate can change what other parameters may be: then all of them are written again.
    const bool isNew = m_targetFormatBuilder->value(key) != rate;
    m_targetFormatBuilder->setValue(key, rate);
    if (isNew)
        UpdateJsonFromTargetFormatBuilder();
    if (EncodingParameters::choice(m_json, key) != rate)
        EncodingParameters::store(m_json, key, EncodingParameters::entry(choices, choices.indexOf(rate)));
}
