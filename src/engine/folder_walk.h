#pragma once

#include "engine/file_transfers.h"

namespace updown {

// Fetches what the folder record of `task` stands for, file after file through its child record, on
// the worker's thread; first the file that an earlier run left unfinished. What fails, or has a
// name that cannot be kept safely, is left out, and all else still fetched; a full disk, a lost
// session or connection and a stop end it at once.
//
// The first failure, and the record's state accordingly. A run that was stopped, or for which
// nobody lists any more at the program's end, leaves the state alone.
TransferResult RunFolderTask(TransferTask& task, FileTransfers& transfers);

}  // namespace updown
