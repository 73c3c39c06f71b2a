#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "localdata/transfer_record.h"

namespace updown {

// What the records are asked for again and again, without a walk: the lowest free number, and
// the records that a service path meets. Refers to the store's records and owns none; to be told
// when one leaves it. Main thread only.
class RecordIndex {
 public:
  void Rebuild(const RecordList& records);
  void Add(const TransferRecord& record);
  void Remove(const TransferRecord& record);

  std::uint32_t LowestFreeId() const;  // from 1

  // True if a top record for downloading that is kept across restarts has this path or is a folder
  // above it. One "/" at the end of either path does not count, nor does the case of ASCII letters.
  bool Meets(std::string_view servicePath) const;

 private:
  bool HasRecord(const std::string& key) const;
  void NameRecords() const;

  std::unordered_set<std::uint32_t> usedIds_;
  mutable std::uint32_t next_ = 1;  // all below are used, or freed
  std::set<std::uint32_t> freed_;
  mutable std::unordered_multimap<std::string, const TransferRecord*> byPath_;
  mutable std::unordered_map<const TransferRecord*, std::string> keys_;  // in byPath_
  mutable std::unordered_set<const TransferRecord*> unnamed_;  // had no path when last looked at
};

}  // namespace updown
