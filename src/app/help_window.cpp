#include "app/help_window.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QVBoxLayout>

#include "app/about_box.h"
#include "resources/qt/texts.h"
#include "widgets/icons.h"

namespace updown {
namespace {

// Of the first page that is shown: room for the longest row of the keys, and for most of them.
constexpr int kFirstColumns = 90;
constexpr int kFirstLines = 34;

QString Element(const QString& name, const QString& content) {
  return u"<%1>%2</%1>"_qs.arg(name, content);
}

// An action's text without its mnemonic and the dots of a command that asks something.
QString PlainText(const QAction& action) {
  QString text = action.text();
  // Chinese texts have the mnemonic in parentheses behind the word.
  text.remove(QRegularExpression(u"\\(&[A-Z]\\)"_qs)).remove(u'&');
  return text.remove(u'…');
}

QString RowsOf(const HelpKeys& keys) {
  QString rows = u"<tr><td colspan=\"2\"><h4>%1</h4></td></tr>"_qs.arg(keys.place.toHtmlEscaped());
  for (const auto& [key, what] : keys.rows) {
    rows +=
        u"<tr><td style=\"white-space: nowrap; padding-right: 16px\"><b>%1</b></td>"
        u"<td width=\"100%\">%2</td></tr>"_qs.arg(key.toHtmlEscaped(), what.toHtmlEscaped());
  }
  return rows;
}

QString PageOf(const QList<HelpKeys>& places) {
  QString page = Element(u"h2"_qs, Text(StringId::ProgramTitle).toHtmlEscaped()) +
                 Element(u"p"_qs, Text(StringId::HelpVersion).arg(QStringLiteral(UPDOWN_VERSION)));
  for (const StringId paragraph : {StringId::HelpPackages, StringId::HelpSaving,
                                   StringId::HelpTransfers, StringId::HelpConnection}) {
    page += Element(u"p"_qs, Text(paragraph).toHtmlEscaped());
  }
  page += Element(u"h3"_qs, Text(StringId::HelpKeysHeading));
  QString rows;
  for (const HelpKeys& keys : places) {
    rows += RowsOf(keys);
  }
  return page + u"<table cellpadding=\"2\">%1</table>"_qs.arg(rows);
}

}  // namespace

HelpKeys::HelpKeys(QString where, const QList<QAction*>& actions) : place(std::move(where)) {
  for (const QAction* action : actions) {
    if (!action->shortcuts().isEmpty()) {
      Add(action->shortcuts(), PlainText(*action));
    }
  }
}

void HelpKeys::Add(const QList<QKeySequence>& keys, const QString& what) {
  QStringList names;
  for (const QKeySequence& key : keys) {
    names.append(key.toString(QKeySequence::NativeText));
  }
  rows.append({names.join(u" / "_qs), what});
}

HelpWindow::HelpWindow(QWidget* owner) : QDialog(owner), page_(new QTextBrowser) {
  setObjectName(u"helpWindow"_qs);
  setWindowTitle(Text(StringId::HelpTitle));
  page_->setObjectName(u"helpPage"_qs);
  page_->setAccessibleName(windowTitle());
  page_->setOpenLinks(false);
  // In a row of their own: of a box of buttons the Tab key reaches only one from the page.
  auto* const about = new QPushButton(Text(StringId::HelpAbout));
  about->setObjectName(u"helpAbout"_qs);
  about->setAutoDefault(false);
  connect(about, &QPushButton::clicked, this, [this] { ShowAboutBox(this); });
  auto* const shut = new QPushButton(Text(StringId::HelpClose));
  shut->setDefault(true);
  connect(shut, &QPushButton::clicked, this, &QDialog::reject);
  auto* const buttons = new QHBoxLayout;
  buttons->addWidget(about);
  buttons->addStretch();
  buttons->addWidget(shut);
  auto* close = new QAction(this);
  close->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
  connect(close, &QAction::triggered, this, &QDialog::reject);
  addAction(close);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(page_);
  layout->addLayout(buttons);
  const QFontMetrics font = fontMetrics();
  resize(QSize(kFirstColumns * font.averageCharWidth(), kFirstLines * font.lineSpacing())
             .boundedTo(screen()->availableSize() * 9 / 10));
}

void HelpWindow::Open(const QList<HelpKeys>& keys) {
  if (!isVisible()) {
    page_->setHtml(PageOf(keys));
  }
  showNormal();
  raise();
  activateWindow();
  page_->setFocus();
}

}  // namespace updown
