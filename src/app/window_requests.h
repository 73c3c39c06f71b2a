#pragma once

#include <QWidget>

#include "engine/session.h"
#include "packages/area_requests.h"

namespace updown {

// The panes' requests on the shared session. The pointer says busy while one runs; the failure's
// box comes up when the answer is there.
class WindowRequests final : public AreaRequests {
 public:
  // `owner` stands behind the boxes while it can be seen. Both outlive it.
  WindowRequests(SharedSession& session, QWidget& owner) : session_(session), owner_(owner) {}

  const std::string& Sessid() const { return session_.Sessid(); }

  bool OpenSession() override;
  bool ReopenSession() override;
  std::optional<DirectoryList> ListFolder(const std::u16string& path) override;
  int RenameEntry(const std::u16string& newPath, const std::u16string& oldPath) override;
  int RemoveFile(const std::u16string& path) override;
  int RemovePackage(const std::u16string& path) override;
  void ReportResult(std::int64_t code) override;

 private:
  SharedSession& session_;
  QWidget& owner_;
};

}  // namespace updown
