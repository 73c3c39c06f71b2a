#include "packages/file_type_names.h"

#include <algorithm>
#include <initializer_list>

#include "platform/text.h"

namespace updown {
namespace {

enum class Compared { Extension, WholeName };

struct TypeRow {
  Compared compared;
  std::initializer_list<std::u16string_view> keys;
  std::u16string_view text;
};

// In the order of the tests: the two whole names stand before the extension that they share.
constexpr TypeRow kTypes[] = {
    {Compared::Extension, {u".PDF"}, u"PDF File"},
    {Compared::Extension, {u".CPP"}, u"CPP Source"},
    {Compared::Extension, {u".H"}, u"Header File"},
    {Compared::Extension, {u".C"}, u"C Source"},
    {Compared::WholeName, {u"SETUP.EXE"}, u"SETUP File"},
    {Compared::WholeName, {u"ISUNINST.EXE"}, u"UNINSTALL File"},
    {Compared::Extension, {u".TXT", u".LOG"}, u"TEXT File"},
    {Compared::Extension,
     {u".ZIP", u".ARJ", u".TGZ", u".RAR", u".TAR", u".LZH", u".LZA", u".CAB"},
     u"ZIP File"},
    {Compared::Extension, {u".EXE", u".COM", u".BAT"}, u"Application"},
    {Compared::Extension, {u".AU", u".WAV", u".MP3"}, u"Sound File"},
    {Compared::Extension, {u".HTM", u".HTML"}, u"HTML Document"},
    {Compared::Extension, {u".DOC"}, u"WORD Document"},
    {Compared::Extension, {u".MPG", u".MPEG", u".AVI"}, u"Video File"},
    {Compared::Extension, {u".HLP"}, u"HELP File"},
    {Compared::Extension, {u".BMP"}, u"Bitmap File"},
    {Compared::Extension, {u".ICO"}, u"Icon File"},
    {Compared::Extension, {u".DBF", u".DBT", u".MEM"}, u"FOXPRO File"},
    {Compared::Extension, {u".DLL", u".SYS", u".OCX", u".VXD", u".INI", u".DRV"}, u"DRIVERS File"},
    {Compared::Extension,
     {u".JPG", u".GIF", u".JPEG", u".AIS", u".EMF", u".IFF", u".KDC", u".PCD", u".PCX", u".PIC",
      u".PIX", u".PNG", u".PSD", u".SGI", u".TIF", u".TIFF", u".WMF"},
     u"Picture File"},
    {Compared::Extension,
     {u".TSK", u".CPX", u".ROM", u".CFG", u".STF", u".LST", u".INF"},
     u"Windows File"},
    {Compared::Extension, {u".CUR", u".ANI"}, u"CURSOR File"},
    {Compared::Extension, {u".FON"}, u"FONT File"},
    {Compared::Extension, {u".BAK"}, u"Backup File"},
    {Compared::Extension, {u".JAVA"}, u"JAVA Source"},
    {Compared::Extension, {u".CLASS"}, u"JAVA Class"},
    {Compared::Extension, {u".BEAN"}, u"JAVA Bean"},
    {Compared::Extension, {u".REG"}, u"REGISTRY File"},
    {Compared::Extension, {u".MDB"}, u"ACCESS Database"},
    {Compared::Extension, {u".XLS"}, u"EXCEL File"},
    {Compared::Extension, {u".CHM"}, u"HTML Help"},
};

constexpr std::u16string_view kSuffix = u" File";

}  // namespace

std::u16string FileTypeName(std::u16string_view name) {
  const std::u16string upper = ToUpper(name);
  const std::size_t dot = upper.find(u'.');
  if (dot == 0) {
    return upper + std::u16string(kSuffix);
  }
  const bool hasDot = dot != std::u16string::npos;
  const std::u16string extension = hasDot ? upper.substr(dot) : upper;
  for (const TypeRow& row : kTypes) {
    const std::u16string& wanted = row.compared == Compared::Extension ? extension : upper;
    if (std::find(row.keys.begin(), row.keys.end(), wanted) != row.keys.end()) {
      return std::u16string(row.text);
    }
  }
  return (hasDot ? extension.substr(1) : extension) + std::u16string(kSuffix);
}

}  // namespace updown
