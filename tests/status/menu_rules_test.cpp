#include "status/menu_rules.h"

#include <gtest/gtest.h>

#include <string>

namespace updown {
namespace {

// One letter for each command that is on: Pause, Resume, Redo, Delete, File, folder (o), Move.
std::string Enabled(TransferState state, bool running, bool bytesMoved) {
  const std::string letters = "PRdDFoM";
  std::string enabled;
  const EnabledCommands commands = CommandsFor(state, running, bytesMoved);
  for (std::size_t index = 0; index < commands.size(); ++index) {
    if (commands[index]) {
      enabled += letters[index];
    }
  }
  return enabled;
}

TEST(MenuRules, OffersWhatAStateAllows) {
  using State = TransferState;
  for (const bool other : {false, true}) {
    EXPECT_EQ(Enabled(State::Queued, other, false), "");
    EXPECT_EQ(Enabled(State::Queued, other, true), "Po");
    EXPECT_EQ(Enabled(State::Stopped, true, other), "o");
    EXPECT_EQ(Enabled(State::Stopped, false, other), "RdDo");
    EXPECT_EQ(Enabled(State::Finished, other, true), "dDFoM");
    EXPECT_EQ(Enabled(State::Failed, other, false), "RdDo");
    EXPECT_EQ(Enabled(static_cast<State>(9), other, true), "D");
  }
}

}  // namespace
}  // namespace updown
