#include "desk/imf/package/Verifier.h"

#include "desk/imf/package/Folder.h"
#include "desk/imf/package/VerifyScan.h"

namespace desk::imf
{

QVector<Finding> verifyDelivery(const QString& folder, const VerifyOptions& options)
{
    Scan scan;
    scan.folder = canonicalFolder(folder);
    scan.options = options;
    Report report;
    if (scanDelivery(scan, report)) {
        const QVector<Rule> rules = fileRules() + compositionRules() + trackFileRules();
        for (const Rule rule : rules)
            rule(scan, report);
    }
    return report.findings();
}

bool hasErrors(const QVector<Finding>& findings)
{
    return std::any_of(findings.cbegin(), findings.cend(),
                       [](const Finding& one) { return one.severity == Severity::Error; });
}

} // namespace desk::imf
