#include "engine/kept_tasks.h"

#include <memory>

#include "service/result_codes.h"

namespace updown {

std::vector<StoredRecord> KeptRecords(const RecordList& records, const PackageCache& cache) {
  std::vector<StoredRecord> kept;
  for (const auto& record : records) {
    if (record->keepAcrossRestart == 0) {
      continue;
    }
    StoredRecord stored = record->Store();
    if (!cache.Holds(stored.paths.localPath)) {
      kept.push_back(std::move(stored));
    }
  }
  return kept;
}

RecordList RestoredRecords(const std::vector<StoredRecord>& list, const PackageCache& cache) {
  RecordList records;
  for (const StoredRecord& stored : list) {
    const std::string& target = stored.paths.localPath;
    if (cache.Holds(target)) {
      // By its name: the cache may have moved since.
      cache.Delete(std::string_view(target).substr(target.rfind('/') + 1));
      continue;
    }
    auto record = std::make_shared<TransferRecord>(stored);
    record->keepAcrossRestart = 1;
    records.push_back(std::move(record));
  }
  return records;
}

TransferResult StoredFailure(const TransferRecord& record) {
  if (record.state != TransferState::Failed || record.resultCode == 0) {
    return {};
  }
  const int code = static_cast<int>(0U - record.resultCode);
  TransferResult failure{code, static_cast<int>(record.systemError), {}};
  if (code == result::kFileOpen || code == result::kFileWrite) {
    failure.path = record.LocalPath();
  } else if (code != result::kNotEncodable) {
    failure.path = record.RemotePath();
  }
  return failure;
}

}  // namespace updown
