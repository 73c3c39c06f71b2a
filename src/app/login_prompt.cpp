#include "app/login_prompt.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "localdata/file_names.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"
#include "widgets/icons.h"

namespace updown {
namespace {

constexpr int kFieldWidth = 260;
// What the session keeps of either text, in bytes and so at most in characters.
constexpr int kFieldCharacters = static_cast<int>(kPathCapacity) - 1;

QLineEdit* AddField(QFormLayout& layout, const QString& label, const QString& objectName) {
  auto* field = new QLineEdit;
  field->setObjectName(objectName);
  field->setMaxLength(kFieldCharacters);
  field->setMinimumWidth(kFieldWidth);
  layout.addRow(label, field);
  return field;
}

void AddNotice(QFormLayout& layout) {
  auto* notice = new QLabel(Text(StringId::LoginRefused));
  notice->setObjectName(u"loginNotice"_qs);
  notice->setWordWrap(true);
  layout.addRow(notice);
}

void AddButtons(QFormLayout& layout, QDialog& dialog) {
  auto* buttons = new QDialogButtonBox;
  buttons->addButton(Text(StringId::Ok), QDialogButtonBox::AcceptRole)->setDefault(true);
  buttons->addButton(Text(StringId::Cancel), QDialogButtonBox::RejectRole);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  layout.addRow(buttons);
}

}  // namespace

void AskForLogin(QWidget* owner, const LoginRequest& request, LoginAsked answered) {
  auto* dialog = new QDialog(owner);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setObjectName(u"loginDialog"_qs);
  dialog->setWindowTitle(Text(StringId::LoginTitle));
  dialog->setWindowIcon(LoadIcon(Icon::Program));
  auto* layout = new QFormLayout(dialog);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  if (request.refused) {
    AddNotice(*layout);
  }
  QLineEdit* user = AddField(*layout, Text(StringId::LoginUser), u"loginUser"_qs);
  QLineEdit* password = AddField(*layout, Text(StringId::LoginPassword), u"loginPassword"_qs);
  password->setEchoMode(QLineEdit::Password);
  user->setText(ToQString(request.user));
  if (!request.user.empty()) {
    password->setFocus();
  }
  AddButtons(*layout, *dialog);
  QObject::connect(
      dialog, &QDialog::finished, dialog,
      [user, password, answered = std::move(answered)](int result) {
        answered(result == QDialog::Accepted
                     ? std::optional<LoginAnswer>({ToWide(user->text()), ToWide(password->text())})
                     : std::nullopt);
      });
  dialog->open();
}

}  // namespace updown
