#pragma once

#include "NvCore/Export.h"

#include <QString>

/// Feature toggles: switches named by a path such as "/Stratacut/IMFMultipleAudioMix".
///
/// Each is looked up afresh at every call, in this order; the first place that knows it decides:
///  1. a value set by the host in this process (TGL_SetToggle);
///  2. the environment variable of the path: "TGL" and the path, every character but letters and digits replaced by an
///     underscore, as in TGL_Stratacut_IMFMultipleAudioMix;
///  3. the toggle file (TGL_ToggleFile): UTF-8, a line for each toggle, `path = value`; lines that start with # are
///     ignored, and a later line wins;
///  4. the host's own default (TGL_SetDefault);
///  5. the default below; a path that is not listed is off.
///
/// A value is one of on, true, yes, 1, off, false, no, 0, in any case. Another value counts as not there, which is said
/// once on the log.
///
/// | path                             | default | what it switches                                              |
/// |----------------------------------|---------|---------------------------------------------------------------|
/// | "/Stratacut/IMFMultipleAudioMix" | off     | mapping widget and grouping in place of a single mix choice   |
/// | "/Stratacut/IMFMCAMetadata"      | off     | the multi-channel audio metadata button and dialog            |
///
/// All functions may be called from any thread.
NVCORE_EXPORT bool TGL_GetToggle(const char* path);

/// Sets a toggle for this process, above environment and file.
NVCORE_EXPORT void TGL_SetToggle(const char* path, bool on);

/// Takes back what TGL_SetToggle set.
NVCORE_EXPORT void TGL_ResetToggle(const char* path);

/// Sets what a toggle is in this process where the user has said nothing, neither in the environment nor in the file.
NVCORE_EXPORT void TGL_SetDefault(const char* path, bool on);

/// The toggle file: the one set below, or the one that the environment variable STRATACUT_TOGGLES names, or
/// "stratacut/toggles" in the user's configuration folder. It need not exist.
NVCORE_EXPORT QString TGL_ToggleFile();

/// Chooses the toggle file; an empty name returns to the places above.
NVCORE_EXPORT void TGL_SetToggleFile(const QString& fileName);
