#pragma once

namespace updown {

// Completes what the toolkit tells screen readers of ItemView, of splitters, whose handles are
// separators named after what they divide, and of NoticeBar, which is announced. Once for the
// process; the constructors of these classes call it.
void InstallAccessibility();

}  // namespace updown
