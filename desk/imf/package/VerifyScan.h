#pragma once

#include "desk/imf/package/Verifier.h"

#include <QHash>
#include <QSet>

#include <functional>

namespace desk::imf
{

struct ScannedList {
    QUuid asset;
    /// Relative to the folder, as everywhere below.
    QString file;
    QByteArray bytes;
    PackingList list;
};

struct ScannedComposition {
    QUuid asset;
    QString file;
    Composition composition;
};

/// Collects findings.
class Report
{
public:
    void add(Severity severity, const char* code, const QString& file, const QUuid& asset, const QString& reason)
    {
        m_findings.append({QLatin1String(code), severity, file, asset, reason});
    }

    void error(const char* code, const QString& file, const QUuid& asset, const QString& reason)
    {
        add(Severity::Error, code, file, asset, reason);
    }

    void warning(const char* code, const QString& file, const QUuid& asset, const QString& reason)
    {
        add(Severity::Warning, code, file, asset, reason);
    }

    const QVector<Finding>& findings() const { return m_findings; }

private:
    QVector<Finding> m_findings;
};

/// What a delivery says, as far as it can be read, gathered once for all rules.
struct Scan {
    QString folder;
    VerifyOptions options;
    QByteArray mapBytes;
    QByteArray volumeIndexBytes;
    AssetMap map;
    /// Whether it carries this program's marks.
    bool isOurs = false;
    QVector<ScannedList> lists;
    QVector<ScannedComposition> compositions;
    /// Lawful paths of the mapped assets, relative.
    QHash<QUuid, QString> files;

    QString absolute(const QString& file) const { return folder + QLatin1Char('/') + file; }

    bool exists(const QString& file) const;
    /// Absolute path of an asset's file, here or where the resolver knows it; empty when there is none.
    QString locate(const QUuid& asset) const;
};

/// Reads all documents; what cannot be read becomes a finding. False where there is no asset map to go on with.
bool scanDelivery(Scan& scan, Report& report);

using ResourceVisitor = std::function<void(const Sequence&, const Resource&)>;
/// Visits the resources of all segments in their order.
void eachResource(const Composition& composition, const ResourceVisitor& visit);

/// One rule, or a few that go together.
using Rule = void (*)(const Scan&, Report&);

QVector<Rule> fileRules();
QVector<Rule> compositionRules();
QVector<Rule> trackFileRules();

} // namespace desk::imf
