#include "peer/dialects.h"

#include <stdexcept>
#include <utility>

namespace updown::peer {

namespace {

constexpr std::array<std::uint8_t, 4> kVersionBytes{1, 0, 0, 0};

// Replies that carry the version say yes or no by their code.
class FirstDialect final : public Dialect {
 public:
  Reply Done(std::uint32_t) const override { return WithCode(kSuccess); }

  Reply Refused(std::uint32_t message, Refusal refusal) const override {
    if (refusal == Refusal::BadName) return WithCode(kBadName);
    const bool aFile = message == message::kInformation || message == message::kReadBlock ||
                       message == message::kRemoveFile || message == message::kRename;
    return WithCode(refusal == Refusal::NotFound && aFile ? kNoSuchFile : kNotAllowed);
  }

  Reply LoginNeeded(std::uint32_t) const override { return WithCode(kLoginNeeded); }
  Reply Unknown(std::uint32_t) const override { return WithCode(kNotImplemented); }

  Reply SessionOpened(const std::string&, const std::string& sessid,
                      bool authenticated) const override {
    return WithData(authenticated ? kSuccess : kLoginNeeded, Bytes(sessid.begin(), sessid.end()));
  }

  Reply Attached() const override { return WithCode(kSuccess); }

  Reply Block(const BlockPlace&, Bytes bytes) const override {
    Bytes length;
    PutNumber32(length, static_cast<std::uint32_t>(bytes.size()));
    Reply reply = WithData(kSuccess, std::move(length));
    reply.tail = std::move(bytes);
    return reply;
  }

  Reply Information(Bytes list) const override { return WithData(kSuccess, std::move(list)); }
  Reply WithCode(std::uint32_t code) const override { return WithData(code, {}); }

  std::string AttachedSession(View data) const override {
    const auto list = List::Read(data);
    return list ? list->Text(tag::kSessid) : std::string{};
  }

 private:
  static constexpr std::uint32_t kSuccess = 32768;
  static constexpr std::uint32_t kLoginNeeded = 32774;
  static constexpr std::uint32_t kNotAllowed = 32775;
  static constexpr std::uint32_t kNoSuchFile = 32787;
  static constexpr std::uint32_t kBadName = 32788;
  static constexpr std::uint32_t kNotImplemented = 32792;

  static Reply WithData(std::uint32_t code, Bytes data) {
    return {.code = code, .data = std::move(data), .version = true, .tail = {}};
  }
};

// Replies without a version say yes or no by a status text, and each message has a code of its own.
// Neither status text reads as an attribute list: its length would run past its end.
class SecondDialect final : public Dialect {
 public:
  Reply Done(std::uint32_t message) const override { return WithText(message, kYes); }
  Reply Refused(std::uint32_t message, Refusal) const override { return WithText(message, kNo); }

  Reply LoginNeeded(std::uint32_t message) const override {
    const bool ofSession = message == message::kAttach || message == message::kOpenSession;
    return WithText(ofSession ? kLoginNeeded : message, kNo);
  }

  Reply Unknown(std::uint32_t message) const override { return WithText(message, kNo); }

  Reply SessionOpened(const std::string& appid, const std::string& sessid,
                      bool authenticated) const override {
    ListWriter list;
    list.Put8(tag::kSessionState, authenticated ? 2 : 1);
    if (!appid.empty()) list.PutText(tag::kAppid, appid);
    list.PutText(tag::kSessid, sessid);
    return WithData(kSessionGranted, list.End());
  }

  Reply Attached() const override { return WithText(kAttached, kYes); }

  Reply Block(const BlockPlace& place, Bytes bytes) const override {
    Bytes list = ListWriter()
                     .Put32(tag::kOffset, place.offset)
                     .Put32(tag::kLength, static_cast<std::uint32_t>(bytes.size()))
                     .PutText(tag::kPath, place.path)
                     .End();
    Reply reply = WithData(message::kReadBlock, std::move(list));
    reply.tail = std::move(bytes);
    return reply;
  }

  Reply Information(Bytes list) const override {
    return WithData(message::kInformation, std::move(list));
  }

  Reply WithCode(std::uint32_t code) const override { return WithText(code, kYes); }
  std::string AttachedSession(View data) const override { return AsText(data); }

 private:
  static constexpr std::uint32_t kSessionGranted = 32773;
  static constexpr std::uint32_t kLoginNeeded = 32774;
  static constexpr std::uint32_t kAttached = 4096;
  static constexpr std::string_view kYes = "200";
  static constexpr std::string_view kNo = "500";

  static Reply WithData(std::uint32_t code, Bytes data) {
    return {.code = code, .data = std::move(data), .version = false, .tail = {}};
  }
  static Reply WithText(std::uint32_t code, std::string_view text) {
    return WithData(code, Bytes(text.begin(), text.end()));
  }
};

}  // namespace

Bytes FrameOf(const Reply& reply) {
  ListWriter list;
  if (reply.code) list.Put32(tag::kCode, *reply.code);
  if (!reply.data.empty()) list.Put(tag::kData, reply.data);
  if (reply.version) list.Put(tag::kVersion, kVersionBytes);
  return Framed(list.End());
}

std::unique_ptr<const Dialect> MakeDialect(int number) {
  if (number == 1) return std::make_unique<FirstDialect>();
  if (number == 2) return std::make_unique<SecondDialect>();
  throw std::invalid_argument("there are dialects 1 and 2");
}

}  // namespace updown::peer
