#include "widgets/message_boxes.h"

#include <QGridLayout>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSpacerItem>

#include "resources/qt/texts.h"

namespace updown {
namespace {

constexpr int kLeastWidth = 300;

QMessageBox::Icon QtIcon(BoxIcon icon) {
  switch (icon) {
    case BoxIcon::Exclamation:
      return QMessageBox::Warning;
    case BoxIcon::Stop:
      return QMessageBox::Critical;
    case BoxIcon::Question:
      return QMessageBox::Question;
    case BoxIcon::Information:
      break;
  }
  return QMessageBox::Information;
}

QMessageBox* MakeBox(QWidget* owner, const QString& text, const QString& caption, BoxIcon icon,
                     QMessageBox::StandardButtons buttons) {
  auto* box = new QMessageBox(QtIcon(icon), caption, text, buttons, owner);
  box->setObjectName(QStringLiteral("messageBox"));
  box->setTextFormat(Qt::PlainText);
  box->setDefaultButton(QMessageBox::Ok);
  box->button(QMessageBox::Ok)->setText(Text(StringId::Ok));
  if (QAbstractButton* cancel = box->button(QMessageBox::Cancel)) {
    cancel->setText(Text(StringId::Cancel));
    box->setEscapeButton(QMessageBox::Cancel);
  }
  if (auto* grid = qobject_cast<QGridLayout*>(box->layout())) {
    // Else a short question makes a box in which the title is cut.
    grid->addItem(new QSpacerItem(kLeastWidth, 0), grid->rowCount(), 0, 1, grid->columnCount());
  }
  return box;
}

// The button pressed; NoButton if the owner went while the box stood, and the box with it.
int RunBox(const QPointer<QMessageBox>& box) {
  const int pressed = box->exec();
  if (!box) {
    return QMessageBox::NoButton;
  }
  delete box;
  return pressed;
}

}  // namespace

void ShowBox(QWidget* owner, const QString& text, const QString& caption, BoxIcon icon) {
  RunBox(MakeBox(owner, text, caption, icon, QMessageBox::Ok));
}

QMessageBox* TellBox(QWidget* owner, const QString& text, const QString& caption, BoxIcon icon) {
  QMessageBox* box = MakeBox(owner, text, caption, icon, QMessageBox::Ok);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->open();
  return box;
}

void ShowNotice(QWidget* owner, StringId text) {
  ShowBox(owner, Text(text), Text(StringId::ProgramTitle), BoxIcon::Information);
}

bool Confirm(QWidget* owner, const QString& question, const QString& acceptText) {
  QMessageBox* box = MakeBox(owner, question, Text(StringId::ProgramTitle), BoxIcon::Question,
                             QMessageBox::Ok | QMessageBox::Cancel);
  box->button(QMessageBox::Ok)->setText(acceptText);
  box->setDefaultButton(QMessageBox::Cancel);
  return RunBox(box) == QMessageBox::Ok;
}

}  // namespace updown
