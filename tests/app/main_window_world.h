#pragma once

#include <gtest/gtest.h>

#include <QTest>
#include <memory>
#include <optional>

#include "app/main_window.h"
#include "tests/app/served_launch.h"

namespace updown {

// The main window in this process, before a service of its own.
class MainWindowWorld : public ::testing::Test {
 protected:
  void SetUp() override { Start(); }

  // Another launch, with another area and nothing stored.
  void Start() {
    window_.reset();
    served_.emplace();
    event_ = InstanceEvent::CreateOrSignal(EventName()).event;
    ASSERT_TRUE(event_);
  }
  void Open() {
    window_ = std::make_unique<MainWindow>(served_->Launch(), service_, *event_);
    window_->show();
  }
  bool Listed() {
    const PackageArea& area = window_->Area();
    return Await([&area] { return area.rowCount(area.Root()) == 4; });
  }
  template <typename Condition>
  static bool Await(Condition condition) {
    return QTest::qWaitFor(condition, kPatienceMs);
  }
  std::string EventName() const { return "app_test " + served_->DataFolder(); }

  std::optional<ServedLaunch> served_;
  FileService service_;
  std::unique_ptr<InstanceEvent> event_;
  std::unique_ptr<MainWindow> window_;
};

}  // namespace updown
