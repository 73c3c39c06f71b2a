#pragma once

#include <QString>

namespace updown::demo {

// The package that the legs work on, beside those of the made area: its texts are ASCII, so that it
// reads the same in all languages.
inline constexpr char kWalkPackage[] = "20261122080000";
inline constexpr char kWalkSubject[] = "Quarterly figures and site photos";
inline constexpr int kWalkAttachments = 8;

struct WalkFile {
  const char* name;
  int bytes;
};
inline constexpr WalkFile kWalkFiles[kWalkAttachments] = {
    {"agenda.txt", 1536},       {"figures-q3.xls", 1572864}, {"floor plan.pdf", 1300000},
    {"minutes.doc", 48000},     {"photos.tar.gz", 2400000},  {"readme", 0},
    {"site-north.jpg", 700001}, {"site-south.jpg", 690000},
};

// Writes the package into the area, with times and bytes that are the same in each run; under
// another name it is one that has just come.
void MakeWalkPackage(const QString& area, const QString& name = QString::fromLatin1(kWalkPackage));

}  // namespace updown::demo
