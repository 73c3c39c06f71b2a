#pragma once

#include <QMenu>
#include <QPoint>
#include <QString>
#include <QWidget>
#include <functional>
#include <stdexcept>
#include <vector>

class QAbstractItemView;
class QModelIndex;

namespace updown::demo {

// Ends a leg: what was expected did not happen.
class WalkFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The hands and eyes of the walk: real mouse and key events into the real windows, waits with a
// bound, and pictures. Main thread only.
class Walker {
 public:
  // Pictures go to `folder`, their names begin with `prefix`.
  Walker(QString folder, QString prefix);

  // One line for one thing that was seen to hold.
  void Step(const QString& text);

  // Lets the program work until `holds`; a WalkFailure that names `what` after `limitMs`.
  void Await(const QString& what, const std::function<bool()>& holds, int limitMs = 15000);
  void Expect(const QString& what, bool holds);
  void Rest(int ms);

  // A widget of the program by its object name; a WalkFailure if there is none.
  QWidget* Find(const QString& name);
  template <typename T>
  T* Find(const QString& name) {
    T* widget = qobject_cast<T*>(Find(name));
    Expect(name + QStringLiteral(" has the expected class"), widget != nullptr);
    return widget;
  }
  QAbstractItemView* FindView(const QString& name);

  // Runs `act`, which brings up a modal window, and `answer` on that window once it shows; with
  // several answers, each on a window of its own, one behind the other.
  using Answering = std::function<void(QWidget*)>;
  void Answer(const std::function<void()>& act, const Answering& answer);
  void AnswerEach(const std::function<void()>& act, const std::vector<Answering>& answers);
  // The same for a context menu, of which it chooses the action with this object name.
  void Choose(const std::function<void()>& act, const QString& action);
  void WithMenu(const std::function<void()>& act, const std::function<void(QMenu*)>& look);

  // Answers for boxes and the Save dialog.
  void PressButton(QWidget* box, const QString& text);
  void SaveAs(QWidget* dialog, const QString& path);

  void Click(QAbstractItemView* view, const QModelIndex& index);
  void DoubleClick(QAbstractItemView* view, const QModelIndex& index);
  void MoveMouse(QWidget* widget, const QPoint& position);
  void Key(QWidget* widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  // To whatever has the focus, as somebody without a mouse types.
  static void Type(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  static void Type(const QString& text);

  // Below the view's root.
  static int Rows(const QAbstractItemView* view);
  static QModelIndex Cell(const QAbstractItemView* view, int row, int column);
  QString CellText(QAbstractItemView* view, int row, int column);
  int RowOf(QAbstractItemView* view, int column, const QString& text);  // -1 if there is none
  int ColumnOf(const QAbstractItemView* view, const QString& heading);

  // All windows that show, each where it stands, in one picture.
  void Picture(const QString& name);

 private:
  QString folder_;
  QString prefix_;
  int pictures_ = 0;
};

}  // namespace updown::demo
