#pragma once

/// The identifiers of the parameter widgets.
namespace ParamIds
{

inline constexpr char Name[] = "id_name";
inline constexpr char FileName[] = "id_file_name";
inline constexpr char ImfType[] = "id_imf_type";
inline constexpr char SetDirectory[] = "id_set_directory";
inline constexpr char Template[] = "id_template";
inline constexpr char AppPattern[] = "id_app_pattern";
inline constexpr char ParamRoot[] = "id_param_root";
inline constexpr char Encoding[] = "id_param_encoding";
inline constexpr char Video[] = "id_param_video";
inline constexpr char Compression[] = "id_compression";
inline constexpr char CompressionProfile[] = "id_compression_profile";
inline constexpr char Resolution[] = "id_resolution";
inline constexpr char FrameRate[] = "id_frame_rate";
inline constexpr char Audio[] = "id_param_audio";
inline constexpr char AudioFormat[] = "id_audio_format";
inline constexpr char AudioSampleRate[] = "id_audio_sample_rate";
inline constexpr char DescriptiveMetadata[] = "id_param_descriptive_metadata";
/// The same section on the pages of deliverables and IMPs; it stands for no key.
inline constexpr char Metadata[] = "id_param_metadata";
inline constexpr char AspectRatio[] = "id_aspect_ratio";
inline constexpr char Colorimetry[] = "id_colorimetry";
inline constexpr char ColorDepth[] = "id_color_depth";
inline constexpr char StereoscopicSetting[] = "id_stereoscopic_setting";
inline constexpr char AlternativeCenterCut[] = "id_alternative_center_cut";
inline constexpr char BitsPerSample[] = "id_bits_per_sample";
inline constexpr char AudioMix[] = "id_audio_mix";
inline constexpr char MultipleAudioMix[] = "id_multiple_audio_mix";
inline constexpr char IncludeMasterFader[] = "id_include_master_audio_fader";
inline constexpr char LocaleList[] = "id_locale_list";
inline constexpr char Annotation[] = "id_annotation";
inline constexpr char Issuer[] = "id_issuer";
inline constexpr char Creator[] = "id_creator";
inline constexpr char ContentOriginator[] = "id_content_originator";
inline constexpr char ContentTitle[] = "id_content_title";
inline constexpr char ContentKind[] = "id_content_kind";

/// The object name of the button that opens the grouping dialog.
inline constexpr char GroupingButton[] = "ATGbtn";

} // namespace ParamIds
