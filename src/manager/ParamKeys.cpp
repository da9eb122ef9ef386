// The keys that the parameter widgets stand for.

#include "StratacutUI/IMF_PackageParamsView.h"

#include "ParamIds.h"

#include "StratacutUI/ImfDict.h"

#include <QHash>

namespace
{
struct IdAndKey {
    const char* id;
    const char* key;
};

constexpr IdAndKey keys[] = {
    {ParamIds::Name, ImfDict::Name},
    {ParamIds::ImfType, ImfDict::Type},
    {ParamIds::SetDirectory, ImfDict::Path},
    {ParamIds::Template, ImfDict::Template},
    {ParamIds::AppPattern, ImfDict::ApplicationPattern},
    {ParamIds::ParamRoot, "invalid"},
    {ParamIds::Encoding, ImfDict::Encoding},
    {ParamIds::Video, ImfDict::Video},
    {ParamIds::Compression, ImfDict::Compression},
    {ParamIds::CompressionProfile, ImfDict::CompressionProfile},
    {ParamIds::Resolution, ImfDict::Resolution},
    {ParamIds::FrameRate, ImfDict::FrameRate},
    {ParamIds::Audio, ImfDict::Audio},
    {ParamIds::AudioFormat, ImfDict::Format},
    {ParamIds::AudioSampleRate, ImfDict::SampleRate},
    {ParamIds::DescriptiveMetadata, ImfDict::DescriptiveMetadata},
    {ParamIds::AspectRatio, ImfDict::AspectRatio},
    {ParamIds::Colorimetry, ImfDict::Colorimetry},
    {ParamIds::ColorDepth, ImfDict::ColorDepth},
    {ParamIds::StereoscopicSetting, ImfDict::StereoscopicSettings},
    {ParamIds::AlternativeCenterCut, ImfDict::AlternativeCenterCut},
    {ParamIds::BitsPerSample, ImfDict::BitDepth},
    {ParamIds::AudioMix, ImfDict::AudioMix},
    {ParamIds::MultipleAudioMix, ImfDict::MultipleAudioMix},
    {ParamIds::IncludeMasterFader, ImfDict::IncludeMasterFader},
    {ParamIds::LocaleList, ImfDict::LocaleList},
    {ParamIds::Annotation, ImfDict::Annotation},
    {ParamIds::Issuer, ImfDict::Issuer},
    {ParamIds::Creator, ImfDict::Creator},
    {ParamIds::ContentOriginator, ImfDict::ContentOriginator},
    {ParamIds::ContentTitle, ImfDict::ContentTitle},
    {ParamIds::ContentKind, ImfDict::ContentKind},
};

QHash<QString, QString> keysById()
{
    QHash<QString, QString> hash;
    for (const IdAndKey& row : keys)
        hash.insert(QLatin1String(row.id), QLatin1String(row.key));
    return hash;
}

const QHash<QString, QString> keyOfId = keysById();
} // namespace

QString IMF_PackageParamsView::id2jsonKey(const QString& id)
{
    return keyOfId.value(id);
}
