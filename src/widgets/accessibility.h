#pragma once

namespace updown {

// Completes what the toolkit tells screen readers of ItemView, of splitters, whose handles are
// separators named after what they divide, and of NoticeBar, which is announced. To be called once
// the QApplication is there and before any of them is asked for.
void InstallAccessibility();

}  // namespace updown
