#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QWidget>
#include <chrono>
#include <memory>

#include "platform/thread.h"

namespace updown {

// What windows remember from one start to the next: place and size, the bars between panes, width,
// order and sorting of columns. It is found by object names and common to all identities of the
// user. The file is read and written on threads of their own, as a disk, or another program that
// holds the file's lock, may take any time; whatever fails there leaves the sizes of a first start,
// and is not told. Main thread.
class WindowState {
 public:
  // Begins to read `windows.ini` in StateFolder(), and waits for it a moment.
  WindowState();

  // Before the window is shown for the first time: gives it, its splitters and its lists what they
  // had. What is damaged, foreign or from another set of columns is left as it is; a place on no
  // screen is moved onto one. False if not all splitters got theirs.
  bool Restore(QWidget& window) const;

  // Takes over what the window shows now. One that has never been on a screen keeps what it had.
  void Take(const QWidget& window);

  // The end, in two steps, so that others end meanwhile. False if the file is still being written
  // half a second after the first one; the thread is left to the process's end then.
  void BeginSave();
  bool WaitForEnd();

 private:
  using Values = QHash<QString, QByteArray>;

  template <typename Restorer>
  bool RestoreValue(const QString& key, Restorer restore) const;
  void TakeValue(const QString& key, const QByteArray& state);

  Values read_;
  Values taken_;
  std::unique_ptr<Thread> saving_;
  std::chrono::steady_clock::time_point deadline_;
};

}  // namespace updown
