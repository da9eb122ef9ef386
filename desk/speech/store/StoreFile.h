#pragma once

#include "desk/speech/store/Sql.h"
#include "desk/speech/store/StoreContents.h"

#include <memory>

namespace desk::speech
{

/// Opens the SQLite file of a project's transcripts for writing, with a write-ahead log; makes it, with its tables,
/// where it is not there. Looks at the file first and reads it whole through a connection that cannot write: what is
/// damaged, of another program or of another version stays untouched. Null where that fails, and `problem` says why.
std::unique_ptr<Sql> openStoreFile(const QString& path, StoreProblem& problem);

/// What a failed statement means for the user.
StoreProblem storeProblem(const QString& path, const Sql& sql);

/// Tells a file from any other that has or gets its name; 0 where there is none.
quint64 fileNumber(const QString& path);

/// That the open file is not the one of this name any more. Does not pass by itself.
StoreProblem movedAway(const QString& path);

} // namespace desk::speech
