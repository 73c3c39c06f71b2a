#pragma once

#include <cstdint>

namespace updown::result {

// Every operation of the file service gives 0 or one of these. Windows show them without sign.
// Other negative numbers can come from the service (24576 minus its reply code) and read as an
// unknown error.
inline constexpr int kOk = 0;
inline constexpr int kConnection = -8194;      // send or receive failed, peer closed, reply too big
inline constexpr int kNotEncodable = -8195;    // the request does not fit, or memory ran out
inline constexpr int kNotDecodable = -8196;    // the reply is bad or not of the kind expected
inline constexpr int kService8197 = -8197;     // reply 32773 of the first dialect
inline constexpr int kAuthentication = -8198;  // a login is needed or failed
inline constexpr int kAccessRefused = -8199;   // refused by the service, or status text "500"
inline constexpr int kBusy = -8200;
inline constexpr int kFileOpen = -8201;   // a local file cannot be opened or read
inline constexpr int kFileWrite = -8202;  // a local file cannot be written
inline constexpr int kService8210 = -8210;
inline constexpr int kNoSuchRemoteFile = -8211;
inline constexpr int kBadCharacters = -8212;
inline constexpr int kLanguageSettings = -8213;
inline constexpr int kInterrupted = -8215;
inline constexpr int kNotImplemented = -8216;  // also: a file of 2 GiB or more
inline constexpr int kNoVersion = -65534;      // no version attribute: the second dialect
inline constexpr int kVersionTooHigh = -65535;

// As windows show it. The service can bring about every number, also the lowest one, whose negation
// does not exist, and positive ones.
constexpr std::uint32_t WithoutSign(int code) {
  const auto bits = static_cast<std::uint32_t>(code);
  return code < 0 ? 0U - bits : bits;
}

}  // namespace updown::result
