#pragma once

#include <cstdint>

#include "platform/window.h"

namespace updown::frame_message {

// Every numbered message among the program's windows. "T" is a TaskId, "path" a wide text
// (const std::u16string*) that the sender owns, "entry" a const DirectoryEntry* that the sender
// owns, "item" the tree's name for one of its items. Sent messages have the result named; a
// receiver answers 0 to everything else.
//
//   number                          from -> to              kind  wParam     lParam
inline constexpr std::uint32_t kAddEntry = 2025;       // tree -> list  send  item       entry
                                                       // tree -> form  send  0          entry
inline constexpr std::uint32_t kClearRows = 2026;      // tree, list -> form; list -> itself  send
inline constexpr std::uint32_t kSelectItem = 2027;     // list -> tree  send  0          item
inline constexpr std::uint32_t kCurrentFolder = 2030;  // tree -> form  send  0          path
inline constexpr std::uint32_t kTaskResult = 2033;     // engine -> frame  post  T  result, or 61211
inline constexpr std::uint32_t kListFolder = 2036;     // tree, worker -> frame  send  0  path
                                                       //   result: DirectoryList*, the caller's
                                                       //   to delete; null after a failure
inline constexpr std::uint32_t kIsQueued = 2038;       // tree -> frame  send  0  path; 1 or 0
inline constexpr std::uint32_t kRemoveFile = 2040;     // form -> frame  send  0  path; result code
inline constexpr std::uint32_t kRename = 2041;         // tree -> frame  send  new path, old path;
                                                       //   result code
inline constexpr std::uint32_t kRemovePackage = 2042;  // list -> frame  send  0  path; code without
                                                       //   its sign
inline constexpr std::uint32_t kDeleteItem = 2043;     // list -> tree  send  0          item
inline constexpr std::uint32_t kTaskAdded = 2047;      // frame -> frame, status  post  T  0
inline constexpr std::uint32_t kTaskState = 2050;      // frame -> status  post  T  as kTaskResult
inline constexpr std::uint32_t kWakeScheduler = 2051;  // status -> frame  post
inline constexpr std::uint32_t kBlockDone = 2124;      // worker -> frame -> status  post  top
                                                       //   record's id  0
inline constexpr std::uint32_t kShowPackage = 2124;    // list -> form  send  0  package name, empty
                                                       //   to clear
inline constexpr std::uint32_t kIsDuplicate = 2129;    // form -> frame  send  0  path; 1 or 0
inline constexpr std::uint32_t kSelectRow = 2130;      // tree -> list  post or send  row  0
inline constexpr std::uint32_t kSaveTaskList = 2131;   // worker -> frame  post
inline constexpr std::uint32_t kRefreshRoot = 2162;    // list -> tree  send  0          path "/"
inline constexpr std::uint32_t kLayOutPanes = 2167;    // tree -> frame  send  0          path
inline constexpr std::uint32_t kShowStatus = 2169;     // form -> frame  send

}  // namespace updown::frame_message
