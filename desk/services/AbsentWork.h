#pragma once

#include <QStringList>

class IMF_PackageMgrQtModel;

namespace desk::services
{

class SettingsStorage;

/// Keeps what the saved state says of deliveries that could not be read at this start, say because their disk is not
/// connected: the folder and the IMPs that were begun in it. Without this the next save would forget them, for the
/// package manager saves what is in its tree. A delivery that was removed, and in which nothing was begun, is
/// forgotten. To be called once, after the model has been loaded from `settings`.
void keepAbsentWork(SettingsStorage& settings, const IMF_PackageMgrQtModel& model);

/// The folders of which something is kept, in the order in which they were visited.
QStringList absentFolders(const SettingsStorage& settings);

/// Lets go of what is kept of the delivery in `folder`; false when nothing is.
bool forgetAbsentWork(SettingsStorage& settings, const QString& folder);

} // namespace desk::services
