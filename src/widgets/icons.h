#pragma once

#include <QIcon>

namespace updown {

// The program's own icons, by resource number: 128 program, 132 open folder, 134 folder, 135 file,
// 136 download, 137 upload, 141 finished, 142 failed, 144 stopped, 146 package.
QIcon LoadIcon(int number);

}  // namespace updown
