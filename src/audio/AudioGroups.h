#pragma once

#include <QJsonArray>
#include <QString>
#include <QStringList>
#include <QVector>

/// A named group of the sequence's timeline tracks.
struct AudioGroup {
    QString name;
    /// Names of tracks in timeline order. The sequence need not have them any more.
    QStringList tracks;
    bool includeMasterFader = false;
};

/// Group profiles as documents keep them: an array of objects with "Name", "Include Master Fader" and "Tracks".
namespace AudioGroups
{

struct Read {
    QVector<AudioGroup> groups;
    /// What was wrong with the array and what became of it, for the user to read.
    QStringList remarks;
};

/// Reads whatever the array holds. Each group of the answer has a name of its own that is not reserved; a value of
/// another type counts as not there, and an element that tells of no group is left out.
Read read(const QJsonArray& profiles);

QJsonArray toJson(const QVector<AudioGroup>& groups);

/// The name of the group that always exists and is never kept, translated.
QString defaultName();

/// What means something else where a group is chosen, so that no group may be called so.
QStringList reservedNames();

} // namespace AudioGroups
