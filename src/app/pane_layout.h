#pragma once

namespace updown {

// Heights of package list and form in a frame of `height`: 8 and 13 parts of 21, rounded down. From
// the first layout on the list keeps its height and the form takes what is left.
struct PaneHeights {
  int list = 0;
  int form = 0;
};
constexpr PaneHeights PaneHeightsOf(int height) { return {height * 8 / 21, height * 13 / 21}; }

}  // namespace updown
