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
  keys_.clear();
  unnamed_.clear();
  freed_.clear();
  next_ = 1;
  for (const auto& record : records) {
    Add(*record);
  }
}

void RecordIndex::Add(const TransferRecord& record) {
  usedIds_.insert(record.recordId);
  freed_.erase(record.recordId);
  if (record.parentRecordId == 0 && record.keepAcrossRestart != 0) {  // others meet nothing
    unnamed_.insert(&record);
  }
}

void RecordIndex::Remove(const TransferRecord& record) {
  usedIds_.erase(record.recordId);
  if (record.recordId < next_ && record.recordId != 0) {
    freed_.insert(record.recordId);
  }
  unnamed_.erase(&record);
  if (const auto key = keys_.find(&record); key != keys_.end()) {
    const auto [first, last] = byPath_.equal_range(key->second);
    byPath_.erase(
        std::find_if(first, last, [&](const auto& entry) { return entry.second == &record; }));
    keys_.erase(key);
  }
}

std::uint32_t RecordIndex::LowestFreeId() const {
  if (!freed_.empty()) {
    return *freed_.begin();
  }
  while (usedIds_.contains(next_)) {
    ++next_;
  }
  return next_;
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
    if (keys_.try_emplace(record, KeyOf(path)).second) {
      byPath_.emplace(KeyOf(path), record);
    }
    return true;
  });
}

}  // namespace updown
