#include "demo/walker.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <QWindow>
#include <algorithm>
#include <cstdio>

namespace updown::demo {

namespace {

constexpr int kPollMs = 20;
constexpr int kModalLimitMs = 10000;

QString WithoutMnemonic(QString text) {
  // "文件移动到(&M)" stands for itself; "&Save" reads "Save".
  return text.remove(u'&');
}

}  // namespace

Walker::Walker(QString folder, QString prefix)
    : folder_(std::move(folder)), prefix_(std::move(prefix)) {}

void Walker::Step(const QString& text) {
  std::printf("  ok  %s\n", qUtf8Printable(text));
  std::fflush(stdout);
}

void Walker::Await(const QString& what, const std::function<bool()>& holds, int limitMs) {
  QElapsedTimer clock;
  clock.start();
  while (!holds()) {
    if (clock.elapsed() > limitMs) {
      Picture(QStringLiteral("failure"));
      throw WalkFailure(("not within " + QString::number(limitMs).toStdString() + " ms: ") +
                        what.toStdString());
    }
    QTest::qWait(kPollMs);
  }
}

void Walker::Expect(const QString& what, bool holds) {
  if (!holds) {
    Picture(QStringLiteral("failure"));
    throw WalkFailure("does not hold: " + what.toStdString());
  }
}

void Walker::Rest(int ms) { QTest::qWait(ms); }

QWidget* Walker::Find(const QString& name) {
  const QWidgetList widgets = QApplication::allWidgets();
  for (QWidget* widget : widgets) {
    if (widget->objectName() == name) {
      return widget;
    }
  }
  throw WalkFailure("there is no " + name.toStdString());
}

QAbstractItemView* Walker::FindView(const QString& name) { return Find<QAbstractItemView>(name); }

void Walker::Answer(const std::function<void()>& act, const Answering& answer) {
  AnswerEach(act, {answer});
}

void Walker::AnswerEach(const std::function<void()>& act, const std::vector<Answering>& answers) {
  std::size_t answered = 0;
  std::exception_ptr failure;
  QPointer<QWidget> last;
  QElapsedTimer clock;
  clock.start();
  QTimer poll;
  QObject::connect(&poll, &QTimer::timeout, &poll, [&] {
    QWidget* modal = QApplication::activeModalWidget();
    if (modal == nullptr || !modal->isVisible() || modal == last) {
      if (clock.elapsed() > kModalLimitMs) {
        poll.stop();
      }
      return;
    }
    last = modal;
    clock.restart();
    const Answering& answer = answers[answered++];
    if (answered == answers.size()) {
      poll.stop();
    }
    try {
      QTest::qWait(kPollMs);
      answer(modal);
    } catch (...) {
      poll.stop();
      failure = std::current_exception();
      if (last) {
        last->close();
      }
    }
  });
  poll.start(kPollMs);
  act();
  while (answered < answers.size() && poll.isActive()) {
    QTest::qWait(kPollMs);
  }
  if (failure) {
    std::rethrow_exception(failure);
  }
  Expect(QStringLiteral("a box came up"), answered == answers.size());
}

void Walker::WithMenu(const std::function<void()>& act, const std::function<void(QMenu*)>& look) {
  bool seen = false;
  std::exception_ptr failure;
  QElapsedTimer clock;
  clock.start();
  QTimer poll;
  QObject::connect(&poll, &QTimer::timeout, &poll, [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (menu == nullptr) {
      if (clock.elapsed() > kModalLimitMs) {
        poll.stop();
      }
      return;
    }
    poll.stop();
    seen = true;
    try {
      look(menu);
    } catch (...) {
      failure = std::current_exception();
    }
    if (menu->isVisible()) {
      menu->close();
    }
  });
  poll.start(kPollMs);
  act();
  while (!seen && poll.isActive()) {
    QTest::qWait(kPollMs);
  }
  if (failure) {
    std::rethrow_exception(failure);
  }
  Expect(QStringLiteral("a menu came up"), seen);
}

void Walker::Choose(const std::function<void()>& act, const QString& action) {
  WithMenu(act, [&](QMenu* menu) {
    const QList<QAction*> actions = menu->actions();
    for (QAction* item : actions) {
      if (item->objectName() == action) {
        Expect(action + QStringLiteral(" is enabled"), item->isEnabled());
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(item).center());
        return;
      }
    }
    throw WalkFailure("the menu has no " + action.toStdString());
  });
}

void Walker::PressButton(QWidget* box, const QString& text) {
  const QList<QAbstractButton*> buttons = box->findChildren<QAbstractButton*>();
  for (QAbstractButton* button : buttons) {
    if (WithoutMnemonic(button->text()) == WithoutMnemonic(text)) {
      QTest::mouseClick(button, Qt::LeftButton);
      return;
    }
  }
  throw WalkFailure("the box has no button " + text.toStdString());
}

