#include "engine/record_index.h"

#include <algorithm>

#include "platform/text.h"

namespace updown {
namespace {

std::string KeyOf(std::string_view path) {
  if (path.ends_with('/')) {
    path.remove_suffix(1);
  }
  std::string key(path);
  std::transform(key.begin(), key.end(), key.begin(), AsciiLower);
  return key;
}

}  // namespace

void RecordIndex::Rebuild(const RecordList& records) {
  usedIds_.clear();
  byPath_.clear();
  unnamed_.clear();
  lowestFree_ = 1;
  for (const auto& record : records) {
    Add(*record);
  }
}

void RecordIndex::Add(const TransferRecord& record) {
  usedIds_.insert(record.recordId);
  unnamed_.push_back(&record);
}

std::uint32_t RecordIndex::LowestFreeId() const {
  while (usedIds_.contains(lowestFree_)) {
    ++lowestFree_;
  }
  return lowestFree_;
}

bool RecordIndex::Meets(std::string_view servicePath) const {
  NameRecords();
  const std::string wanted = KeyOf(servicePath);
  if (HasRecord(wanted)) {
    return true;
  }
  for (std::size_t slash = wanted.find('/'); slash != std::string::npos;
       slash = wanted.find('/', slash + 1)) {
    if (HasRecord(wanted.substr(0, slash))) {
      return true;
    }
  }
  return false;
}

bool RecordIndex::HasRecord(const std::string& key) const {
  const auto [first, last] = byPath_.equal_range(key);
  return std::any_of(first, last, [](const auto& entry) {
    const TransferRecord& record = *entry.second;
    return record.parentRecordId == 0 && record.direction == 0 && record.keepAcrossRestart != 0;
  });
}

void RecordIndex::NameRecords() const {
  std::erase_if(unnamed_, [this](const TransferRecord* record) {
    const std::string path = record->RemotePath();
    if (path.empty()) {
      return false;
    }
    byPath_.emplace(KeyOf(path), record);
    return true;
  });
}

}  // namespace updown
