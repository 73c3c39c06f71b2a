#include "service/messages.h"

#include <gtest/gtest.h>

#include "service/result_codes.h"
#include "tests/service/script.h"

namespace updown {
namespace {

using testing::First;
using testing::Framed;
using testing::Wire;

TEST(Exchange, ChecksVersionBeforeCode) {
  const std::string request = Wire("0000000F 01 0004 00001003 0A 0004 01000000 FF");
  const std::string full = Wire("010004 00008000 0A0004 01000000") + std::string(32750, '\0');
  const std::pair<std::string, int> cases[] = {
      {First(0x8000), result::kOk},
      {First(0x6000), result::kOk},
      {Wire("0000000F 010004 00008000 0A0004 00000000 FF"), result::kOk},
      {Wire("0000000F 010004 00008007 0A0004 02000000 FF"), result::kVersionTooHigh},
      {Wire("0000000F 010004 00008000 0A0004 00000002 FF"), result::kOk},
      {Wire("0000000C 010004 00008000 0A0001 00 FF"), result::kOk},
      {Wire("00000011 010004 00008000 0A0006 020000000000 FF"), result::kVersionTooHigh},
      {Wire("0000000D 010004 00008000 020003 'abc' 'next'"), result::kNoVersion},
      {Wire("0000000E 010004 00008000 020003 'abc' 'next'"), result::kNotDecodable},
      {Wire("00000007 010003 008000 FF"), result::kNotDecodable},
      {Wire("00000000 FF"), result::kNotDecodable},
      {Wire("00000008 0A0004 01000000 FF"), result::kNotDecodable},
      {Wire("00000005 01FFFF 0000"), result::kNotDecodable},
      {Wire("0000000F 010004 00008000 0A0004 0100"), result::kConnection},
      // Exactly the buffer, and one byte more.
      {Framed(full), result::kOk},
      {Framed(full + '\0'), result::kConnection},
      {Wire("FFFFFFFF") + std::string(40000, '\0'), result::kConnection},
  };
  for (const auto& [answer, result] : cases) {
    const std::size_t piece = answer.size() > 100 ? 0 : 1;
    testing::ServicePeer peer({{request, answer}}, piece);
    MessageBuffer buffer(kExchangeCapacity);
    ServiceReply reply;
    EXPECT_EQ(ExchangeChecked(peer.Link(), message::kList, {}, buffer, reply), result)
        << ::testing::PrintToString(answer.substr(0, 30));
  }
}

}  // namespace
}  // namespace updown
