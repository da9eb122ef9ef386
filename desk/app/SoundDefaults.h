#pragma once

class IMF_PackageMgrQtModel;
class QModelIndex;

namespace desk::services
{
class MediaLibrary;
}

namespace desk::app
{

/// Gives compositions that are not written and have no audio mapping the one by which their sound would be written
/// anyway, so that a page which shows a mapping shows this one: those among the children of `parent` from `first` on up
/// to `last`, and all below these. Does nothing where sound is not mapped.
void mapUnmappedSound(IMF_PackageMgrQtModel& model, const services::MediaLibrary& library, const QModelIndex& parent,
                      int first, int last);

} // namespace desk::app
