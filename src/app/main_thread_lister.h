#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "engine/folder_lister.h"
#include "platform/posted_calls.h"

namespace updown {

// Lets the workers' folders be listed on the main thread, where the shared session is. A worker
// that waits is released when the queue closes.
class MainThreadLister final : public FolderLister {
 public:
  // Nothing after a failure, which the user has been told. Called on the queue's thread, until the
  // queue is closed.
  using Listing = std::function<std::optional<DirectoryList>(const std::string& path)>;

  MainThreadLister(std::shared_ptr<PostedCalls> calls, Listing list);

  Answer List(const std::string& path) override;

 private:
  const std::shared_ptr<PostedCalls> calls_;
  const std::shared_ptr<const Listing> list_;
};

}  // namespace updown