void Walker::SaveAs(QWidget* dialog, const QString& path) {
  auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
  Expect(QStringLiteral("the Save dialog has a field for the name"), name != nullptr);
  name->setFocus();
  name->selectAll();
  QTest::keyClicks(name, path);
  QTest::keyClick(name, Qt::Key_Return);
}

void Walker::Click(QAbstractItemView* view, const QModelIndex& index) {
  view->scrollTo(index);
  QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
}

void Walker::DoubleClick(QAbstractItemView* view, const QModelIndex& index) {
  view->scrollTo(index);
  const QPoint at = view->visualRect(index).center();
  QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at);
  QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, at);
}

void Walker::MoveMouse(QWidget* widget, const QPoint& position) {
  QWidget* window = widget->window();
  QTest::mouseMove(window->windowHandle(), widget->mapTo(window, position));
  QTest::qWait(kPollMs);
}

void Walker::Key(QWidget* widget, Qt::Key key, Qt::KeyboardModifiers modifiers) {
  // Through the window, as a key comes from the desktop: that is the road that shortcuts watch.
  QWidget* window = widget->window();
  window->activateWindow();
  Expect(QStringLiteral("the window takes the keyboard"), QTest::qWaitForWindowActive(window));
  widget->setFocus();
  QTest::keyClick(window->windowHandle(), key, modifiers);
}

void Walker::Type(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(QGuiApplication::focusWindow(), key, modifiers);
}

void Walker::Type(const QString& text) {
  for (const QChar letter : text) {
    QTest::keyClick(QGuiApplication::focusWindow(), letter.toLatin1());
  }
}

int Walker::Rows(const QAbstractItemView* view) {
  return view->model()->rowCount(view->rootIndex());
}

QModelIndex Walker::Cell(const QAbstractItemView* view, int row, int column) {
  return view->model()->index(row, column, view->rootIndex());
}

QString Walker::CellText(QAbstractItemView* view, int row, int column) {
  return Cell(view, row, column).data().toString();
}

int Walker::RowOf(QAbstractItemView* view, int column, const QString& text) {
  for (int row = 0; row < Rows(view); ++row) {
    if (CellText(view, row, column) == text) {
      return row;
    }
  }
  return -1;
}

int Walker::ColumnOf(const QAbstractItemView* view, const QString& heading) {
  for (int column = 0; column < view->model()->columnCount(view->rootIndex()); ++column) {
    if (view->model()->headerData(column, Qt::Horizontal).toString() == heading) {
      return column;
    }
  }
  throw WalkFailure("no column " + heading.toStdString());
}

void Walker::Picture(const QString& name) {
  QTest::qWait(kPollMs);
  QRect all;
  QWidgetList shown;
  const QWidgetList windows = QApplication::topLevelWidgets();
  for (QWidget* window : windows) {
    if (window->isVisible() && !window->isMinimized() && !window->size().isEmpty()) {
      shown.append(window);
      all = all.united(window->frameGeometry());
    }
  }
  if (shown.isEmpty()) {
    return;
  }
  // The main window lies lowest; owned windows (boxes, menus, tips) stand over their owners.
  const auto height = [](const QWidget* window) {
    return window->parentWidget() != nullptr ? 2 : window->objectName() == u"mainWindow" ? 0 : 1;
  };
  std::stable_sort(shown.begin(), shown.end(),
                   [&](const QWidget* a, const QWidget* b) { return height(a) < height(b); });
  const qreal ratio = qApp->devicePixelRatio();
  QPixmap canvas(all.size() * ratio);
  canvas.setDevicePixelRatio(ratio);
  canvas.fill(QColor(0x3a, 0x6e, 0xa5));
  QPainter painter(&canvas);
  painter.setPen(QColor(0x20, 0x20, 0x20));
  for (QWidget* window : std::as_const(shown)) {
    const QRect place(window->pos() - all.topLeft(), window->size());
    painter.drawPixmap(place.topLeft(), window->grab());
    painter.drawRect(place.adjusted(-1, -1, 0, 0));  // this platform draws no frames
  }
  painter.end();
  const QString file = QStringLiteral("%1/%2-%3-%4.png")
                           .arg(folder_, prefix_)
                           .arg(++pictures_, 2, 10, QLatin1Char('0'))
                           .arg(name);
  if (!canvas.save(file)) {
    throw WalkFailure("no picture " + file.toStdString());
  }
}

}  // namespace updown::demo
