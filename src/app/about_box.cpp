#include "app/about_box.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "resources/qt/texts.h"
#include "resources/string_id.h"
#include "widgets/icons.h"

namespace updown {
namespace {

constexpr int kPictureSize = 48;
constexpr int kMargin = 16;
constexpr int kTextWidth = 280;  // so that the title, which is the same text, is not cut

}  // namespace

void ShowAboutBox(QWidget* owner) {
  QDialog dialog(owner);
  dialog.setObjectName(u"aboutBox"_qs);
  dialog.setWindowTitle(Text(StringId::AboutText));
  auto* layout = new QGridLayout(&dialog);
  layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  layout->setSpacing(kMargin);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  layout->setColumnMinimumWidth(1, kTextWidth);

  auto* picture = new QLabel;
  picture->setPixmap(LoadIcon(Icon::Program)
                         .pixmap(QSize(kPictureSize, kPictureSize), dialog.devicePixelRatioF()));
  layout->addWidget(picture, 0, 0);
  layout->addWidget(new QLabel(Text(StringId::AboutText)), 0, 1);

  auto* buttons = new QDialogButtonBox;
  buttons->addButton(Text(StringId::Ok), QDialogButtonBox::AcceptRole)->setDefault(true);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  layout->addWidget(buttons, 1, 0, 1, 2);
  dialog.exec();
}

}  // namespace updown
