#include "packages/package_commands.h"

#include <QStringList>

#include "engine/result_texts.h"
#include "localdata/file_names.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "widgets/message_boxes.h"

namespace updown {
namespace {

constexpr int kLongestSubject = 60;
constexpr int kMostLines = 12;  // of a box that tells what has failed

// As the list shows it and as the tree does.
QString Title(const PackageArea& area, const std::string& name) {
  QString subject = area.IndexOf(name, package_column::kSubject).data().toString().simplified();
  if (subject.size() > kLongestSubject) {
    subject = subject.left(kLongestSubject) + u'…';
  }
  const QString folder = FromUtf8(name);
  return subject.isEmpty() ? folder : subject + u" ("_qs + folder + u')';
}

void AddLine(QMessageBox& box, const QString& line) {
  const QStringList lines = box.text().split(u'\n');
  if (line.isEmpty() || lines.contains(line) || lines.size() > kMostLines) {
    return;
  }
  box.setText(box.text() + u'\n' + (lines.size() < kMostLines ? line : u"…"_qs));
}

}  // namespace

QAction* MakeAction(QObject* owner, StringId text, const QString& name,
                    const QList<QKeySequence>& keys) {
  auto* const action = new QAction(Text(text), owner);
  action->setObjectName(name);
  action->setShortcuts(keys);
  action->setShortcutContext(Qt::WidgetShortcut);
  action->setAutoRepeat(false);
  return action;
}

PackageCommands::PackageCommands(PackageArea& area, PackageDownloads& downloads, QWidget* owner)
    : QObject(owner),
      area_(area),
      downloads_(downloads),
      owner_(owner),
      saveAll_(MakeAction(this, StringId::SaveAll, u"saveAll"_qs, {})) {
  // Later: a box in the middle of an edit would take the editor's focus, and end it twice.
  connect(&area_, &PackageArea::RenameWanted, this, &PackageCommands::RenamePackage,
          Qt::QueuedConnection);
  connect(&area_, &PackageArea::ChangeFailed, this, &PackageCommands::Report);
  connect(saveAll_, &QAction::triggered, this, &PackageCommands::SavePackage);
  const auto update = [this] { saveAll_->setEnabled(area_.SelectedIsComplete()); };
  connect(&area_, &PackageArea::SelectionChanged, this, update);
  connect(&area_, &PackageArea::HeaderChanged, this, update);
  update();
}

// False also when this went while the box stood.
bool PackageCommands::Ask(const QString& question, StringId verb) {
  const QPointer<PackageCommands> self(this);
  return Confirm(owner_, question, Text(verb)) && self;
}

void PackageCommands::DeletePackage(
    std::string name) {  // NOLINT(performance-unnecessary-value-param)
  if (name.empty() || area_.IsBusy(name)) {
    return;
  }
  const PackageFiles& files = area_.Files();
  const bool known = name == area_.Selected() && files.state == PackageFiles::State::Here;
  const std::size_t count = known ? files.entries.size() : 0;
  const StringId question = count == 0   ? StringId::AskDeletePackage
                            : count == 1 ? StringId::AskDeletePackageAndFile
                                         : StringId::AskDeletePackageAndFiles;
  QString text = Text(question);
  text = count > 1 ? text.arg(Title(area_, name), QString::number(count))
                   : text.arg(Title(area_, name));
  if (Ask(text, StringId::MenuPackageDelete)) {
    area_.RemovePackage(name);
  }
}

void PackageCommands::RenamePackage(const QString& name, const QString& newName) {
  const std::string wanted = ToUtf8(newName);
  if (!FitsPath("/" + wanted)) {
    Report(static_cast<std::uint32_t>(StringId::InvalidParameters));
  } else if (!IsSafeName(wanted)) {
    Report(static_cast<std::uint32_t>(StringId::BadCharacters));
  } else if (IsPackageName(wanted) ||
             Ask(Text(StringId::ConfirmRenameAway).arg(newName), StringId::Rename)) {
    area_.Rename(ToUtf8(name), wanted);
  }
}

void PackageCommands::DeleteFiles(const std::vector<AttachmentRecord>& files) {
  if (files.empty()) {
    return;
  }
  const QString question = files.size() == 1
                               ? Text(StringId::AskDeleteFile).arg(FromUtf8(files.front().Name()))
                               : Text(StringId::AskDeleteFiles).arg(files.size());
  if (!Ask(question, StringId::MenuPackageDelete)) {
    return;
  }
  for (const AttachmentRecord& file : files) {
    if (MayDelete(file)) {
      area_.RemoveFile(file.package, file.Name());
    }
  }
}

// A name that could lead out of its folder is not deleted by it.
bool PackageCommands::MayDelete(const AttachmentRecord& file) {
  const bool safe = IsSafeName(file.Name());
  const bool fits = FitsPath(file.Path());
  if (!safe || !fits) {
    Report(
        static_cast<std::uint32_t>(safe ? StringId::InvalidParameters : StringId::BadCharacters));
  }
  return safe && fits;
}

// True if nothing more may be fetched, or not this; the user has been told by a box.
bool PackageCommands::Refused(const std::string& path) {
  if (downloads_.StreamLimitReached()) {
    ShowNotice(owner_, StringId::StreamLimit);
  } else if (!FitsPath(path)) {
    Report(static_cast<std::uint32_t>(StringId::InvalidParameters));
  } else if (downloads_.IsDuplicate(path)) {
    ShowNotice(owner_, StringId::DuplicateTask);
  } else {
    return false;
  }
  return true;
}

void PackageCommands::SaveFile(const AttachmentRecord& file) {
  const QPointer<PackageCommands> self(this);
  const std::u16string localName(LastComponent(Utf8ToWideName(file.Name())));
  const std::string path = WideToUtf8Name(Utf8ToWideName(file.Path()));
  if (localName.empty()) {
    Report(static_cast<std::uint32_t>(StringId::BadCharacters));
  } else if (!Refused(file.Path()) && self &&
             !downloads_.SaveFile(WideToUtf8Name(localName), path)) {
    return;
  }
  if (self) {
    Q_EMIT TransfersWanted();
  }
}

void PackageCommands::SavePackage() {
  const QPointer<PackageCommands> self(this);
  const std::string package = area_.Selected();
  if (!Refused("/" + package) && self && !downloads_.SavePackage(package)) {
    return;
  }
  if (self) {
    Q_EMIT TransfersWanted();
  }
}

void PackageCommands::Report(std::uint32_t code, const QString& name) {
  QStringList lines{ToQString(ResultBoxText(code)), name};
  lines.removeAll(QString());
  // One box for all files of a deletion that fail alike.
  if (told_ && toldCode_ == code) {
    AddLine(*told_, name);
    return;
  }
  // No caption: a blank, since an empty one would be replaced by the program's file name.
  told_ = TellBox(owner_, lines.join(u'\n'), u" "_qs, BoxIcon::Exclamation);
  toldCode_ = code;
}

}  // namespace updown
