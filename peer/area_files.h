#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "peer/area_texts.h"

namespace updown::peer {

// Numbers that are the same for the same seed on every machine.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : state_(seed) {}
  std::uint64_t Next();
  std::uint32_t Below(std::uint32_t limit);  // limit above 0
  std::string_view Pick(std::span<const std::string_view> texts);

 private:
  std::uint64_t state_;
};

// The bytes of one header file, in the code page of `texts`: lines end with CR LF, and a line break
// inside the note is stored as FF FF. Throws std::runtime_error if the code page is not to be had.
std::string HeaderText(const AreaTexts& texts, std::time_t sent, Dice& dice);

std::string AttachmentBytes(std::uint32_t size, Dice& dice);

// Both set the modification time; the first throws std::runtime_error if the file cannot be
// written.
void WriteAreaFile(const std::filesystem::path& path, std::string_view bytes, std::time_t modified);
void SetModified(const std::filesystem::path& path, std::time_t modified);

// A time as text, in the format of strftime, UTC.
std::string TimeText(std::time_t time, const char* format);

}  // namespace updown::peer
