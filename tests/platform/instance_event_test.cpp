#include "platform/instance_event.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace updown {
namespace {

using Outcome = InstanceEvent::Outcome;

std::string NameOfThisTest(const char* what) {
  return "Global\\" + std::string(what) + std::to_string(getpid());
}

TEST(InstanceEvent, TheSecondOneRaisesTheFirst) {
  const std::string name = NameOfThisTest("raise");
  const InstanceEvent::Result first = InstanceEvent::CreateOrSignal(name);
  ASSERT_EQ(first.outcome, Outcome::Created);
  EXPECT_FALSE(first.event->TestAndReset());
  for (int i = 0; i < 100; ++i) {  // more than a socket's queue holds
    EXPECT_EQ(InstanceEvent::CreateOrSignal(name).outcome, Outcome::AlreadyExists);
  }
  EXPECT_TRUE(first.event->TestAndReset());
  EXPECT_FALSE(first.event->TestAndReset());
  EXPECT_EQ(InstanceEvent::CreateOrSignal(name + "x").outcome, Outcome::Created);
}

TEST(InstanceEvent, AKilledHolderFreesTheName) {
  const std::string name = NameOfThisTest("kill");
  const pid_t child = fork();
  if (child == 0) {
    const InstanceEvent::Result held = InstanceEvent::CreateOrSignal(name);
    raise(held.outcome == Outcome::Created ? SIGSTOP : SIGKILL);
    _exit(1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, WUNTRACED), child);
  ASSERT_TRUE(WIFSTOPPED(status));
  EXPECT_EQ(InstanceEvent::CreateOrSignal(name).outcome, Outcome::AlreadyExists);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(InstanceEvent::CreateOrSignal(name).outcome, Outcome::Created);
}

TEST(InstanceEvent, ANameMustFitAnAddress) {
  EXPECT_EQ(InstanceEvent::CreateOrSignal(std::string(107, 'x')).outcome, Outcome::Created);
  EXPECT_EQ(InstanceEvent::CreateOrSignal(std::string(108, 'x')).outcome, Outcome::Failed);
  EXPECT_EQ(InstanceEvent::CreateOrSignal("").outcome, Outcome::Failed);
}

}  // namespace
}  // namespace updown
