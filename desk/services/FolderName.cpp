#include "desk/services/FolderName.h"

#include <QRegularExpression>

namespace desk::services
{

Status checkFolderName(const QString& name)
{
    struct Rule {
        const char* pattern;
        const char* what;
    };

    static const Rule rules[] = {
        {"^[\\s\\p{Z}\\p{Cf}]*$", "a delivery needs a name that can be seen"},
        {"^\\.{1,2}$", "\".\" and \"..\" name folders themselves"},
        // Those that turn the direction of writing let a name pass for another one.
        {"[\\p{Cc}\\p{Zl}\\p{Zp}\\x{202a}-\\x{202e}\\x{2066}-\\x{2069}]",
         "a folder's name cannot hold control characters"},
        {"[/\\\\:*?\"<>|]", "a folder's name cannot hold any of / \\ : * ? \" < > |"},
        {"[. ]$", "a folder's name cannot end with a dot or a blank"},
        {"^ ", "a folder's name cannot start with a blank"},
        {"^(?i:\\.stratacut-commit-)", "folders of this name are removed as leftovers of an export"},
        {"^(?i:con|prn|aux|nul|com[0-9]|lpt[0-9])(\\.|$)", "this name stands for a device on other systems"},
    };
    const Error unfit{{}, QStringLiteral("\"%1\"").arg(name), {}, {}, QStringLiteral("choose another name")};
    for (const Rule& rule : rules) {
        if (QRegularExpression(QLatin1String(rule.pattern)).match(name).hasMatch())
            return Error{unfit.file, unfit.item, unfit.where, QLatin1String(rule.what), unfit.next};
    }
    if (name.toUtf8().size() > 255)
        return Error{unfit.file, QStringLiteral("\"%1...\"").arg(name.left(40)), unfit.where,
                     QStringLiteral("a folder's name holds 255 bytes at most"),
                     QStringLiteral("choose a shorter name")};
    return {};
}

} // namespace desk::services
