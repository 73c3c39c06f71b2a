#pragma once

namespace updown {

// Edges in device-independent pixels; right and bottom stand behind the last one.
struct Box {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  bool operator==(const Box&) const = default;
};

// Where the controls of the form stand. Edges can cross in a very small form.
struct FormLayout {
  Box header;
  Box noteGroup;
  Box notes;
  Box attachmentGroup;  // this and the next one only for a complete package
  Box attachments;
};

// `lineHeight` is that of one line of the header. A package that is not complete has no attachments
// on show, and its notes reach down to the bottom.
FormLayout LayOutForm(int width, int height, int lineHeight, bool complete);

}  // namespace updown
