#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "service/listing.h"
#include "service/messages.h"
#include "service/nested_list.h"

// A frame with the lists that its data may hold, and a run of listing entries.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace updown;
  Bytes bytes(data, size);
  ServiceReply reply;
  const int frame = DecodeMessage(bytes, reply);
  if (frame > 0) {
    if (static_cast<std::size_t>(frame) > size || reply.data.size() > size) {
      std::abort();
    }
    DecodeSessionGrant(reply.data);
    DecodeFileInformation(reply.data);
    DecodeBlockRequest(reply.data);
    ReplyFailed(reply);
  }
  for (TakenEntry taken = TakeEntry(bytes); taken.kind == EntryKind::Entry;
       taken = TakeEntry(bytes)) {
    if (taken.consumed > bytes.size()) {
      std::abort();
    }
    bytes = bytes.subspan(taken.consumed);
  }
  return 0;
}
