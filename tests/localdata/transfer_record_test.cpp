#include "localdata/transfer_record.h"

#include <gtest/gtest.h>

#include <thread>

namespace updown {
namespace {

// A folder's child takes up file after file while the main thread saves the list. A save that gave
// one file the count of another would resume over the wrong bytes.
TEST(TransferRecord, AStoredRecordNeverMixesTwoFiles) {
  TransferRecord record;
  std::thread worker([&record] {
    for (std::uint32_t file = 1; file <= 3000; ++file) {
      record.StartFile({std::to_string(file), std::to_string(file)});
      record.doneBytes = file;
    }
  });
  StoredRecord stored;
  while (stored.doneBytes < 3000) {
    stored = record.Store();
    EXPECT_EQ(stored.paths.remotePath, stored.paths.localPath);
    if (stored.doneBytes != 0) {
      EXPECT_EQ(stored.paths.remotePath, std::to_string(stored.doneBytes));
    }
  }
  worker.join();
}

}  // namespace
}  // namespace updown
