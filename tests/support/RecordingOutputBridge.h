#pragma once

#include "StratacutUI/IMFO_Bridge.h"

#include <QHash>
#include <QMap>
#include <QSet>
#include <QVector>

#include <functional>
#include <utility>

namespace support
{

/// An output service that writes down every call and answers as it is told. Whatever it was not told succeeds.
class RecordingOutputBridge : public IMFO_Bridge
{
public:
    /// The process-wide bridge, installed in its holder and brought back to its first state.
    static RecordingOutputBridge& installed();

    struct Commit {
        IMFO_ItemInfo item;
        CommitCallback onDone;
    };

    /// Every call in order, with the arguments that matter: "createDelivery(Film, /out, original)", "commit(id)".
    QStringList calls;
    /// What readDelivery answers, by folder. A folder that is not here gives error 1 "No deliverable in <folder>.".
    QHash<QString, QPair<QByteArray, QJsonObject>> deliveries;
    /// What getDeliveryInfo answers, by component identifier; an empty object otherwise.
    QHash<QByteArray, QJsonObject> infos;
    /// What getCPLTrackInfo answers, by the CPL's identifier; nothing otherwise.
    QHash<QByteArray, QMap<QString, IMFO_TrackInfo>> trackInfos;
    /// The folder that createDelivery chooses where none is wanted.
    QString chosenFolder = QStringLiteral("/out");
    /// Whether renameItem leaves the new identifier empty.
    bool keepsIdentifiers = false;
    /// Commits that have started; a test calls `onDone` when it likes, on any thread.
    QVector<Commit> commits;
    /// What applyCommitSettings and applyDescriptiveMetadata were given, by component identifier.
    QHash<QByteArray, QString> appliedSettings;
    QHash<QByteArray, QString> appliedMetadata;
    /// Called with each call's text before it is answered.
    std::function<void(const QString&)> onCall;

    /// Lets every call of the operation fail from now on: fail("renameItem", 1, "No.").
    void fail(const QString& operation, quint8 code, const QString& message)
    {
        m_failures.insert(operation, IMFO_Error_t(code, message));
    }

    /// Lets one call fail whose text is exactly `call`, each time: failCall("createIMP(id/B)", 1, "No.").
    void failCall(const QString& call, quint8 code, const QString& message) { fail(call, code, message); }

    /// Takes back fail and failCall.
    void succeed() { m_failures.clear(); }

    /// Back to the first state: nothing written down, nothing told.
    void reset();

    /// The calls since the last time, which are forgotten.
    QStringList takeCalls() { return std::exchange(calls, {}); }

    void readDelivery(IMFO_Error_t& error, const QString& path, std::pair<QByteArray, QJsonObject>& result) override;
    void getDeliveryInfo(IMFO_Error_t& error, const QByteArray& componentId, QJsonObject& info,
                         bool recursive) override;

    void reserved3(IMFO_Error_t&) override {}

    void reserved4(IMFO_Error_t&) override {}

    void reserved5(IMFO_Error_t&) override {}

    void createDelivery(IMFO_Error_t& error, const QString& name, QString& path, bool original,
                        QString& componentId) override;
    void removeItem(IMFO_Error_t& error, const QByteArray& componentId) override;
    void commit(IMFO_Error_t& error, const IMFO_ItemInfo& item, CommitCallback onDone) override;
    void createIMP(IMFO_Error_t& error, const QByteArray& impComponentId,
                   const QByteArray& descriptiveMetadata) override;
    void createCPL(IMFO_Error_t& error, const QByteArray& cplComponentId, const QByteArray& token,
                   const QByteArray& reserved) override;
    void setItemPath(IMFO_Error_t& error, const IMFO_ItemInfo& item, const QString& path, QString& actualPath) override;
    void renameItem(IMFO_Error_t& error, const IMFO_ItemInfo& item, const QString& name,
                    QString& newComponentId) override;
    void applyCommitSettings(IMFO_Error_t& error, const QString& commitSettingsJson,
                             const IMFO_ItemInfo& item) override;
    void applyDescriptiveMetadata(IMFO_Error_t& error, const QString& metadataJson, const IMFO_ItemInfo& item) override;
    void getCPLTrackInfo(IMFO_Error_t& error, QMap<QString, IMFO_TrackInfo>& tracks, const QByteArray& cplId) override;

private:
    bool record(IMFO_Error_t& error, const QString& operation, const QStringList& arguments);

    QHash<QString, IMFO_Error_t> m_failures;
    int m_created = 0;
};

} // namespace support
