#include "app/window_state.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QHeaderView>
#include <QSettings>
#include <QSplitter>
#include <QTreeView>
#include <QWindow>
#include <algorithm>
#include <utility>

#include "app/state_path.h"
#include "platform/qt/text.h"

namespace updown {
namespace {

constexpr std::chrono::milliseconds kReadLimit{300};
constexpr std::chrono::milliseconds kSaveLimit{500};
constexpr qint64 kMostBytes = 1 << 20;  // of a file that can be the program's own
constexpr int kSealBytes = 16;

QString StateFile() { return FromUtf8(StatePath("windows.ini").value_or("")); }

// A damaged state may lead the toolkit anywhere, so each value has a digest in front.
QByteArray Seal(const QString& key, const QByteArray& state) {
  return QCryptographicHash::hash(key.toUtf8() + state, QCryptographicHash::Md5);
}

// The widths of another version's columns say nothing about these.
QString KeyOf(const QWidget& window, const QTreeView& list) {
  return u"%1/%2.header%3"_qs.arg(window.objectName(), list.objectName())
      .arg(list.header()->count());
}

QString KeyOf(const QWidget& window, const QSplitter& splitter) {
  return u"%1/%2.splitter"_qs.arg(window.objectName(), splitter.objectName());
}

QString GeometryKeyOf(const QWidget& window) { return window.objectName() + u"/geometry"_qs; }

}  // namespace

WindowState::WindowState() {
  const auto values = std::make_shared<Values>();
  const auto thread = Thread::Start([values] {
    const QString path = StateFile();
    const QFileInfo info(path);
    if (!info.isFile() || info.size() > kMostBytes) {
      return;
    }
    const QSettings file(path, QSettings::IniFormat);
    for (const QString& key : file.allKeys()) {
      values->insert(key, file.value(key).toByteArray());
    }
  });
  if (thread && thread->Ended().WaitFor(kReadLimit)) {
    read_ = *values;
  }
}

template <typename Restorer>
bool WindowState::RestoreValue(const QString& key, Restorer restore) const {
  const QByteArray value = read_.value(key);
  const QByteArray state = value.mid(kSealBytes);
  return !state.isEmpty() && value.left(kSealBytes) == Seal(key, state) && restore(state);
}

bool WindowState::Restore(QWidget& window) const {
  RestoreValue(GeometryKeyOf(window),
               [&](const QByteArray& state) { return window.restoreGeometry(state); });
  for (const QTreeView* list : window.findChildren<QTreeView*>()) {
    RestoreValue(KeyOf(window, *list),
                 [&](const QByteArray& state) { return list->header()->restoreState(state); });
  }
  const auto splitters = window.findChildren<QSplitter*>();
  return std::count_if(splitters.begin(), splitters.end(), [&](QSplitter* splitter) {
           return RestoreValue(KeyOf(window, *splitter), [&](const QByteArray& state) {
             return splitter->restoreState(state);
           });
         }) == splitters.size();
}

void WindowState::TakeValue(const QString& key, const QByteArray& state) {
  taken_.insert(key, Seal(key, state) + state);
}

void WindowState::Take(const QWidget& window) {
  if (window.windowHandle() == nullptr) {
    return;
  }
  TakeValue(GeometryKeyOf(window), window.saveGeometry());
  for (const QTreeView* list : window.findChildren<QTreeView*>()) {
    TakeValue(KeyOf(window, *list), list->header()->saveState());
  }
  for (const QSplitter* splitter : window.findChildren<QSplitter*>()) {
    TakeValue(KeyOf(window, *splitter), splitter->saveState());
  }
}

void WindowState::BeginSave() {
  deadline_ = std::chrono::steady_clock::now() + kSaveLimit;
  saving_ = Thread::Start([values = std::exchange(taken_, {})] {
    if (const QString path = StateFile(); !path.isEmpty()) {
      QSettings file(path, QSettings::IniFormat);
      for (auto value = values.begin(); value != values.end(); ++value) {
        file.setValue(value.key(), value.value());
      }
    }
  });
}

bool WindowState::WaitForEnd() {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      deadline_ - std::chrono::steady_clock::now());
  return !saving_ || saving_->Ended().WaitFor(std::max(left, std::chrono::milliseconds(0)));
}

}  // namespace updown
