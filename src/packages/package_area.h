#pragma once

#include <QAbstractItemModel>
#include <QBasicTimer>
#include <QElapsedTimer>
#include <QFont>
#include <QIcon>
#include <chrono>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "engine/cache.h"
#include "engine/package.h"
#include "engine/session.h"
#include "packages/header_queue.h"
#include "packages/package_rows.h"
#include "packages/seen_packages.h"

namespace updown {

namespace package_column {
inline constexpr int kTime = 0;
inline constexpr int kFrom = 1;
inline constexpr int kTo = 2;
inline constexpr int kSubject = 3;
inline constexpr int kStatus = 4;
inline constexpr int kName = 5;
inline constexpr int kCount = 6;
}  // namespace package_column

// The files of the selected package, as the service listed them.
struct PackageFiles {
  enum class State { NotAsked, Asked, Here, Failed };
  State state = State::NotAsked;
  std::uint32_t report = 0;             // Failed: as ReportText takes it
  std::vector<DirectoryEntry> entries;  // without folders and header files; kept while asked again
  std::set<std::string> removing;       // names of those that are being removed
};

// How often and after what time the area does something by itself.
struct AreaTimes {
  std::chrono::milliseconds refresh = std::chrono::minutes(5);
  std::chrono::milliseconds away = std::chrono::minutes(1);  // from then on a return refreshes
  std::chrono::milliseconds quiet{500};                      // what takes longer shows a sign
};

// The package area of the service as this program knows it: the packages, what is known of each,
// which one is selected, and how the connection fares. All windows show this one model and ask it
// for changes; it alone asks the session and has headers fetched.
//
// As an item model: one row "/" and below it one row for each package, the newest on top. It says
// what changed by row. A header is read when its row is shown, sorted or filtered by. Packages that
// have come since the last look are bold until they are selected. Main thread.
class PackageArea final : public QAbstractItemModel {
  Q_OBJECT

 public:
  // The references outlive it. `seenFile` keeps which packages the user has looked at (see
  // SeenPackages).
  PackageArea(Session& session, HeaderFetches& fetches, const PackageCache& cache,
              const LaunchState& launch, std::string seenFile = {}, AreaTimes times = {},
              QObject* parent = nullptr);
  ~PackageArea() override;

  enum class Connection {
    Connecting,  // nothing has been listed yet, or the user has asked to try again
    There,
    Lost,     // the last request failed; rows stay
    GivenUp,  // somebody has cancelled what was to connect
  };
  Connection State() const { return connection_; }
  bool Refreshing() const { return rootRequest_ != 0; }
  std::chrono::milliseconds Quiet() const { return times_.quiet; }

  // Lists the packages anew, and by a person's wish the files of the selected one. Rows stay until
  // the answer is there.
  void Refresh(AskedBy by);
  void Cancel();  // whatever runs on the session
  // Whether a window of the program is the active one.
  void SetActive(bool active);

  // Selection, common to all views. Empty: none.
  void Select(const std::string& name);
  const std::string& Selected() const { return selected_; }
  const PackageFiles& Files() const { return files_; }
  PackageHeader SelectedHeader() const;
  bool SelectedIsComplete() const;
  bool IsBusy(const std::string& name) const;  // with a change on the service

  // Changes on the service. The rows follow when the service has agreed; ChangeFailed tells if not.
  void Rename(const std::string& name, const std::string& newName);
  void RemovePackage(const std::string& name);
  void RemoveFile(const std::string& package, const std::string& file);

  // The packages on the screen: their headers are fetched before others, in this order.
  void FetchFirst(std::vector<std::string> packages) { headers_.FetchFirst(std::move(packages)); }
  // A fetch of FetchHeader has ended; whether the cache has the file now.
  void HeaderEnded(const std::string& file, bool arrived);

  // Reads the headers that are in the cache and not read yet, as many as there is time for; true if
  // none is left. Else it goes on by itself and tells HeadersRead.
  bool ReadHeaders();

