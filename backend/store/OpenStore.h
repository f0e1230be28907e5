#pragma once

#include "Store.h"

namespace PlanService {

enum class MissingDatabase
{
    Refuse,
    Create,
};

/// Opens the database at @p path for the calling thread, creating it first where that is wanted, and brings
/// an older schema up to date. A file that is no database of this service is refused and left untouched, and
/// so is one with a schema newer than this program. Throws StoreError with one line for the person at the
/// terminal: what failed, with which path, what to try.
/// Call it before the process has any other connection to the file; further ones come from connectStore.
std::unique_ptr<Store> openStore(const QString& path, MissingDatabase missing);

/// One more connection, for the calling thread, to a database that openStore has brought up to date.
std::unique_ptr<Store> connectStore(const QString& path);

} // namespace PlanService
