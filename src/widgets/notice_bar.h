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
  enum class Source { Launch, TaskList, Service };

  explicit NoticeBar(QWidget* parent = nullptr);

  void SetNotice(Source source, const QString& text);  // replaces the source's last one
  void ClearNotice(Source source);

 Q_SIGNALS:
  void TryAgain();  // offered with the service's notice, which goes then

 private:
  void Refresh();

  QLabel* const text_;
  QToolButton* const tryAgain_;
  QToolButton* const close_;
  QMap<Source, QString> notices_;
};

}  // namespace updown
