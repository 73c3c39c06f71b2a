#pragma once

#include <span>
#include <string>
#include <vector>

#include "localdata/transfer_record.h"

namespace updown {

// The file that carries unfinished transfers over a restart: attribute lists one behind the other,
// one for each record, without head, count or checksum. One writer; a reader at any time finds a
// whole file.
//
//   tag  1 direction   2 remotePath   3 localPath       4 totalBytes   5 doneBytes   6 remoteTime
//        7 recordId    8 parentRecordId  9 isFolder    10 state
//        of a Failed record alone also  11 resultCode  12 systemError                then 255
//
// Lengths are big-endian as everywhere in the coding, numbers are 4 bytes little-endian. A reader
// skips tags that it does not know.

// Replaces the file as a whole by the records, the Finished ones left out, and returns when it is
// on disk: 0, or the errno of what failed, and then the old file is as it was. A record whose paths
// make it longer than 1024 bytes is left out too. Any thread, one at a time.
int SaveTaskList(std::span<const StoredRecord> records, const std::string& path);

// The records in file order, without those that have no remotePath: they name nothing to fetch. A
// missing file is made, empty. Reading ends at the first thing that is no whole record, or after
// 100,000 records, with all records before it. A file that was not read to its end for this or
// another reason is kept under its name with ".bad" behind, in the place of an earlier one, for the
// next save replaces it.
std::vector<StoredRecord> LoadTaskList(const std::string& path);

}  // namespace updown
