#pragma once

namespace updown {

// Keeps a burst of requests to save from becoming as many saves: the first one goes through, the
// ones within the pause behind it become a single one at its end. The owner runs the pause's timer.
class SaveThrottle {
 public:
  // A request came: true if it is to be carried out now (and the pause to be started).
  bool Request() {
    if (pausing_) {
      pending_ = true;
      return false;
    }
    pausing_ = true;
    return true;
  }

  // The pause is over: true if a save is due (and another pause to be started).
  bool PauseOver() {
    pausing_ = pending_;
    pending_ = false;
    return pausing_;
  }

 private:
  bool pausing_ = false;
  bool pending_ = false;
};

}  // namespace updown
