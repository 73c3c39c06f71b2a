#include "peer/service_side.h"

#include <array>
#include <chrono>
#include <utility>

#include "peer/listing.h"

namespace updown::peer {

namespace {

using std::chrono::milliseconds;

// A window may stand untouched for long, but a client that is gone without a word must not hold a
// thread for ever.
constexpr milliseconds kIdleBound{3'600'000};
constexpr milliseconds kFrameBound{60'000};
constexpr std::uint32_t kLongestRequest = 1U << 20;
constexpr std::uint32_t kLargestBlock = 64U << 20;
constexpr std::size_t kOversizedData = 40000;  // a client's buffer holds 32768 bytes

bool Is(const std::optional<Fault>& fault, Fault::Kind kind) {
  return fault && fault->kind == kind;
}

}  // namespace

ServiceConnection::ServiceConnection(World& world, Connection& connection)
    : world_(world), connection_(connection), dialect_(*world.dialect) {}

void ServiceConnection::Run() {
  const Joins::Guard joined(world_.joins);
  while (ServeOne()) {
  }
}

bool ServiceConnection::ServeOne() {
  Bytes frame(4);
  if (!connection_.ReceiveExact(frame.data(), frame.size(), kIdleBound)) return false;
  const std::uint32_t length = Number32At(frame, 0);
  if (length > kLongestRequest) return false;
  frame.resize(4 + std::size_t{length});
  if (!connection_.ReceiveExact(frame.data() + 4, length, kFrameBound)) return false;

  const View body = View(frame).subspan(4);
  const auto list = List::Read(body);
  const auto code = list ? list->Number32(tag::kCode) : std::nullopt;
  if (!code || !list->Has(tag::kVersion)) return false;
  const Request request{*code, list->Value(tag::kData), body.subspan(list->Consumed())};
  return Answer(request, frame);
}

bool ServiceConnection::Answer(const Request& request, const Bytes& frame) {
  world_.requests.Add(request.message, frame);
  const auto fault = world_.faults.Meet(request.message);
  if (Is(fault, Fault::Kind::DropBefore)) return false;
  if (Is(fault, Fault::Kind::Stall)) {
    connection_.WaitForClose();
    return false;
  }
  if (Is(fault, Fault::Kind::BadList)) {
    return connection_.Send(Framed(Bytes{tag::kCode, 0, 4, 0, 0, 128, 0, tag::kData, 0xFF, 0xFF}));
  }
  const bool replaced = fault && ReplacesReply(fault->kind);
  Reply reply = replaced ? Replacement(*fault) : Perform(request, fault);
  if (!connection_.Pause(world_.delays.Of(request.message))) return false;
  if (fault) return SendSpoiled(*fault, request.message, std::move(reply));
  Bytes bytes = FrameOf(reply);
  if (reply.tail.size() <= kLongestRequest) {
    PutBytes(bytes, reply.tail);
    return connection_.Send(bytes);
  }
  return connection_.Send(bytes) && connection_.Send(reply.tail);
}

bool ServiceConnection::SendSpoiled(const Fault& fault, std::uint32_t message, Reply reply) {
  if (fault.kind == Fault::Kind::NoCode) reply.code.reset();
  Bytes bytes = FrameOf(reply);
  if (fault.kind == Fault::Kind::DropInside) {
    if (message == message::kReadBlock) {
      PutBytes(bytes, View(reply.tail).first(reply.tail.size() / 2));
    } else {
      bytes.resize(bytes.size() / 2);
    }
    connection_.Send(bytes);
    return false;
  }
  PutBytes(bytes, reply.tail);
  const bool ends = fault.kind == Fault::Kind::DropAfter ||
                    (fault.kind == Fault::Kind::CutListing && message == message::kList);
  return connection_.Send(bytes) && !ends;
}

Reply ServiceConnection::Replacement(const Fault& fault) const {
  if (fault.kind == Fault::Kind::WrongCode) return dialect_.WithCode(fault.code);
  Reply reply = dialect_.Done(message::kInformation);
  reply.data.assign(kOversizedData, 'x');
  return reply;
}

Reply ServiceConnection::Perform(const Request& request, const std::optional<Fault>& fault) {
  switch (request.message) {
    case message::kOpenSession:
      return OpenSession(request);
    case message::kAttach:
      return Attach(request);
    case message::kLogin:
      return Login(request);
    default:
      if (request.message < message::kLogin || request.message > message::kInformation) {
        return dialect_.Unknown(request.message);
      }
      if (!authenticated_) return dialect_.LoginNeeded(request.message);
      return PerformInFolder(request, fault);
  }
}

Reply ServiceConnection::PerformInFolder(const Request& request,
                                         const std::optional<Fault>& fault) {
  const std::string path = AsText(request.data);
  switch (request.message) {
    case message::kList:
      return ListFolder(request, fault);
    case message::kCreateFolder:
      return Outcome(request.message, world_.folder.CreateFolder(path));
    case message::kRemoveFolder:
      return Outcome(request.message, world_.folder.RemoveFolder(path));
    case message::kRemoveFile:
      return Outcome(request.message, world_.folder.RemoveFile(path));
    case message::kRename:
      return Rename(request);
    case message::kReadBlock:
      return ReadBlock(request, fault);
    case message::kWriteBlock:
      return WriteBlock(request);
    default:
      return Information(request);
  }
}

Reply ServiceConnection::OpenSession(const Request& request) {
  const auto list = List::Read(request.data);
  if (!list) return dialect_.Refused(request.message, Refusal::NotAllowed);
  authenticated_ = !world_.options.login.has_value();
  sessid_ = world_.sessions.Issue(authenticated_);
  return dialect_.SessionOpened(list->Text(tag::kAppid), sessid_, authenticated_);
}

Reply ServiceConnection::Attach(const Request& request) {
  const std::string sessid = dialect_.AttachedSession(request.data);
  if (!world_.sessions.IsAuthenticated(sessid)) return dialect_.LoginNeeded(request.message);
  sessid_ = sessid;
  authenticated_ = true;
  return dialect_.Attached();
}

Reply ServiceConnection::Login(const Request& request) {
  const auto list = List::Read(request.data);
  const auto& login = world_.options.login;
  const bool right = list && !sessid_.empty() &&
                     (!login || (list->Text(tag::kUser) == login->user &&
                                 list->Text(tag::kPassword) == login->password &&
                                 list->Text(tag::kRealm) == login->realm));
  if (!right) return dialect_.LoginNeeded(request.message);
  authenticated_ = true;
  world_.sessions.Authenticate(sessid_);
  return dialect_.Done(request.message);
}

Reply ServiceConnection::ListFolder(const Request& request,
                                    const std::optional<Fault>& fault) const {
  std::vector<FolderEntry> entries;
  const Refusal refusal = world_.folder.ListEntries(AsText(request.data), entries);
  Reply reply = Outcome(request.message, refusal);
  if (refusal == Refusal::None) reply.tail = EncodeListing(entries, fault);
  return reply;
}

Reply ServiceConnection::Rename(const Request& request) const {
  const auto list = List::Read(request.data);
  if (!list) return dialect_.Refused(request.message, Refusal::BadName);
  return Outcome(request.message,
                 world_.folder.Rename(list->Text(tag::kOldPath), list->Text(tag::kNewPath)));
}

Reply ServiceConnection::ReadBlock(const Request& request,
                                   const std::optional<Fault>& fault) const {
  const auto list = List::Read(request.data);
  const auto offset = list ? list->Number32(tag::kOffset) : std::nullopt;
  if (!offset) return dialect_.Refused(request.message, Refusal::BadName);
  BlockPlace place{*offset, list->Text(tag::kPath)};
  const std::uint32_t length =
      Is(fault, Fault::Kind::EmptyBlock) ? 0 : std::min(world_.blockLength.load(), kLargestBlock);
  Bytes block;
  const Refusal refusal = world_.folder.ReadBlock(place.path, place.offset, length, block);
  if (refusal != Refusal::None) return dialect_.Refused(request.message, refusal);
  if (Is(fault, Fault::Kind::WrongOffset)) place.offset += fault->code;
  if (Is(fault, Fault::Kind::LongBlock)) block.resize(block.size() + fault->code);
  return dialect_.Block(place, std::move(block));
}

Reply ServiceConnection::WriteBlock(const Request& request) const {
  const auto list = List::Read(request.data);
  const auto offset = list ? list->Number32(tag::kOffset) : std::nullopt;
  const auto length = list ? list->Number32(tag::kLength) : std::nullopt;
  if (!offset || length != request.behindList.size()) {
    return dialect_.Refused(request.message, Refusal::BadName);
  }
  return Outcome(request.message,
                 world_.folder.WriteBlock(list->Text(tag::kPath), *offset, request.behindList));
}

Reply ServiceConnection::Information(const Request& request) const {
  FolderEntry entry;
  const Refusal refusal = world_.folder.FileInformation(AsText(request.data), entry);
  if (refusal != Refusal::None) return dialect_.Refused(request.message, refusal);
  return dialect_.Information(ListWriter()
                                  .PutText(tag::kName, entry.name)
                                  .Put32(tag::kModified, entry.time)
                                  .Put32(tag::kSize, entry.size)
                                  .End());
}

Reply ServiceConnection::Outcome(std::uint32_t message, Refusal refusal) const {
  return refusal == Refusal::None ? dialect_.Done(message) : dialect_.Refused(message, refusal);
}

}  // namespace updown::peer
