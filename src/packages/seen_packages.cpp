#include "packages/seen_packages.h"

#include <QByteArray>
#include <QFile>
#include <algorithm>
#include <chrono>
#include <set>
#include <utility>

#include "engine/package.h"
#include "platform/file_replacement.h"
#include "platform/qt/text.h"

// The file: kMark, then the names with a line end behind each, as qCompress packs them (the length
// of the text in four bytes, the highest one first, and a zlib stream, which has a checksum).

namespace updown {
namespace {

constexpr char kMark[] = "seen 1\n";
constexpr qint64 kMostBytes = 8 << 20;  // packed; and unpacked
constexpr std::chrono::seconds kPause{20};
constexpr std::chrono::milliseconds kEndLimit{500};

std::optional<std::unordered_set<std::string>> Unpack(QByteArray bytes) {
  constexpr qsizetype kLengthBytes = 4;
  if (!bytes.startsWith(kMark)) {
    return std::nullopt;
  }
  bytes.remove(0, qsizetype{sizeof kMark} - 1);
  quint32 length = 0;
  for (const char byte : bytes.first(std::min(bytes.size(), kLengthBytes))) {
    length = length << 8U | static_cast<quint8>(byte);
  }
  if (bytes.size() <= kLengthBytes || length > kMostBytes) {
    return std::nullopt;
  }
  const QByteArray text = qUncompress(bytes);
  std::unordered_set<std::string> names;
  for (const QByteArray& line : text.split('\n')) {
    if (IsPackageName(line.toStdString())) {
      names.insert(line.toStdString());
    }
  }
  // What is damaged unpacks to nothing.
  return text.isEmpty() && length > 0 ? std::nullopt : std::optional(std::move(names));
}

void Store(const std::string& path, const std::unordered_set<std::string>& names) {
  QByteArray text;
  for (const std::string& name : std::set<std::string>(names.begin(), names.end())) {
    text.append(name.data(), static_cast<qsizetype>(name.size())).append('\n');
  }
  const QByteArray bytes = kMark + qCompress(text);
  FileReplacement file(path);
  file.Write({reinterpret_cast<const std::uint8_t*>(bytes.data()),
              static_cast<std::size_t>(bytes.size())});
  file.Commit();  // what fails is stored with the next change, or seen once more
}

}  // namespace

SeenPackages::SeenPackages(std::string path) : path_(std::move(path)) {
  pause_.setSingleShot(true);
  pause_.setInterval(kPause);
  QObject::connect(&pause_, &QTimer::timeout, &pause_, [this] { Write(); });
  QFile file(FromUtf8(path_));
  if (!path_.empty() && file.open(QIODevice::ReadOnly)) {
    names_ = Unpack(file.read(kMostBytes));
  }
}

SeenPackages::~SeenPackages() {
  if (pause_.isActive()) {
    if (writer_) {
      writer_->Ended().WaitFor(kEndLimit / 2);
    }
    Write();
  }
  if (writer_) {
    writer_->Ended().WaitFor(kEndLimit / 2);
  }
}

bool SeenPackages::IsNew(const std::string& package) const {
  return names_ && !names_->contains(package);
}

bool SeenPackages::MarkSeen(const std::string& package) {
  const bool marked = names_ && names_->insert(package).second;
  if (marked) {
    Changed();
  }
  return marked;
}

void SeenPackages::FollowRename(const std::string& package, const std::string& newName) {
  if (names_ && names_->erase(package) != 0) {
    names_->insert(newName);
    Changed();
  }
}

void SeenPackages::FollowListing(const std::unordered_set<std::string>& listed) {
  if (!names_) {
    names_ = listed;
    Changed();
  } else if (std::erase_if(*names_,
                           [&listed](const auto& name) { return !listed.contains(name); }) != 0) {
    Changed();
  }
}

void SeenPackages::Changed() {
  if (!path_.empty() && !pause_.isActive()) {
    pause_.start();
  }
}

void SeenPackages::Write() {
  if (writer_ && !writer_->Ended().IsSet()) {
    pause_.start();  // one writer at a time
    return;
  }
  pause_.stop();
  writer_ = Thread::Start([path = path_, names = *names_] { Store(path, names); });
}

}  // namespace updown
