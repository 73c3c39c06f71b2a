#pragma once

#include <QIcon>

namespace updown {

// The program's own icons, named after what they show. The files in icons/ have the same names.
enum class Icon { Program, OpenFolder, Folder, File, Download, Upload, Finished, Failed, Stopped };

QIcon LoadIcon(Icon icon);

}  // namespace updown
