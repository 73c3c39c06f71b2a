#include "widgets/icons.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>
#include <memory>

// The macro names a function of the global namespace.
static void InitIconResources() { Q_INIT_RESOURCE(icons); }

namespace updown {
namespace {

// Draws the vector image at the size that is asked for, so that it is sharp at every density.
class VectorIconEngine : public QIconEngine {
 public:
  explicit VectorIconEngine(const QString& path)
      : renderer_(std::make_shared<QSvgRenderer>(path)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    Q_UNUSED(state);
    constexpr qreal kDisabledOpacity = 0.4;
    painter->save();
    if (mode == QIcon::Disabled) {
      painter->setOpacity(painter->opacity() * kDisabledOpacity);
    }
    painter->setRenderHint(QPainter::Antialiasing);
    renderer_->render(painter, QRectF(rect));
    painter->restore();
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paint(&painter, QRect(QPoint(), size), mode, state);
    return pixmap;
  }

  QIconEngine* clone() const override { return new VectorIconEngine(*this); }

 private:
  std::shared_ptr<QSvgRenderer> renderer_;
};

QString PathOf(Icon icon) {
  switch (icon) {
    case Icon::Program:
      return QStringLiteral(":/icons/program.svg");
    case Icon::OpenFolder:
      return QStringLiteral(":/icons/open-folder.svg");
    case Icon::Folder:
      return QStringLiteral(":/icons/folder.svg");
    case Icon::File:
      return QStringLiteral(":/icons/file.svg");
    case Icon::Download:
      return QStringLiteral(":/icons/download.svg");
    case Icon::Upload:
      return QStringLiteral(":/icons/upload.svg");
    case Icon::Finished:
      return QStringLiteral(":/icons/finished.svg");
    case Icon::Failed:
      return QStringLiteral(":/icons/failed.svg");
    case Icon::Stopped:
      return QStringLiteral(":/icons/stopped.svg");
  }
  return {};
}

}  // namespace

QIcon LoadIcon(Icon icon) {
  InitIconResources();
  return QIcon(new VectorIconEngine(PathOf(icon)));
}

}  // namespace updown
