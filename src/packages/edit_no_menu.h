#pragma once

#include <QPlainTextEdit>

namespace updown {

// The read-only notes: a text edit without a context menu. Tab leaves it.
class CEditNoMenu : public QPlainTextEdit {
  Q_OBJECT

 public:
  explicit CEditNoMenu(QWidget* parent = nullptr);

 protected:
  void contextMenuEvent(QContextMenuEvent* event) override;
};

}  // namespace updown
