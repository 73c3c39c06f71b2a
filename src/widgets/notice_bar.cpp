#include "widgets/notice_bar.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QStringList>
#include <QStyle>

#include "resources/qt/texts.h"

namespace updown {

NoticeBar::NoticeBar(QWidget* parent)
    : QFrame(parent),
      text_(new QLabel(this)),
      tryAgain_(new QToolButton(this)),
      close_(new QToolButton(this)) {
  setObjectName(u"noticeBar"_qs);
  setFrameShape(QFrame::StyledPanel);
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::ToolTipBase);
  text_->setObjectName(u"noticeText"_qs);
  text_->setForegroundRole(QPalette::ToolTipText);
  text_->setTextFormat(Qt::PlainText);
  text_->setWordWrap(true);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  tryAgain_->setObjectName(u"noticeTryAgain"_qs);
  tryAgain_->setFocusPolicy(Qt::TabFocus);
  tryAgain_->setText(Text(StringId::TryAgain));
  close_->setObjectName(u"noticeClose"_qs);
  close_->setAutoRaise(true);
  close_->setFocusPolicy(Qt::TabFocus);
  close_->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
  close_->setAccessibleName(Text(StringId::CloseNotice));
  close_->setToolTip(close_->accessibleName());
  auto* const line = new QHBoxLayout(this);
  line->addWidget(text_, 1);
  line->addWidget(tryAgain_, 0, Qt::AlignTop);
  line->addWidget(close_, 0, Qt::AlignTop);
  connect(close_, &QToolButton::clicked, this, [this] {
    notices_.clear();
    Refresh();
  });
  connect(tryAgain_, &QToolButton::clicked, this, [this] {
    ClearNotice(Source::Service);
    Q_EMIT TryAgain();
  });
  hide();
}

void NoticeBar::SetNotice(Source source, const QString& text) {
  const bool stood = isVisible();
  notices_.insert(source, text);
  Refresh();
  if (stood) {  // the toolkit tells it when it comes
    QAccessibleEvent shown(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
  }
}

void NoticeBar::ClearNotice(Source source) {
  notices_.remove(source);
  Refresh();
}

void NoticeBar::Refresh() {
  text_->setText(QStringList(notices_.values()).join(u'\n'));
  setAccessibleName(text_->text());
  tryAgain_->setVisible(notices_.contains(Source::Service));
  setVisible(!notices_.isEmpty());
}

}  // namespace updown
