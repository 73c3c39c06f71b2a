#include "service/operations.h"

#include <gtest/gtest.h>

#include <functional>

#include "service/messages.h"
#include "tests/service/script.h"
#include "tests/wire/scripted_peer.h"

namespace updown {
namespace {

using testing::Attribute;
using testing::First;
using testing::Framed;
using testing::Number;
using testing::ScriptedPeer;
using testing::Second;
using testing::Wire;

struct Answer {
  std::string reply;
  int result;
};

struct Operation {
  const char* name;
  std::function<int(const ServiceOps&, int)> call;
  std::string request;
  std::vector<Answer> first;
  std::vector<Answer> second;
};

void Check(const Operation& operation, const ServiceOps& ops, const std::vector<Answer>& answers) {
  for (const Answer& answer : answers) {
    ScriptedPeer peer({{operation.request, answer.reply}}, 7);
    EXPECT_EQ(operation.call(ops, peer.Socket()), answer.result)
        << operation.name << ::testing::PrintToString(answer.reply);
    EXPECT_EQ(peer.Finish(), "") << operation.name;
  }
}

TEST(Operations, RequestsAndRepliesTable) {
  const std::vector<Answer> checked = {{First(0x8000), result::kOk},
                                       {First(0x8007), result::kAccessRefused},
                                       {First(0x8008), result::kBusy},
                                       {Second(0x8000), result::kNoVersion},
                                       {"", result::kConnection}};
  const std::vector<Answer> byStatus = {{Second(0x1234, "200"), result::kOk},
                                        {Second(0x8000, "501"), result::kOk},
                                        {Second(0x8000, "500"), result::kAccessRefused},
                                        {Second(0x8000), result::kAccessRefused},
                                        {"", result::kConnection}};
  const Operation operations[] = {
      {"Authenticate",
       [](const ServiceOps& ops, int socket) {
         return ops.Authenticate(socket, "12", "ann", "pw", "lab");
       },
       Wire("00000029 01 0004 00001002 02 0017 A00003'ann' A10002'pw' A20003'lab' A50002'12' FF "
            "0A 0004 01000000 FF"),
       checked,
       {{Second(4098, "200"), result::kOk},
        {Second(4098, "500"), result::kAuthentication},
        {Second(4099, "200"), result::kAuthentication},
        {"", result::kConnection}}},
      {"CreateFolder",
       [](const ServiceOps& ops, int socket) { return ops.CreateFolder(socket, "/a"); },
       Wire("00000014 01 0004 00001004 02 0002 '/a' 0A 0004 01000000 FF"), checked, byStatus},
      {"RemoveFolder",
       [](const ServiceOps& ops, int socket) { return ops.RemoveFolder(socket, "/a"); },
       Wire("00000014 01 0004 00001005 02 0002 '/a' 0A 0004 01000000 FF"), checked, byStatus},
      {"RenameEntry",
       [](const ServiceOps& ops, int socket) { return ops.RenameEntry(socket, "/nn", "/o"); },
       Wire("0000001E 01 0004 00001006 02 000C B10002'/o' B20003'/nn' FF 0A 0004 01000000 FF"),
       checked, byStatus},
      {"RemoveFile", [](const ServiceOps& ops, int socket) { return ops.RemoveFile(socket, ""); },
       Wire("0000000F 01 0004 00001007 0A 0004 01000000 FF"), checked, byStatus},
  };
  for (const Operation& operation : operations) {
    Check(operation, FirstDialect(), operation.first);
    Check(operation, SecondDialect(), operation.second);
  }
}

TEST(Operations, ListsThatDoNotFitAreNotSent) {
  const std::string tooLong(1024, 'x');
  for (const ServiceOps* ops : {&FirstDialect(), &SecondDialect()}) {
    ScriptedPeer peer({});
    std::string sessid = tooLong;
    EXPECT_EQ(ops->Authenticate(peer.Socket(), "", tooLong, "", ""), result::kNotEncodable);
    EXPECT_EQ(ops->RenameEntry(peer.Socket(), "", tooLong), result::kNotEncodable);
    EXPECT_EQ(ops->OpenSession(peer.Socket(), sessid, "", 4352), result::kNotEncodable);
    EXPECT_EQ(ops->OpenSession(peer.Socket(), sessid, "", 4353), result::kNotEncodable);
    EXPECT_EQ(sessid, tooLong);
    EXPECT_EQ(peer.Finish(), "");
  }
}

const std::string kOpen =
    Wire("0000001E 01 0004 00001100 02 000C A50002'12' A60003'old' FF 0A 0004 01000000 FF");
const std::string kOpenEmpty = Wire("0000000F 01 0004 00001100 0A 0004 01000000 FF");

TEST(Session, OpenAndAttachTable) {
  struct Case {
    const ServiceOps& ops;
    std::uint32_t code;
    const char* appid;
    const char* sessid;
    std::string request;
    std::string reply;
    int result;
    std::string sessidAfter;
  };
  const std::string attachList =
      Wire("0000001E 01 0004 00001101 02 000C A50002'12' A60003'old' FF 0A 0004 01000000 FF");
  const std::string attachRaw = Wire("00000015 01 0004 00001101 02 0003 'old' 0A 0004 01000000 FF");
  const std::string attachNone = Wire("0000000F 01 0004 00001101 0A 0004 01000000 FF");
  const std::string granted = Wire("07 0001 02 A5 0002 '12' A6 0003 'new' FF");
  const std::string asked = Wire("07 0001 01 A6 0003 'new' FF");
  const ServiceOps& one = FirstDialect();
  const ServiceOps& two = SecondDialect();
  const Case cases[] = {
      {one, 4352, "12", "old", kOpen, First(0x8000, "new"), 0, "new"},
      {one, 4352, "12", "old", kOpen, First(0x8006, "new"), result::kAuthentication, "new"},
      {one, 4352, "12", "old", kOpen, First(0x8000), 0, ""},
      {one, 4352, "12", "old", kOpen, First(0x8008, "new"), result::kBusy, "old"},
      {one, 4352, "12", "old", kOpen, Second(0x8005, "new"), result::kNoVersion, "new"},
      {one, 4352, "", "", kOpenEmpty, First(0x8000, "new"), 0, "new"},
      {one, 4352, "", "", kOpenEmpty, "", result::kConnection, ""},
      {one, 4353, "12", "old", attachList, First(0x8000, "new"), 0, "old"},
      {one, 4353, "", "", attachNone, First(0x8006), result::kAuthentication, ""},
      {two, 4352, "12", "old", kOpen, Second(0x8005, granted), 0, "new"},
      {two, 4352, "12", "old", kOpen, Second(0x8005, asked), result::kAuthentication, "new"},
      {two, 4352, "12", "old", kOpen, Second(0x8005, "07x"), result::kAuthentication, "07x"},
      {two, 4352, "12", "old", kOpen, Second(0x8005), result::kAuthentication, "old"},
      {two, 4352, "", "", kOpenEmpty, Second(0x8006), result::kAuthentication, ""},
      {two, 4352, "12", "old", kOpen, Second(0x8008), result::kBusy, "old"},
      {two, 4352, "12", "old", kOpen, Second(0x8000), result::kNotDecodable, "old"},
      {two, 4353, "12", "old", attachRaw, Second(0x1000), 0, "old"},
      {two, 4353, "12", "old", attachRaw, Second(0x8000), result::kAuthentication, "old"},
      {two, 4353, "", "", attachNone, Second(0x1000), 0, ""},
  };
  for (const Case& example : cases) {
    const auto where = ::testing::PrintToString(example.reply);
    ScriptedPeer peer({{example.request, example.reply}});
    std::string sessid = example.sessid;
    EXPECT_EQ(example.ops.OpenSession(peer.Socket(), sessid, example.appid, example.code),
              example.result)
        << where;
    EXPECT_EQ(sessid, example.sessidAfter) << where;
    EXPECT_EQ(peer.Finish(), "") << where;
  }
}

TEST(Session, NegotiationSettlesTheDialectOnce) {
  struct Case {
    std::string reply;
    int result;
    std::string sessid;
    bool second;
  };
  const std::string granted = Wire("07 0001 02 A6 0001 's' FF");
  const Case cases[] = {
      {First(0x8000, "s"), 0, "s", false},
      {First(0x8006, "s"), result::kAuthentication, "s", false},
      {Wire("0000000F 010004 00008000 0A0004 02000000 FF"), result::kVersionTooHigh, "old", false},
      {"", result::kConnection, "old", false},
      {Second(0x8005, granted), 0, "s", true},
      {Second(0x8005, Wire("07 0001 01 A6 0001 's' FF")), result::kAuthentication, "s", true},
      {Second(0x8005, Wire("A6 0001 's' FF")), result::kAuthentication, "s", true},
      {Second(0x8005, Wire("07 0001 02 FF")), 0, "", true},
      {Second(0x8005, Wire("07 0009")), result::kAuthentication, Wire("07 0009"), true},
  };
  for (const Case& example : cases) {
    const auto where = ::testing::PrintToString(example.reply);
    FileService service;
    std::string sessid = "old";
    ScriptedPeer peer({{kOpen, example.reply}});
    EXPECT_EQ(service.NegotiateSession(peer.Socket(), sessid, "12", 4352), example.result) << where;
    EXPECT_EQ(sessid, example.sessid) << where;
    EXPECT_EQ(&service.Ops(), example.second ? &SecondDialect() : &FirstDialect()) << where;
    // The dialect stays, whatever comes now.
    ScriptedPeer next({{"", Second(0x8005, granted)}});
    EXPECT_EQ(service.NegotiateSession(next.Socket(), sessid, "12", 4352),
              example.second ? 0 : result::kNoVersion)
        << where;
    EXPECT_EQ(&service.Ops(), example.second ? &SecondDialect() : &FirstDialect()) << where;
  }
}

std::string Entry(const std::string& name, const char* type) {
  return Framed(Attribute(16, name) +
                Wire("11 0004 00000001 12 0004 00000002 13 0004 5F000000 "
                     "14 0004 00010203 15 0002 0004 16 0002 ") +
                Wire(type) + '\xFF');
}

TEST(Listing, Table) {
  const std::string dot = Entry(".", "0007");
  const std::string file = Entry("caf\xC3\xA9", "0008");
  const std::string end = Number(0);
  struct Case {
    const char* name;
    std::string entries;
    int error;
    std::size_t count;
  };
  std::string many;
  for (int n = 0; n < 2000; ++n) {
    many += Entry("entry" + std::to_string(n), "0008");
  }
  const Case cases[] = {
      {"empty", end, 0, 0},
      {"two", dot + file + end, 0, 2},
      {"broken off", dot + file + file.substr(0, 20), result::kConnection, 2},
      {"nothing behind the reply", "", result::kConnection, 0},
      {"many", many + end, 0, 2000},
      {"bad list", dot + Wire("00000003 110004") + file + end, 0, 1},
      {"no type", dot + Framed(Wire("10 0001 'x' 11 0004 00000001 FF")) + end, 0, 1},
      {"short number",
       dot +
           Framed(Wire("10 0001 'x' 11 0004 00000001 12 0004 00000002 13 0004 5F000000 "
                       "14 0004 00010203 15 0001 04 16 0002 0008 FF")) +
           end,
       0, 1},
      {"entry longer than the buffer", dot + Number(32765) + std::string(40000, '\0'),
       result::kConnection, 1},
      {"length near 2^32", dot + Wire("FFFFFFFF") + std::string(40000, '\0'), result::kConnection,
       1},
  };
  for (const Case& example : cases) {
    for (const bool second : {false, true}) {
      const std::string reply = second ? Second(4099, "200") : First(0x8000);
      ScriptedPeer peer({{Wire("00000014 01 0004 00001003 02 0002 '/d' 0A 0004 01000000 FF"),
                          reply + example.entries}},
                        example.entries.size() < 300 ? 5 : 0);
      const ServiceOps& ops = second ? SecondDialect() : FirstDialect();
      const FolderListing listing = ops.ListFolder(peer.Socket(), "/d");
      EXPECT_EQ(listing.error, example.error) << example.name;
      EXPECT_EQ(listing.chain.Size(), example.count) << example.name;
    }
  }
}

TEST(Listing, EntryFieldsAndOrder) {
  ScriptedPeer peer({{"", First(0x8000) + Entry("..", "0007") + Entry("b", "0008") + Number(0)}});
  const FolderListing listing = FirstDialect().ListFolder(peer.Socket(), "/");
  ASSERT_EQ(listing.chain.Size(), 2U);
  EXPECT_EQ(listing.chain.First()->name, "..");
  EXPECT_EQ(listing.chain.First()->type, kEntryFolder);
  const DirectoryEntry& entry = *listing.chain.First()->next;
  EXPECT_EQ(entry.name, "b");
  EXPECT_EQ(entry.field17, 1U);
  EXPECT_EQ(entry.field18, 2U);
  EXPECT_EQ(entry.modificationTime, 0x5F000000U);
  EXPECT_EQ(entry.size, 0x00010203U);
  EXPECT_EQ(entry.field21, 4U);
  EXPECT_EQ(entry.type, kEntryFile);
}

TEST(Listing, RefusalsByDialect) {
  const auto error = [](const ServiceOps& ops, const std::string& reply) {
    ScriptedPeer peer({{"", reply}});
    return ops.ListFolder(peer.Socket(), "/d").error;
  };
  EXPECT_EQ(error(FirstDialect(), First(0x8007)), result::kAccessRefused);
  EXPECT_EQ(error(FirstDialect(), Wire("00000003 01 0009")), result::kNotDecodable);
  EXPECT_EQ(error(SecondDialect(), Second(4099, "500")), result::kAccessRefused);
  EXPECT_EQ(error(SecondDialect(), Wire("00000003 01 0009")), result::kConnection);
}

}  // namespace
}  // namespace updown
