#include "peer/make_area.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>

#include "peer/area_files.h"
#include "peer/area_texts.h"

namespace updown::peer {

namespace {

namespace fs = std::filesystem;

constexpr std::time_t kFirstDay = 1225699920;  // 3 November 2008, 08:12 UTC
constexpr std::uint32_t kMostAttachments = 6;
// A large area stays small on disk: full-sized attachments in the first packages only, tiny ones in
// the next, and then none.
constexpr int kFullSized = 24;
constexpr int kWithAttachments = 300;
constexpr int kAreaOfManyDays = 300;
// The first package has one attachment of each of these sizes, the rest draw from them too.
constexpr std::array<std::uint32_t, 5> kChosenSizes{1'626'113, 1024, 1023, 1536, 0};

enum class Arrival { Complete, HalfArrived, Empty, WithoutStart };

Arrival ArrivalOf(int index, const AreaOptions& options) {
  if (index == 0) return Arrival::Complete;
  if (index == options.packages / 2 && options.packages >= 4) return Arrival::Empty;
  if (index % 5 == 2) return Arrival::HalfArrived;
  return index % 13 == 8 ? Arrival::WithoutStart : Arrival::Complete;
}

std::string PackageName(int index, std::time_t sent) {
  std::string name = TimeText(sent, "%Y%m%d%H%M%S");
  if (index % 7 == 3) name += '#';
  if (index % 14 == 10) name += '#';
  return name;
}

// Nobody writes texts by the megabyte.
bool IsSmallByNature(std::string_view name) {
  constexpr std::array<std::string_view, 4> kTextEndings{".txt", ".csv", ".htm", ".rtf"};
  return name.find('.') == std::string_view::npos ||
         std::any_of(kTextEndings.begin(), kTextEndings.end(),
                     [name](std::string_view ending) { return name.ends_with(ending); });
}

std::uint32_t AttachmentSize(int index, std::uint32_t number, std::string_view name, Dice& dice) {
  if (index == 0 && number < kChosenSizes.size()) return kChosenSizes[number];
  if (index >= kFullSized) return dice.Below(4096);
  if (IsSmallByNature(name)) return dice.Below(12U << 10);
  const std::uint32_t roll = dice.Below(10);
  if (roll == 0) return (512U << 10) + dice.Below(2600U << 10);
  if (roll <= 2) return kChosenSizes[1 + dice.Below(kChosenSizes.size() - 1)];
  return 200 + dice.Below(180U << 10);
}

void MakeAttachments(const fs::path& folder, int index, std::time_t sent, const AreaTexts& texts,
                     Dice& dice) {
  if (index >= kWithAttachments) return;
  const std::uint32_t drawn = dice.Below(kMostAttachments + 1);
  const std::uint32_t count = index == 0 ? static_cast<std::uint32_t>(kChosenSizes.size()) : drawn;
  const std::uint32_t names = static_cast<std::uint32_t>(texts.fileNames.size());
  const std::uint32_t first = index == 0 ? 0 : dice.Below(names);
  for (std::uint32_t number = 0; number < count; ++number) {
    const std::string name(texts.fileNames[(first + number) % names]);
    const std::uint32_t size = AttachmentSize(index, number, name, dice);
    WriteAreaFile(folder / name, AttachmentBytes(size, dice), sent + 10 + number);
  }
}

void MakePackage(const AreaOptions& options, int index, std::time_t sent) {
  const AreaTexts& texts = TextsOf(options.languageId);
  // A package draws its own numbers, so that it looks the same in a small area and in a large one.
  Dice dice((std::uint64_t{options.seed} << 32) + static_cast<std::uint64_t>(index));
  const Arrival arrival = ArrivalOf(index, options);
  const std::string name = PackageName(index, sent);
  const fs::path folder = fs::path(options.folder) / name;
  fs::create_directories(folder);
  if (arrival != Arrival::Empty) {
    const std::string header = HeaderText(texts, sent, dice);
    if (arrival != Arrival::WithoutStart) {
      WriteAreaFile(folder / (name + "_Start.ini"), header, sent);
    }
    if (arrival != Arrival::HalfArrived) {
      WriteAreaFile(folder / (name + ".ini"), header, sent + 60);
      MakeAttachments(folder, index, sent, texts, dice);
    }
  }
  SetModified(folder, sent + 60);
}

}  // namespace

void MakeArea(const AreaOptions& options) {
  const fs::path root(options.folder);
  fs::create_directories(root / "Templates");
  WriteAreaFile(root / "Templates" / "letter.txt", "Dear ...,\r\n", kFirstDay);
  WriteAreaFile(root / "about this area.txt", "Packages only, please.\r\n", kFirstDay);
  SetModified(root / "Templates", kFirstDay);

  Dice days(options.seed);
  const std::uint32_t longestGap = options.packages > kAreaOfManyDays ? 7200 : 93600;
  std::time_t sent = kFirstDay + days.Below(3600);
  for (int index = 0; index < options.packages; ++index) {
    MakePackage(options, index, sent);
    sent += 600 + days.Below(longestGap);
  }
  SetModified(root, sent);
}

}  // namespace updown::peer
