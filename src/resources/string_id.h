#pragma once

#include <cstdint>

namespace updown {

// Ids of the string table (strings.tsv). Windows pass them on as numbers too: a result code's text
// and the scheduler's "Processing ..." travel as string ids.
enum class StringId : std::uint32_t {
  FrameTitle = 128,
  ProgramTitle = 57344,  // caption of most boxes
  AuthenticationFailed = 61204,
  NetworkError = 61205,
  ShortOfResources = 61206,
  LostConnection = 61208,
  AccessDenied = 61209,
  SystemBusy = 61210,
  Processing = 61211,
  OpenFailed = 61212,
  WriteFailed = 61213,
  FolderReadFailed = 61214,
  SessionInterrupted = 61215,
  Name = 61217,
  Size = 61218,
  Type = 61219,
  Created = 61221,
  SourceEnd = 61222,
  TargetEnd = 61223,
  TransferRate = 61225,
  Progress = 61226,
  From = 61227,
  To = 61228,
  Subject = 61229,
  TimeReceived = 61230,
  Cc = 61231,
  Colon = 61232,
  Save = 61234,
  TimeRemaining = 61235,
  Completed = 61236,
  BadCharacters = 61237,
  IncompatibleLanguage = 61238,
  Blank = 61239,
  NotImplemented = 61240,
  UnknownError = 61241,
  StreamLimit = 61242,
  ConfirmDelete = 61243,
  Transferred = 61245,
  DuplicateTask = 61246,
  InvalidParameters = 61249,
  Status = 61250,
  Incomplete = 61251,
  EmptyHint = 61253,
  ConfirmRedo = 61254,
  MoveFile = 61255,

  // Items of menus, by command.
  MenuFileSave = 32777,
  MenuFileDelete = 32778,
  MenuPackageDelete = 32772,
  MenuPackageRefresh = 32791,
  MenuPause = 32782,
  MenuResume = 32783,
  MenuRedo = 32784,
  MenuStatusDelete = 32785,
  MenuOpenFile = 32792,
  MenuOpenFolder = 32793,
  MenuMoveFile = 32794,

  // Captions of dialogs: the control's number, or 100000 + the dialog's for texts without one.
  GroupNote = 1033,
  GroupAttachments = 1034,
  AboutText = 100100,
  Ok = 100001,
  Cancel = 100002,
  StatusTitle = 100156,
  LoginTitle = 100200,
  LoginUser = 100201,
  LoginPassword = 100202,
  LoginRefused = 100203,
  FileFilterAll = 100300,

  // Names of widgets without a caption, for screen readers.
  FolderTreeName = 100400,
  PackageListName = 100401,
  PackageFormName = 100402,

  // The line above the panes.
  CloseNotice = 100500,
  ListNotSaved = 100501,
  BadLaunchVariables = 100502,
};

}  // namespace updown
