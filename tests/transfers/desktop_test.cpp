#include "transfers/desktop.h"

#include <gtest/gtest.h>

#include <QTest>
#include <filesystem>

#include "platform/environment.h"
#include "platform/qt/text.h"
#include "tests/support/temporary_folder.h"

namespace updown::test {
namespace {

// A desktop whose opener writes down what it gets, and which has no file manager to ask.
TEST(SystemDesktop, OpensWithoutTellingWhoThisLaunchIs) {
  const TemporaryFolder disk;
  const std::string opener = disk.File("xdg-open");
  WriteFile(opener,
            "#!/bin/bash\n(echo \"$1\"; env) > \"$SEEN.part\"; mv \"$SEEN.part\" \"$SEEN\"\n");
  std::filesystem::permissions(opener, std::filesystem::perms::owner_all);
  const std::string seen = disk.File("seen");
  qputenv("SEEN", QByteArray::fromStdString(seen));
  qputenv("PATH", QByteArray::fromStdString(disk.Path() + ":/usr/bin:/bin"));
  qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
  qputenv(kVariableRelayClientId, "launch variable");
  qputenv(kVariableIdentity1, "launch variable");

  const Desktop desktop = SystemDesktop();
  const auto opened = [&](const auto& open) {
    std::filesystem::remove(seen);
    open(FromUtf8(disk.File("a file#1.txt")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(seen); }, 20000));
    return ReadFile(seen);
  };
  const std::string file = opened(desktop.openFile);
  EXPECT_TRUE(file.starts_with("file://" + disk.Path() + "/a%20file%231.txt\n")) << file;
  EXPECT_EQ(file.find("launch variable"), std::string::npos);
  EXPECT_NE(file.find("SEEN="), std::string::npos);
  EXPECT_TRUE(opened(desktop.showInFolder).starts_with("file://" + disk.Path() + "\n"));
}

}  // namespace
}  // namespace updown::test
