#include <QCommandLineParser>

#include "demo/conductor.h"
#include "demo/leg_process.h"

namespace {

using updown::demo::WalkOptions;

WalkOptions ReadOptions(const QCommandLineParser& parser, const QString& program) {
  WalkOptions options;
  options.program = program;
  options.pictures = parser.value(QStringLiteral("pictures"));
  options.dialect = parser.value(QStringLiteral("dialect")).toInt();
  options.language = parser.value(QStringLiteral("language")).toInt();
  options.packages = parser.value(QStringLiteral("packages")).toInt();
  options.legs = parser.value(QStringLiteral("legs")).split(u',', Qt::SkipEmptyParts);
  options.block = parser.value(QStringLiteral("block")).toUInt();
  return options;
}

int Conduct(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  QCommandLineParser parser;
  parser.addHelpOption();
  parser.addOption({QStringLiteral("pictures"), QStringLiteral("Folder for the pictures."),
                    QStringLiteral("folder"), QStringLiteral("build/demo")});
  parser.addOption({QStringLiteral("dialect"), QStringLiteral("1 or 2."), QStringLiteral("number"),
                    QStringLiteral("1")});
  parser.addOption({QStringLiteral("language"), QStringLiteral("1033, 2052 or 1028."),
                    QStringLiteral("id"), QStringLiteral("1033")});
  parser.addOption({QStringLiteral("packages"), QStringLiteral("Packages in the area."),
                    QStringLiteral("count"), QStringLiteral("12")});
  parser.addOption({QStringLiteral("block"), QStringLiteral("Bytes in a block."),
                    QStringLiteral("bytes"), QStringLiteral("262144")});
  parser.addOption({QStringLiteral("legs"), QStringLiteral("The legs to walk; without it all."),
                    QStringLiteral("names")});
  parser.process(application);
  return updown::demo::Conductor(ReadOptions(parser, QCoreApplication::applicationFilePath()))
      .Run();
}

}  // namespace

int main(int argc, char** argv) {
  if (updown::demo::IsLegProcess(argc, argv)) {
    return updown::demo::RunLegProcess(argc, argv);
  }
  return Conduct(argc, argv);
}
