#pragma once

#include <optional>
#include <stop_token>
#include <string>

#include "engine/session_answers.h"

namespace updown {

// What transfers want of the shared session. Called on their own threads, where it waits; a stop
// that is requested ends each wait at once.
class WorkerSession {
 public:
  virtual ~WorkerSession() = default;

  // The key in force; its grant is 0 until the service has granted a session for the first time.
  virtual SessionKey Key() const = 0;

  // For a worker whose `refused` key the service no longer knows. The session is opened anew once
  // for all workers that hold that key, and each gets the new one; nothing if that failed.
  virtual std::optional<SessionKey> Renew(const SessionKey& refused, std::stop_token stop) = 0;

  // The listing of a folder of the service. Cancelled when `stop` came first.
  virtual ListingAnswer List(const std::string& path, std::stop_token stop) = 0;
};

}  // namespace updown
