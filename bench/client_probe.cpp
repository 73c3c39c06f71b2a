// The client with eyes: the whole program, started as a parent application starts it, that prints a
// line when the list has rows ("listed") and when each row on the screen has its text ("texts"),
// and does what it is told on its standard input:
//
//   refresh                    as the key F5
//   save REMOTE LOCAL          Save up to the dialog's OK, and "saving" just before that
//   written                    prints "written HEADERS OTHERS", bytes since the start
//
// Ends with its input.
#include <unistd.h>

#include <QDialog>
#include <QLineEdit>
#include <QPointer>
#include <QSocketNotifier>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <algorithm>
#include <array>
#include <cstdio>
#include <sstream>
#include <string>

#include "app/application.h"
#include "bench/written_bytes.h"

namespace updown::bench {
namespace {

constexpr int kLook = 2;  // ms between two looks at the list

void Say(const std::string& line) {
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

// An empty package has no text ever; the areas that are measured have none in the first rows.
bool RowsOnScreenHaveTexts(const QTreeView& list) {
  const int bottom = list.viewport()->height();
  for (QModelIndex row = list.indexAt({1, 1}); row.isValid() && list.visualRect(row).top() < bottom;
       row = list.indexBelow(row)) {
    if (row.siblingAtColumn(package_column::kFrom).data().toString().isEmpty()) {
      return false;
    }
  }
  return true;
}

class Probe {
 public:
  explicit Probe(MainWindow& window)
      : window_(window),
        list_(*window.findChild<QTreeView*>(QStringLiteral("packageList"))),
        input_(STDIN_FILENO, QSocketNotifier::Read) {
    Say("window");
    QObject::connect(&look_, &QTimer::timeout, &look_, [this] { Look(); });
    look_.start(kLook);
    QObject::connect(&input_, &QSocketNotifier::activated, &input_, [this] { Read(); });
  }

 private:
  void Look() {
    if (list_.model()->rowCount(list_.rootIndex()) == 0) {
      return;
    }
    if (!listed_) {
      listed_ = true;
      Say("listed");
    }
    if (RowsOnScreenHaveTexts(list_)) {
      look_.stop();
      Say("texts");
    }
  }

  void Read() {
    std::array<char, 4096> bytes{};
    const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count <= 0) {
      input_.setEnabled(false);
      window_.close();
      return;
    }
    said_.append(bytes.data(), static_cast<std::size_t>(count));
    for (std::size_t end; (end = said_.find('\n')) != std::string::npos;) {
      const std::string line = said_.substr(0, end);
      said_.erase(0, end + 1);
      Obey(line);
    }
  }

  void Obey(const std::string& line) {
    std::istringstream words(line);
    std::string what, remote, local;
    words >> what >> remote >> local;
    if (what == "refresh") {
      QTest::keyClick(&list_, Qt::Key_F5);
    } else if (what == "save") {
      Save(remote, local);
    } else if (what == "written") {
      const WrittenBytes bytes = BytesWritten();
      Say("written " + std::to_string(bytes.headers) + " " + std::to_string(bytes.others));
    }
  }

  void Save(const std::string& remote, const std::string& local) {
    QTimer waiting;
    QObject::connect(&waiting, &QTimer::timeout, &waiting, [&] {
      const QPointer<QWidget> dialog = QApplication::activeModalWidget();
      auto* const name =
          dialog ? dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")) : nullptr;
      if (name != nullptr) {
        waiting.stop();
        name->setText(QString::fromStdString(local));
        Say("saving");
        QMetaObject::invokeMethod(dialog, "accept");
      }
    });
    waiting.start(kLook);
    window_.AllDownloads().SaveFile(remote.substr(remote.rfind('/') + 1), remote);
  }

  MainWindow& window_;
  QTreeView& list_;
  QTimer look_;
  QSocketNotifier input_;
  std::string said_;
  bool listed_ = false;
};

}  // namespace
}  // namespace updown::bench

int main(int argc, char** argv) {
  using namespace updown::bench;
  CountWrittenBytes();
  std::optional<Probe> probe;
  const int status = updown::RunUpDown(
      argc, argv, [&probe](updown::Application& app) { probe.emplace(*app.Window()); });
  std::_Exit(status);  // the probe's window is gone
}
