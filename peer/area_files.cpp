#include "peer/area_files.h"

#include <fcntl.h>
#include <iconv.h>
#include <sys/stat.h>

#include <array>
#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace updown::peer {

namespace {

constexpr std::string_view kStoredLineBreak = "\xFF\xFF";

class Converter {
 public:
  explicit Converter(const char* codePage) : handle_(::iconv_open(codePage, "UTF-8")) {
    // The library marks a failure by the handle -1.
    if (reinterpret_cast<std::intptr_t>(handle_) == -1) {
      throw std::runtime_error(std::string("no code page ") + codePage);
    }
  }
  ~Converter() { ::iconv_close(handle_); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  std::string Convert(std::string text) const {
    std::string result(text.size() * 2, '\0');
    char* from = text.data();
    std::size_t fromLeft = text.size();
    char* to = result.data();
    std::size_t toLeft = result.size();
    if (::iconv(handle_, &from, &fromLeft, &to, &toLeft) == static_cast<std::size_t>(-1)) {
      throw std::runtime_error("a text does not fit its code page: " + text);
    }
    result.resize(result.size() - toLeft);
    return result;
  }

 private:
  iconv_t handle_;
};

std::string PickPeople(const AreaTexts& texts, std::uint32_t count, Dice& dice) {
  std::string people;
  const std::uint32_t all = static_cast<std::uint32_t>(texts.people.size());
  const std::uint32_t first = dice.Below(all);
  for (std::uint32_t i = 0; i < count; ++i) {
    if (i > 0) people += "; ";
    people += texts.people[(first + i) % all];
  }
  return people;
}

std::string PickNotes(const AreaTexts& texts, Dice& dice) {
  if (dice.Below(6) != 0) return std::string(dice.Pick(texts.notes));
  std::string all;
  for (int round = 0; round < 3; ++round) {
    for (const std::string_view note : texts.notes) {
      all += note;
      all += "\n\n";
    }
  }
  return all;
}

std::string WithStoredLineBreaks(std::string_view text) {
  std::string stored;
  for (const char c : text) {
    if (c == '\n') {
      stored += kStoredLineBreak;
    } else {
      stored += c;
    }
  }
  return stored;
}

}  // namespace

std::uint64_t Dice::Next() {
  state_ += 0x9E3779B97F4A7C15U;
  std::uint64_t mixed = state_;
  mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
  mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
  return mixed ^ (mixed >> 31);
}

std::uint32_t Dice::Below(std::uint32_t limit) {
  return static_cast<std::uint32_t>(Next() % limit);
}

std::string_view Dice::Pick(std::span<const std::string_view> texts) {
  return texts[Below(static_cast<std::uint32_t>(texts.size()))];
}

std::string TimeText(std::time_t time, const char* format) {
  std::tm parts{};
  ::gmtime_r(&time, &parts);
  std::array<char, 64> text{};
  return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

std::string HeaderText(const AreaTexts& texts, std::time_t sent, Dice& dice) {
  const Converter converter(texts.codePage);
  // Each is drawn in a statement of its own, so that the order of the draws is fixed.
  const std::string from(dice.Pick(texts.people));
  const std::string to = PickPeople(texts, 1 + dice.Below(3), dice);
  const std::string copies = PickPeople(texts, dice.Below(3), dice);
  const std::string subject(dice.Pick(texts.subjects));
  const std::string notes = converter.Convert(PickNotes(texts, dice));
  return "[Tallbin]\r\nTXT_From=" + converter.Convert(from) +
         "\r\nSend_Time=" + TimeText(sent, "%Y-%m-%d %H:%M:%S") +
         "\r\nTXT_To=" + converter.Convert(to) + "\r\nTXT_CC=" + converter.Convert(copies) +
         "\r\nTXT_Subject=" + converter.Convert(subject) +
         "\r\nTXT_Notes=" + WithStoredLineBreaks(notes) + "\r\n";
}

std::string AttachmentBytes(std::uint32_t size, Dice& dice) {
  std::string bytes(size, '\0');
  for (std::size_t at = 0; at < bytes.size(); at += sizeof(std::uint64_t)) {
    const std::uint64_t next = dice.Next();
    std::memcpy(bytes.data() + at, &next, std::min(sizeof next, bytes.size() - at));
  }
  return bytes;
}

void SetModified(const std::filesystem::path& path, std::time_t modified) {
  const std::array<timespec, 2> times{timespec{modified, 0}, timespec{modified, 0}};
  if (::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0) {
    throw std::runtime_error("cannot set the time of " + path.string());
  }
}

void WriteAreaFile(const std::filesystem::path& path, std::string_view bytes,
                   std::time_t modified) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
  SetModified(path, modified);
}

}  // namespace updown::peer
