#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <map>

#include "demo/walker.h"

namespace updown::demo {

// What a leg has at hand, in the client's own process.
struct LegContext {
  Walker& walker;
  QString received;             // folder for saved attachments
  std::function<void()> start;  // as the client's main does; the windows are there afterwards
  std::function<void()> close;  // closes the window in the regular way
  // Asks the service's side for something and waits until it is done.
  std::function<void(const QStringList& words)> ask;
};

using Leg = std::function<void(LegContext&)>;
const std::map<QString, Leg>& Legs();

// The single legs, by subject.
void EmptyLeg(LegContext& context);
void BrowseLeg(LegContext& context);
void SaveLeg(LegContext& context);
void ResumeLeg(LegContext& context);
void SteerLeg(LegContext& context);
void SteerAgainLeg(LegContext& context);
void StoredLeg(LegContext& context);
void LimitLeg(LegContext& context);
void LoginLeg(LegContext& context);
void KeyboardLeg(LegContext& context);
void SaveAllLeg(LegContext& context);
void SeveralLeg(LegContext& context);
void ArrangeLeg(LegContext& context);
void ArrangedLeg(LegContext& context);
void PlainLeg(LegContext& context);
void DoubleLeg(LegContext& context);
void DarkLeg(LegContext& context);
void LargeLeg(LegContext& context);
void RightToLeftLeg(LegContext& context);
void OtherStyleLeg(LegContext& context);

inline constexpr int kSubjectColumn = 3;  // of the package list

// Steps that several legs take.
void AwaitFullList(LegContext& context);      // all packages listed, header texts there
void SelectWalkPackage(LegContext& context);  // Completed, its attachments on show
void SaveAttachment(LegContext& context, const QString& name, const QString& path);
int AttachmentRow(LegContext& context, const QString& name);
// Brings up the row menu as the Menu key does, on the current row.
void AskForMenu(QAbstractItemView* list);
int StatusRow(LegContext& context, const QString& name);  // row of the transfer of that name
void AwaitFinished(LegContext& context, const QString& name);

}  // namespace updown::demo