  QModelIndex Root() const { return createIndex(0, 0, kRootId); }
  QModelIndex IndexOf(const std::string& name, int column = 0) const;  // invalid if there is none
  std::string NameAt(const QModelIndex& index) const;  // empty for what is no package

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  // A new name for a package, by the user: tells RenameWanted. Never changes anything by itself.
  bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 Q_SIGNALS:
  void ConnectionChanged();  // also when a refresh begins or ends
  void SelectionChanged();   // another package is selected, or none
  void HeaderChanged();      // header or status of the selected package
  void FilesChanged();       // files of the selected package
  void HeadersRead();
  // To open or to list has failed; once for one outage, and whenever the user asked for a refresh.
  void Failed(quint32 report);
  void Recovered();
  // A change that the user asked for; `name` is the file or folder at which it failed.
  void ChangeFailed(quint32 report, const QString& name);
  void RenameWanted(const QString& name, const QString& newName);
  void PackageRenamed(const std::string& name, const std::string& newName);

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  static constexpr quintptr kRootId = 0;
  static constexpr quintptr kPackageId = 1;

  bool IsNew(const QModelIndex& package) const {
    return seen_.IsNew(rows_.At(package.row()).Name());
  }
  QVariant RootData(const QModelIndex& index, int role) const;
  QString CellText(Package& package, int column) const;
  QString StatusText(const Package& package) const;
  const PackageTexts& TextsOf(Package& package) const;
  std::string ReadPathOf(const Package& package) const;
  void RowChanged(const Package& package);
  void RowLooksChanged(const Package& package);  // not what the form shows of it

  void OnListed(const ListingAnswer& answer);
  void TakeUpListing(const std::vector<DirectoryEntry>& entries);
  void LookIntoCache();
  void GoOn();
  bool RemoveSomeGone();
  bool InsertSomeNew();
  void RemoveRows(int first, int count);
  void SetConnection(Connection connection);
  void TakeResult(const SessionResult& result, AskedBy by);

  void AskForFiles(AskedBy by);
  void DropFilesRequest();
  void OnFilesListed(ListingAnswer answer);
  bool IsHeaderFile(const std::string& file) const;

  void BeginWork(Package& package, PackageWork work);
  void EndWork(const std::string& name);
  void AfterFailure(const ChangeAnswer& answer);
  void OnRenamed(const FolderRename& rename, const std::string& name, const std::string& newName,
                 const ChangeAnswer& answer);
  void RenameRow(const FolderRename& rename, const std::string& name, const std::string& newName,
                 const std::string& failedName);
  void DeleteFromCache(const std::string& name) const;
  void RenameInCache(const FolderRename& rename, const std::string& failedName) const;
  void OnPackageRemoved(const std::string& name, const ChangeAnswer& answer);
  void GiveUpFileRemovals();
  void OnFileRemoved(const std::string& package, const std::string& file,
                     const ChangeAnswer& answer);

  Session& session_;
  const PackageCache& cache_;
  const AnsiCodePage codePage_;
  const AreaTimes times_;
  const QIcon image_;
  QFont boldFont_;

  mutable PackageRows rows_;  // texts are read where they are asked for
  HeaderQueue headers_;
  Connection connection_ = Connection::Connecting;
  Session::RequestId rootRequest_ = 0;
  AskedBy rootAskedBy_ = AskedBy::Program;

  // A listing that is being taken up, step by step.
  std::unordered_set<std::string> listed_;
  std::vector<DirectoryEntry> newEntries_;  // the next one last
  std::unordered_set<std::string> cached_;
  int checkedFrom_ = 0;  // the rows from here on are in the listing
  int inserted_ = 0;
  int readFrom_ = -1;  // row at which reading headers goes on; -1: nobody waits for it

  std::vector<Session::RequestId> changes_;       // all that were asked for
  std::vector<Session::RequestId> fileRemovals_;  // of files, answered ones too
  std::unordered_set<std::string> formerNames_;   // of packages that were renamed in this run
  SeenPackages seen_;
  std::string selected_;
  PackageFiles files_;
  Session::RequestId filesRequest_ = 0;

  QBasicTimer step_;
  QBasicTimer askForFiles_;
  QBasicTimer refresh_;
  QElapsedTimer away_;
};

}  // namespace updown
