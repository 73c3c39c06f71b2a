#include "packages/package_form.h"

#include <QGridLayout>
#include <QLabel>
#include <QRegularExpression>
#include <QStyleOptionGroupBox>
#include <QStylePainter>
#include <QVBoxLayout>

#include "engine/result_texts.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"

namespace updown {
namespace {

constexpr int kLeastLines = 4;  // of notes and attachments
constexpr int kGroupMargin = 4;
constexpr qreal kLineOpacity = 0.375;
constexpr int kLineGap = 2;

struct Field {
  StringId label;
  const char* name;
  std::u16string PackageHeader::*value;
  int row;
  int column;
  int columns;
};
constexpr std::array<Field, 5> kFields{
    Field{StringId::From, "fieldFrom", &PackageHeader::from, 0, 0, 1},
    Field{StringId::TimeReceived, "fieldTime", &PackageHeader::sendTime, 0, 2, 1},
    Field{StringId::To, "fieldTo", &PackageHeader::to, 1, 0, 3},
    Field{StringId::Cc, "fieldCc", &PackageHeader::cc, 2, 0, 3},
    Field{StringId::Subject, "fieldSubject", &PackageHeader::subject, 3, 0, 3}};

// Its frame shows on a dark ground too: drawn in place of the style's.
class Group : public QGroupBox {
 public:
  using QGroupBox::QGroupBox;

 protected:
  void paintEvent(QPaintEvent*) override {
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    option.subControls &= ~QStyle::SC_GroupBoxFrame;
    QStylePainter painter(this);
    painter.drawComplexControl(QStyle::CC_GroupBox, option);
    const QRect inside =
        style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxContents, this);
    QColor line = palette().color(QPalette::Text);
    line.setAlphaF(kLineOpacity);
    painter.setPen(line);
    painter.drawRect(inside.adjusted(-kLineGap, -kLineGap, kLineGap - 1, kLineGap - 1));
  }
};

}  // namespace

PackageForm::PackageForm(PackageArea& area, PackageCommands& commands, QWidget* parent)
    : QScrollArea(parent),
      area_(area),
      notes_(new QPlainTextEdit),
      attachments_(new AttachmentList(commands, nullptr)),
      onTheWay_(new FieldValue) {
  setObjectName(u"packageForm"_qs);
  setAccessibleName(Text(StringId::PackageFormName));
  setFrameShape(NoFrame);
  setWidgetResizable(true);
  setFocusPolicy(Qt::NoFocus);
  viewport()->setBackgroundRole(QPalette::Base);
  notes_->setObjectName(u"packageNotes"_qs);
  notes_->setAccessibleName(Text(StringId::GroupNote));
  notes_->setReadOnly(true);
  notes_->setTabChangesFocus(true);
  notes_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  onTheWay_->setObjectName(u"filesOnTheWay"_qs);
  onTheWay_->setAccessibleName(Text(StringId::GroupAttachments));
  onTheWay_->SetValue(Text(StringId::FilesOnTheWay));

  auto* const content = new QWidget;
  content->setBackgroundRole(QPalette::Base);
  auto* const column = new QVBoxLayout(content);
  column->addLayout(MakeFields());
  column->addWidget(MakeGroup(StringId::GroupNote, u"noteGroup"_qs, notes_), 1);
  attachmentGroup_ = MakeGroup(StringId::GroupAttachments, u"attachmentGroup"_qs, attachments_);
  column->addWidget(attachmentGroup_, 1);
  column->addWidget(onTheWay_);
  setWidget(content);

  slow_.setSingleShot(true);
  slow_.setInterval(area_.Quiet());
  connect(&slow_, &QTimer::timeout, this,
          [this] { attachments_->SetHint(Text(StringId::FilesAsked)); });
  connect(&area_, &PackageArea::SelectionChanged, this, [this] {
    slow_.start();
    attachments_->SetHint({});  // the one of the package before
    ShowHeader();
    ShowFiles();
  });
  connect(&area_, &PackageArea::HeaderChanged, this, &PackageForm::ShowHeader);
  connect(&area_, &PackageArea::FilesChanged, this, &PackageForm::ShowFiles);
  ShowHeader();
}

// The time stands in the same place whatever the sender's length.
QLayout* PackageForm::MakeFields() {
  auto* const grid = new QGridLayout;
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    const Field& field = kFields.at(i);
    auto* const label = new QLabel(Text(field.label) + Text(StringId::Colon));
    auto* const value = new FieldValue;
    value->setObjectName(QString::fromLatin1(field.name));
    label->setBuddy(value);
    grid->addWidget(label, field.row, field.column);
    grid->addWidget(value, field.row, field.column + 1, 1, field.columns);
    fields_.at(i) = value;
  }
  grid->setVerticalSpacing(0);
  grid->setColumnStretch(1, 3);
  grid->setColumnStretch(3, 2);
  return grid;
}

QGroupBox* PackageForm::MakeGroup(StringId title, const QString& name, QWidget* inside) {
  auto* const group = new Group(Text(title));
  group->setObjectName(name);
  inside->setMinimumHeight(kLeastLines * fontMetrics().lineSpacing());
  auto* const column = new QVBoxLayout(group);
  column->setContentsMargins(kGroupMargin, kGroupMargin, kGroupMargin, kGroupMargin);
  column->addWidget(inside);
  return group;
}

// Without a package the layout stays as it is.
void PackageForm::ShowHeader() {
  const PackageHeader header = area_.SelectedHeader();
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    fields_.at(i)->SetValue(ToQString(header.*kFields.at(i).value));
  }
  QString notes = ToQString(header.notes).remove(u'\r');
  // A line without a place to break takes seconds to lay out.
  static const QRegularExpression endless(u"(\\S{1000})"_qs);
  notes.replace(endless, u"\\1\u200B"_qs);
  if (notes_->toPlainText() != notes) {
    notes_->setPlainText(notes);
  }
  const bool complete =
      area_.Selected().empty() ? !attachmentGroup_->isHidden() : area_.SelectedIsComplete();
  attachmentGroup_->setVisible(complete);
  onTheWay_->setVisible(!complete);
}

void PackageForm::ShowFiles() {
  using State = PackageFiles::State;
  const PackageFiles& files = area_.Files();
  attachments_->Show(area_.Selected(), files);
  if (files.state != State::Asked) {
    slow_.stop();
    attachments_->SetHint(files.state == State::Failed ? ToQString(ResultBoxText(files.report))
                                                       : QString());
  } else if (!slow_.isActive()) {
    slow_.start();
  }
}

}  // namespace updown
