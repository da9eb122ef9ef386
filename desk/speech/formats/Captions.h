#pragma once

#include "desk/base/Rational.h"
#include "desk/speech/model/Transcript.h"

#include <QStringList>

namespace desk::speech
{

/// What a caption may be. The defaults are the usual limits for Latin script.
struct CaptionRules {
    /// Frames a second of the picture; captions start and end with frames.
    Rational frameRate{25, 1};
    /// 1 or 2.
    int lines = 2;
    /// Characters a line, as a reader counts them.
    int columns = 42;
    int charactersPerSecond = 17;
    /// Frames between the end of a caption and the start of the next.
    int gapFrames = 2;
    /// The clip's length in whole milliseconds, which no caption passes; 0 for any.
    int clipMs = 0;
};

struct Caption {
    /// The first frame that shows it and the first that does not.
    qint64 startFrame = 0;
    qint64 endFrame = 0;
    /// Speaker::id; -1 for nobody.
    int speaker = -1;
    QStringList lines;
};

/// Subcaptions of a transcript: every word of every segment, in order, one speaker a caption. Where people talk at once
/// their captions alternate by time. Speech that is faster than can be read moves captions away from their words, half
/// of the way before and half after; no word is dropped. A word longer than a line is cut. Where more is said than can
/// be read before the clip ends, captions are shorter than their text needs; where that is not enough, the gaps yield
/// and at last the number of lines.
QVector<Caption> makeCaptions(const Transcript& transcript, const CaptionRules& rules);

/// How many captions do not keep the rules, but for the clip's end, which all keep.
int countOfBreaches(const QVector<Caption>& captions, const CaptionRules& rules);

/// How many characters a reader sees: grapheme clusters.
int countOfCharacters(const QString& text);

} // namespace desk::speech
