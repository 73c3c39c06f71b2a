#include "app/main_thread_lister.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace updown {
namespace {

// What a worker waits for.
class Question {
 public:
  void Answer(FolderLister::Answer answer) {
    const std::lock_guard lock(mutex_);
    if (!answer_) {
      answer_ = std::move(answer);
      answered_.notify_all();
    }
  }
  FolderLister::Answer Wait() {
    std::unique_lock lock(mutex_);
    answered_.wait(lock, [this] { return answer_.has_value(); });
    return std::move(*answer_);
  }

 private:
  std::mutex mutex_;
  std::condition_variable answered_;
  std::optional<FolderLister::Answer> answer_;
};

// Goes with the posted call: if that is dropped, nobody lists any more.
struct Asked {
  explicit Asked(std::shared_ptr<Question> asked) : question(std::move(asked)) {}
  ~Asked() { question->Answer({FolderLister::Outcome::Gone, {}}); }
  Asked(const Asked&) = delete;
  Asked& operator=(const Asked&) = delete;

  const std::shared_ptr<Question> question;
};

}  // namespace

MainThreadLister::MainThreadLister(std::shared_ptr<PostedCalls> calls, Listing list)
    : calls_(std::move(calls)), list_(std::make_shared<const Listing>(std::move(list))) {}

FolderLister::Answer MainThreadLister::List(const std::string& path) {
  const auto question = std::make_shared<Question>();
  calls_->Post([asked = std::make_shared<Asked>(question), list = list_, path] {
    std::optional<DirectoryList> entries = (*list)(path);
    asked->question->Answer(entries ? Answer{Outcome::Listed, std::move(*entries)}
                                    : Answer{Outcome::Failed, {}});
  });
  return question->Wait();
}

}  // namespace updown
