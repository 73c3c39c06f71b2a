#include "packages/package_commands.h"

#include "engine/result_texts.h"
#include "localdata/file_names.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"
#include "widgets/message_boxes.h"

namespace updown {

PackageCommands::PackageCommands(PackageArea& area, PackageDownloads& downloads, QWidget* owner)
    : QObject(owner), area_(area), downloads_(downloads), owner_(owner) {
  // Later: a box in the middle of an edit would take the editor's focus, and end it twice.
  connect(&area_, &PackageArea::RenameWanted, this, &PackageCommands::RenamePackage,
          Qt::QueuedConnection);
  connect(&area_, &PackageArea::ChangeFailed, this, &PackageCommands::Report);
}

void PackageCommands::DeletePackage(const QString& name) {
  const QPointer<PackageCommands> self(this);
  if (Confirm(owner_, StringId::ConfirmDelete) && self) {
    area_.RemovePackage(ToUtf8(name));
  }
}

void PackageCommands::RenamePackage(const QString& name, const QString& newName) {
  const std::string wanted = ToUtf8(newName);
  if (!FitsPath("/" + wanted)) {
    Report(static_cast<std::uint32_t>(StringId::InvalidParameters));
    return;
  }
  if (!IsSafeName(wanted)) {
    Report(static_cast<std::uint32_t>(StringId::BadCharacters));
    return;
  }
  const QPointer<PackageCommands> self(this);
  const QString question = Text(StringId::ConfirmRenameAway).arg(newName);
  if (IsPackageName(wanted) || (ConfirmLoss(owner_, question) && self)) {
    area_.Rename(ToUtf8(name), wanted);
  }
}

// A name that could lead out of its folder is not deleted by it.
void PackageCommands::DeleteFile(const AttachmentRecord& file) {
  const QPointer<PackageCommands> self(this);
  if (!Confirm(owner_, StringId::ConfirmDelete) || !self) {
    return;
  }
  if (!IsSafeName(file.Name())) {
    Report(static_cast<std::uint32_t>(StringId::BadCharacters));
  } else if (!FitsPath(file.Path())) {
    Report(static_cast<std::uint32_t>(StringId::InvalidParameters));
  } else {
    area_.RemoveFile(file.package, file.Name());
  }
}

void PackageCommands::SaveFile(const AttachmentRecord& file) {
  const QPointer<PackageCommands> self(this);
  if (Saved(file) && self) {
    Q_EMIT TransfersWanted();
  }
}

// True if the user has been answered: by a box, or by a task that was made.
bool PackageCommands::Saved(const AttachmentRecord& file) {
  if (downloads_.StreamLimitReached()) {
    ShowNotice(owner_, StringId::StreamLimit);
    return true;
  }
  const std::u16string localName(LastComponent(Utf8ToWideName(file.Name())));
  if (localName.empty() || !FitsPath(file.Path())) {
    Report(static_cast<std::uint32_t>(localName.empty() ? StringId::BadCharacters
                                                        : StringId::InvalidParameters));
    return true;
  }
  const std::string path = WideToUtf8Name(Utf8ToWideName(file.Path()));
  if (downloads_.IsDuplicate(path)) {
    ShowNotice(owner_, StringId::DuplicateTask);
    return true;
  }
  return downloads_.SaveFile(WideToUtf8Name(localName), path);
}

void PackageCommands::Report(std::uint32_t code, const QString& name) {
  QString text = ToQString(ResultBoxText(code));
  if (!name.isEmpty()) {
    text += QStringLiteral("\n") + name;
  }
  // No caption: a blank, since an empty one would be replaced by the program's file name.
  TellBox(owner_, text, QStringLiteral(" "), BoxIcon::Exclamation);
}

}  // namespace updown
