#include "packages/form_layout.h"

#include <algorithm>

namespace updown {
namespace {

constexpr int kHeaderLines = 4;
constexpr int kLeastGap = 5;
constexpr int kLeastCaption = 13;

}  // namespace

FormLayout LayOutForm(int width, int height, int lineHeight, bool complete) {
  const int margin = width / 100;
  const int right = width - margin;
  const int bottom = height - margin;
  const int gap = std::max(height / 70, kLeastGap);
  const int caption = std::max(lineHeight + gap, kLeastCaption);
  const int headerBottom = gap + kHeaderLines * lineHeight + margin;
  const int innerLeft = std::max(margin, kLeastGap) + margin;
  const int innerRight = right - std::max(margin, kLeastGap);

  FormLayout layout;
  layout.header = {innerLeft, margin, innerRight, headerBottom};
  const int noteBottom = complete ? (headerBottom - gap + bottom) / 2 : bottom;
  layout.noteGroup = {margin, headerBottom, right, noteBottom};
  layout.notes = {innerLeft, headerBottom + caption, innerRight, noteBottom - lineHeight};
  if (complete) {
    const int top = (headerBottom + gap + bottom) / 2;
    layout.attachmentGroup = {margin, top, right, bottom};
    layout.attachments = {innerLeft, top + caption, innerRight, bottom - lineHeight};
  }
  return layout;
}

}  // namespace updown
