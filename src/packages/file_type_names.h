#pragma once

#include <string>
#include <string_view>

namespace updown {

// What kind of file a name (without a path) stands for, in the fixed English words of the Type
// column: "PDF File". The extension begins at the first dot; case does not matter.
std::u16string FileTypeName(std::u16string_view name);

}  // namespace updown
