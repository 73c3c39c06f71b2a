#pragma once

#include <QFrame>
#include <QLabel>
#include <QMap>
#include <QToolButton>

namespace updown {

// A line above the panes that tells what is wrong without asking for an answer; hidden while there
// is nothing to tell. Each source has one notice at a time.
class NoticeBar : public QFrame {
  Q_OBJECT

 public:
  enum class Source { Launch, TaskList };

  explicit NoticeBar(QWidget* parent = nullptr);

  void SetNotice(Source source, const QString& text);  // replaces the source's last one
  void ClearNotice(Source source);

 private:
  void Refresh();

  QLabel* const text_;
  QToolButton* const close_;
  QMap<Source, QString> notices_;
};

}  // namespace updown
