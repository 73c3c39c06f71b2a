#include "widgets/icons.h"

#include <array>

// The macro names a function of the global namespace.
static void InitIconResources() { Q_INIT_RESOURCE(icons); }

namespace updown {
namespace {

constexpr std::array kNames{"program", "open-folder", "folder", "file",   "download",
                            "upload",  "finished",    "failed", "stopped"};

}  // namespace

// Qt's engine for vector images draws them at the size that is asked for; it is a plugin of Qt SVG.
QIcon LoadIcon(Icon icon) {
  InitIconResources();
  const char* name = kNames.at(static_cast<std::size_t>(icon));
  return QIcon(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(name)));
}

}  // namespace updown
