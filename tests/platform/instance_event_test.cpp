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
  int pipeEnds[2];
  ASSERT_EQ(pipe(pipeEnds), 0);
  const pid_t child = fork();
  if (child == 0) {
    const InstanceEvent::Result held = InstanceEvent::CreateOrSignal(name);
    const char outcome = held.outcome == Outcome::Created ? 'c' : 'x';
    if (write(pipeEnds[1], &outcome, 1) == 1) {
      pause();
    }
    _exit(1);
  }
  char outcome = 0;
  ASSERT_EQ(read(pipeEnds[0], &outcome, 1), 1);
  EXPECT_EQ(outcome, 'c');
  EXPECT_EQ(InstanceEvent::CreateOrSignal(name).outcome, Outcome::AlreadyExists);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(InstanceEvent::CreateOrSignal(name).outcome, Outcome::Created);
  close(pipeEnds[0]);
  close(pipeEnds[1]);
}

TEST(InstanceEvent, ANameMustFitAnAddress) {
  EXPECT_EQ(InstanceEvent::CreateOrSignal(std::string(107, 'x')).outcome, Outcome::Created);
  EXPECT_EQ(InstanceEvent::CreateOrSignal(std::string(108, 'x')).outcome, Outcome::Failed);
  EXPECT_EQ(InstanceEvent::CreateOrSignal("").outcome, Outcome::Failed);
}

}  // namespace
}  // namespace updown
