#pragma once

#include <QAction>
#include <QDialog>
#include <QKeySequence>
#include <QList>
#include <QTextBrowser>
#include <utility>

namespace updown {

// Keys of one place of the program, for the help page.
struct HelpKeys {
  // Of the commands that have a shortcut, with their texts.
  HelpKeys(QString where, const QList<QAction*>& actions);

  void Add(const QList<QKeySequence>& keys, const QString& what);

  QString place;
  QList<std::pair<QString, QString>> rows;  // the keys as the platform writes them, what they do
};

// The help page: what the program does, its keys, its version; the about box is reached from here.
// Non-modal; Escape and Ctrl+W close it. Object names: "helpWindow", "helpPage", "helpAbout".
class HelpWindow : public QDialog {
  Q_OBJECT

 public:
  explicit HelpWindow(QWidget* owner);

  // Shows the window, in front, with these keys.
  void Open(const QList<HelpKeys>& keys);

 private:
  QTextBrowser* const page_;
};

}  // namespace updown
