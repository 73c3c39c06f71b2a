#pragma once

#include <string>
#include <vector>

#include "engine/cache.h"
#include "localdata/transfer_record.h"
#include "service/transfer_result.h"

namespace updown {

// Which records go into the task list file, and which of its records come back. What lies in the
// cache of headers does neither: the packages' list asks for it anew.

// A copy of what is to be stored, in order. Main thread.
std::vector<StoredRecord> KeptRecords(const RecordList& records, const PackageCache& cache);

// The records of a loaded list as they go on: to be kept again. Earlier versions stored the fetches
// of headers too, and what those have left unfinished in the cache is removed.
RecordList RestoredRecords(const std::vector<StoredRecord>& list, const PackageCache& cache);

// Why a restored record is Failed, as far as the list tells: the path is the end of the transfer
// that such a code is about, of a folder its top. Code 0 if it tells nothing.
TransferResult StoredFailure(const TransferRecord& record);

}  // namespace updown
