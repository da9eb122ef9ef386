#pragma once

#include <QMetaType>
#include <QtGlobal>

/// The three facts that every item of the package tree carries. The numbers are fixed, 32 bits each: the item model
/// hands them out through its roles and hosts compare against them.
namespace IMF_PackageMgr
{

/// The kind of a node. A deliverable holds Interoperable Master Packages, an IMP holds Composition Playlists
/// (ST 2067-2:2020, ST 2067-3:2020).
enum NodeType : qint32 { Delivery = 0, IMP = 1, CPL = 2 };

/// Committed: written to disk and read-only. Uncommitted: made in this tool, not written yet, editable.
enum Status : qint32 { Committed = 0, Uncommitted = 1 };

/// Whether a deliverable stands alone (Original) or completes another one (Supplemental).
enum Version : qint32 { None = 0, Original = 1, Supplemental = 2 };

} // namespace IMF_PackageMgr

Q_DECLARE_METATYPE(IMF_PackageMgr::NodeType)
Q_DECLARE_METATYPE(IMF_PackageMgr::Status)
Q_DECLARE_METATYPE(IMF_PackageMgr::Version)
