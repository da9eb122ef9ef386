#pragma once

#include "desk/imf/package/Delivery.h"

#include <QString>
#include <QVector>

#include <functional>

namespace desk::imf
{

enum class Severity {
    /// The delivery is broken or does not hold what it says.
    Error,
    /// Playable, but against a rule or a recommendation.
    Warning,
    /// Worth knowing.
    Note
};

/// One thing that a check has found.
struct Finding {
    /// Stable word of the rule, for programs: "hash-mismatch".
    QString code;
    Severity severity = Severity::Error;
    /// Relative to the folder.
    QString file;
    /// Identifier of the asset, track or resource concerned; null when the file as a whole is.
    QUuid asset;
    /// What is wrong, as Error::what.
    QString reason;
};

struct VerifyOptions {
    /// Files of assets that other loaded deliveries hold; their hashes and descriptors are checked too.
    AssetResolver resolver;
    /// Bytes hashed so far and in all; answers false to stop. Called on the verifying thread.
    std::function<bool(qint64 done, qint64 total)> progress;
};

/// Checks all of a delivery: every reference, size and hash, the rules of the composition, the descriptors against the
/// track files. Findings in the order of the rules. A delivery that this program wrote carries seals, and any changed
/// byte is found; nobody else's is blamed for lacking them. Reads every byte: not for the user-interface thread.
QVector<Finding> verifyDelivery(const QString& folder, const VerifyOptions& options = {});

/// True when a finding is an error.
bool hasErrors(const QVector<Finding>& findings);

} // namespace desk::imf
