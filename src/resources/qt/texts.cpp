#include "resources/qt/texts.h"

#include "platform/qt/text.h"
#include "resources/strings.h"

namespace updown {

QString Text(StringId id) { return ToQString(LoadText(id)); }

QString Text(StringId id, std::u16string_view fallback) {
  return ToQString(LoadText(id, fallback));
}

}  // namespace updown
