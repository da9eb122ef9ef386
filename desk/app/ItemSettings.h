#pragma once

#include "desk/base/Result.h"

#include <QModelIndex>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

class IMF_PackageMgrQtModel;

namespace desk::app
{

/// Key and value as the command line gives them.
using Setting = QPair<QString, QString>;

/// "KEY=VALUE" with a key that some item has; the error says what is wrong with it.
Result<Setting> parseSetting(const QString& text);

/// The keys of descriptive texts, which every kind of item may have.
const QStringList& textKeys();

/// Whether a text is one that its key takes: a content kind is one of the known ones.
Status checkText(const Setting& setting);

/// Sets a text or a parameter of an item as the package manager's window does: an issuer also fills the items above
/// that have none. The error says what there is to choose from.
Status applySetting(IMF_PackageMgrQtModel& model, const QModelIndex& item, const Setting& setting);

/// Sets an encoding parameter of a composition, or its multiple audio mix.
Status applyParameter(IMF_PackageMgrQtModel& model, const QModelIndex& cpl, const Setting& setting);

/// Sorts so that a setting stands behind those that its choices depend on.
void sortByDependence(QVector<Setting>& settings);

} // namespace desk::app
