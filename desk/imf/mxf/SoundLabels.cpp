#include "desk/imf/mxf/SoundLabels.h"

#include <QRegularExpression>

namespace desk::imf
{

bool isLanguageTag(const QString& text)
{
    // Language with extended languages, script, region, variants, extensions, private use.
    static const QRegularExpression tag(QStringLiteral("^(?:[a-z]{2,3}(?:-[a-z]{3}){0,3}|[a-z]{4,8})"
                                                       "(?:-[a-z]{4})?"
                                                       "(?:-(?:[a-z]{2}|[0-9]{3}))?"
                                                       "(?:-(?:[a-z0-9]{5,8}|[0-9][a-z0-9]{3}))*"
                                                       "(?:-[0-9a-wy-z](?:-[a-z0-9]{2,8})+)*"
                                                       "(?:-x(?:-[a-z0-9]{1,8})+)?$"
                                                       "|^x(?:-[a-z0-9]{1,8})+$"),
                                        QRegularExpression::CaseInsensitiveOption |
                                            QRegularExpression::DontCaptureOption);
    return tag.match(text).hasMatch();
}

const QStringList& soundContentKinds()
{
    static const QStringList kinds{"CCM", "DCM", "DDXC", "DVS", "DXC", "DXS", "FXC",  "FXS", "HI", "MCM", "MEC",
                                   "MXC", "MXS", "NAR",  "OP",  "PRM", "SOP", "SPRM", "TCM", "VI", "VO",  "WCM"};
    return kinds;
}

} // namespace desk::imf
