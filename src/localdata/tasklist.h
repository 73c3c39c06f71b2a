#pragma once

#include <string>

#include "localdata/transfer_record.h"

namespace updown {

// The file that carries unfinished transfers over a restart: attribute lists one behind the other,
// one for each record, without head, count or checksum. Main thread only.
//
//   tag  1 direction   2 remotePath   3 localPath   4 totalBytes      5 doneBytes
//        6 remoteTime  7 recordId     8 parentRecordId  9 isFolder   10 state      then 255
//
// Lengths are big-endian as everywhere in the coding, numbers are 4 bytes little-endian.

// Replaces the file by these records, the Finished ones left out. A record whose paths make
// it longer than 1024 bytes is left out too. Failures are not reported: the file is a convenience.
void SaveTaskList(const RecordList& records, const std::string& path);

// The records in file order, keepAcrossRestart 0. A missing file is made, empty. Reading ends at
// the first thing that is no whole record, or after 100,000 records, with all records before it.
RecordList LoadTaskList(const std::string& path);

}  // namespace updown
