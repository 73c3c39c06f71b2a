#include "resources/qt/texts.h"

#include "platform/qt/text.h"
#include "resources/texts.h"

namespace updown {

QString Text(StringId id) { return ToQString(LoadText(id)); }

}  // namespace updown
