#include "packages/package_area.h"

#include <QTimerEvent>
#include <array>
#include <utility>

#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"
#include "widgets/icons.h"

// The area as an item model.

namespace updown {
namespace {

constexpr std::size_t kMostCellCharacters = 259;  // more is never drawn

constexpr std::array kPackageHeadings{StringId::TimeReceived, StringId::From,
                                      StringId::To,           StringId::Subject,
                                      StringId::Status,       StringId::FolderTreeName};
static_assert(kPackageHeadings.size() == package_column::kCount);

QString Shortened(const std::u16string& value) {
  return ToQString(std::u16string_view(value).substr(0, kMostCellCharacters));
}

}  // namespace

PackageArea::PackageArea(Session& session, HeaderFetches& fetches, const PackageCache& cache,
                         const LaunchState& launch, std::string seenFile, AreaTimes times,
                         QObject* parent)
    : QAbstractItemModel(parent),
      session_(session),
      cache_(cache),
      codePage_(launch.CodePage()),
      times_(times),
      image_(LoadIcon(Icon::Folder)),
      headers_(rows_, fetches),
      seen_(std::move(seenFile)) {
  boldFont_.setBold(true);
  refresh_.start(static_cast<int>(times_.refresh.count()), this);
}

PackageArea::~PackageArea() {
  session_.Drop(rootRequest_);
  session_.Drop(filesRequest_);
  for (const Session::RequestId change : changes_) {
    session_.Drop(change);
  }
}

void PackageArea::timerEvent(QTimerEvent* event) {
  if (event->timerId() == step_.timerId()) {
    GoOn();
  } else if (event->timerId() == askForFiles_.timerId()) {
    askForFiles_.stop();
    AskForFiles(AskedBy::Person);
  } else if (event->timerId() == refresh_.timerId()) {
    Refresh(AskedBy::Program);
  } else {
    QAbstractItemModel::timerEvent(event);
  }
}

QModelIndex PackageArea::IndexOf(const std::string& name, int column) const {
  const Package* package = rows_.Find(name);
  return package == nullptr ? QModelIndex() : createIndex(package->row, column, kPackageId);
}

std::string PackageArea::NameAt(const QModelIndex& index) const {
  const bool package =
      index.isValid() && index.internalId() == kPackageId && index.row() < rows_.Count();
  return package ? rows_.At(index.row()).Name() : std::string();
}

QModelIndex PackageArea::index(int row, int column, const QModelIndex& parent) const {
  if (!hasIndex(row, column, parent)) {
    return {};
  }
  return createIndex(row, column, parent.isValid() ? kPackageId : kRootId);
}

QModelIndex PackageArea::parent(const QModelIndex& child) const {
  return child.isValid() && child.internalId() == kPackageId ? Root() : QModelIndex();
}

int PackageArea::rowCount(const QModelIndex& parent) const {
  if (!parent.isValid()) {
    return 1;
  }
  return parent.internalId() == kRootId && parent.column() == 0 ? rows_.Count() : 0;
}

int PackageArea::columnCount(const QModelIndex& /*parent*/) const { return package_column::kCount; }

QVariant PackageArea::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
    return {};
  }
  if (index.internalId() == kRootId) {
    return RootData(index, role);
  }
  const int column = index.column();
  const bool names = column == package_column::kTime || column == package_column::kName;
  switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
      return CellText(rows_.At(index.row()), column);
    case Qt::DecorationRole:
      return names ? QVariant(image_) : QVariant();
    case Qt::FontRole:
      return IsNew(index) ? QVariant(boldFont_) : QVariant();
    case Qt::AccessibleDescriptionRole:
      return names && IsNew(index) ? Text(StringId::NewPackage) : QVariant();
    default:
      return {};
  }
}

QVariant PackageArea::RootData(const QModelIndex& index, int role) const {
  if (index.column() != 0) {
    return {};
  }
  switch (role) {
    case Qt::DisplayRole:
      return QStringLiteral("/");
    case Qt::DecorationRole:
      return image_;
    default:
      return {};
  }
}

bool PackageArea::setData(const QModelIndex& index, const QVariant& value, int role) {
  const QString name = FromUtf8(NameAt(index));
  const QString wanted = value.toString();
  if (role == Qt::EditRole && index.column() == package_column::kName && !wanted.isEmpty() &&
      wanted.compare(name, Qt::CaseInsensitive) != 0) {
    Q_EMIT RenameWanted(name, wanted);
  }
  return false;
}

QVariant PackageArea::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
      section >= package_column::kCount) {
    return QAbstractItemModel::headerData(section, orientation, role);
  }
  return Text(kPackageHeadings.at(static_cast<std::size_t>(section)));
}

Qt::ItemFlags PackageArea::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = QAbstractItemModel::flags(index);
  if (index.isValid() && index.internalId() == kPackageId) {
    flags |= Qt::ItemNeverHasChildren;
    if (index.column() == package_column::kName &&
        rows_.At(index.row()).work == PackageWork::None) {
      flags |= Qt::ItemIsEditable;
    }
  }
  return flags;
}

QString PackageArea::CellText(Package& package, int column) const {
  switch (column) {
    case package_column::kTime:
      return TextsOf(package).time;
    case package_column::kFrom:
      return TextsOf(package).from;
    case package_column::kTo:
      return TextsOf(package).to;
    case package_column::kSubject:
      return TextsOf(package).subject;
    case package_column::kStatus:
      return StatusText(package);
    default:
      return FromUtf8(package.Name());
  }
}

QString PackageArea::StatusText(const Package& package) const {
  if (package.workShows) {
    return Text(package.work == PackageWork::Removing ? StringId::Deleting : StringId::Renaming);
  }
  return Text(package.Complete() ? StringId::Completed : StringId::Incomplete);
}

// The "_Start" file wherever it exists, also for a complete package.
std::string PackageArea::ReadPathOf(const Package& package) const {
  const bool start = package.start == HeaderFile::Here;
  return start || package.plain == HeaderFile::Here
             ? cache_.PathOf(HeaderFileOf(package.Name(), start))
             : std::string();
}

const PackageTexts& PackageArea::TextsOf(Package& package) const {
  if (!package.texts) {
    const PackageHeader header = ReadPackageHeader(ReadPathOf(package), codePage_);
    package.texts = {Shortened(header.sendTime), Shortened(header.from), Shortened(header.to),
                     Shortened(header.subject)};
  }
  return *package.texts;
}

void PackageArea::RowLooksChanged(const Package& package) {
  Q_EMIT dataChanged(createIndex(package.row, 0, kPackageId),
                     createIndex(package.row, package_column::kCount - 1, kPackageId));
}

void PackageArea::RowChanged(const Package& package) {
  RowLooksChanged(package);
  if (package.Name() == selected_) {
    Q_EMIT HeaderChanged();
  }
}

void PackageArea::HeaderEnded(const std::string& file, bool arrived) {
  headers_.Ended(file);
  const auto name = ParseHeaderFile(file);
  Package* package = name ? rows_.Find(name->package) : nullptr;
  if (package != nullptr) {
    package->File(name->start) = arrived ? HeaderFile::Here : HeaderFile::Failed;
    if (arrived) {
      package->texts.reset();
      RowChanged(*package);
    }
    if (package->Complete() && package->Name() == selected_) {
      AskForFiles(AskedBy::Program);  // those that were still on their way
    }
  } else if (arrived) {
    cache_.Delete(file);
  }
  headers_.Fill();
}

}  // namespace updown
