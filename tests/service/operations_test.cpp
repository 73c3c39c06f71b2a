#include "service/operations.h"

#include <gtest/gtest.h>

#include <functional>

#include "service/listing.h"
#include "tests/service/script.h"

namespace updown {
namespace {

using testing::Attribute;
using testing::First;
using testing::Framed;
using testing::Number;
using testing::Request;
using testing::Second;
using testing::ServicePeer;
using testing::Wire;

TEST(Operations, RequestsAndRepliesTable) {
  using Answers = std::vector<std::pair<std::string, int>>;
  const std::string end = Number(0);  // which a listing alone reads
  const Answers checked = {{First(0x8000) + end, result::kOk},
                           {First(0x8007), result::kAccessRefused},
                           {Second(0x8000), result::kNoVersion},
                           {"", result::kConnection}};
  const Answers byStatus = {{Second(0x1234, "200") + end, result::kOk},
                            {Second(0x8000, "501") + end, result::kOk},
                            {Second(0x8000, "500"), result::kAccessRefused},
                            {Second(0x8000), result::kAccessRefused},
                            {"", result::kConnection}};
  Answers listed = byStatus;
  listed.emplace_back(Wire("00000003 01 0009"), result::kConnection);
  const Answers login = {{Second(4098, "200"), result::kOk},
                         {Second(4098, "500"), result::kAuthentication},
                         {Second(4099, "200"), result::kAuthentication},
                         {"", result::kConnection}};
  const struct {
    std::function<int(const ServiceOps&, Connection&)> call;
    std::string request;
    const Answers& second;
  } operations[] = {
      {[](const ServiceOps& ops, Connection& to) {
         return ops.Authenticate(to, "12", "ann", "pw", "lab");
       },
       Request(0x1002, Wire("A00003'ann' A10002'pw' A20003'lab' A50002'12' FF")), login},
      {[](const ServiceOps& ops, Connection& to) { return ops.ListFolder(to, "/a").error; },
       Request(0x1003, "/a"), listed},
      {[](const ServiceOps& ops, Connection& to) { return ops.CreateFolder(to, "/a"); },
       Request(0x1004, "/a"), byStatus},
      {[](const ServiceOps& ops, Connection& to) { return ops.RemoveFolder(to, "/a"); },
       Request(0x1005, "/a"), byStatus},
      {[](const ServiceOps& ops, Connection& to) { return ops.RenameEntry(to, "/nn", "/o"); },
       Request(0x1006, Wire("B10002'/o' B20003'/nn' FF")), byStatus},
      {[](const ServiceOps& ops, Connection& to) { return ops.RemoveFile(to, ""); },
       Request(0x1007), byStatus},
  };
  for (const auto& operation : operations) {
    for (const ServiceOps* ops : {&FirstDialect(), &SecondDialect()}) {
      for (const auto& [reply, result] : ops == &FirstDialect() ? checked : operation.second) {
        ServicePeer peer({{operation.request, reply}}, 7);
        EXPECT_EQ(operation.call(*ops, peer.Link()), result);
        EXPECT_EQ(peer.Finish(), "");
      }
    }
  }
}

TEST(Operations, ListsThatDoNotFitAreNotSent) {
  for (const ServiceOps* ops : {&FirstDialect(), &SecondDialect()}) {
    ServicePeer peer({});
    std::string sessid(1024, 'x');
    EXPECT_EQ(ops->Authenticate(peer.Link(), "", sessid, "", ""), result::kNotEncodable);
    EXPECT_EQ(ops->RenameEntry(peer.Link(), "", sessid), result::kNotEncodable);
    EXPECT_EQ(ops->RemoveFile(peer.Link(), std::string(32768, 'x')), result::kNotEncodable);
    EXPECT_EQ(ops->OpenSession(peer.Link(), sessid, "", 4352), result::kNotEncodable);
    EXPECT_EQ(ops->OpenSession(peer.Link(), sessid, "", 4353), result::kNotEncodable);
    EXPECT_EQ(peer.Finish(), "");
  }
}

const std::string kOpen = Request(0x1100, Wire("A50002'12' A60003'old' FF"));

TEST(Session, OpenAndAttachTable) {
  const std::string attachList = Request(0x1101, Wire("A50002'12' A60003'old' FF"));
  const std::string attachRaw = Request(0x1101, "old");
  const std::string openNew = Request(0x1100, Wire("A50002'12' FF"));
  const std::string granted = Wire("07 0001 02 A5 0002 '12' A6 0003 'new' FF");
  const std::string asked = Wire("07 0001 01 A6 0003 'new' FF");
  const ServiceOps& one = FirstDialect();
  const ServiceOps& two = SecondDialect();
  const struct {
    const ServiceOps& ops;
    std::uint32_t code;
    const char* sessid;
    std::string request;
    std::string reply;
    int result;
    std::string sessidAfter;
  } cases[] = {
      {one, 4352, "old", kOpen, First(0x8000, "new"), 0, "new"},
      {one, 4352, "old", kOpen, First(0x8006, "new"), result::kAuthentication, "new"},
      {one, 4352, "old", kOpen, First(0x8000), 0, ""},
      {one, 4352, "old", kOpen, First(0x8008, "new"), result::kBusy, "old"},
      {one, 4352, "old", kOpen, Second(0x8005, "new"), result::kNoVersion, "new"},
      {one, 4352, "", openNew, "", result::kConnection, ""},
      {one, 4353, "old", attachList, First(0x8000, "new"), 0, "old"},
      {one, 4353, "old", attachList, First(0x8006), result::kAuthentication, "old"},
      {two, 4352, "old", kOpen, Second(0x8005, granted), 0, "new"},
      {two, 4352, "old", kOpen, Second(0x8005, asked), result::kAuthentication, "new"},
      {two, 4352, "old", kOpen, Second(0x8005, "07x"), result::kAuthentication, "07x"},
      {two, 4352, "old", kOpen, Second(0x8005), result::kAuthentication, "old"},
      {two, 4352, "", openNew, Second(0x8006), result::kAuthentication, ""},
      {two, 4352, "old", kOpen, Second(0x8008), result::kBusy, "old"},
      {two, 4352, "old", kOpen, Second(0x8000), result::kNotDecodable, "old"},
      {two, 4353, "old", attachRaw, Second(0x1000), 0, "old"},
      {two, 4353, "old", attachRaw, Second(0x8000), result::kAuthentication, "old"},
  };
  for (const auto& example : cases) {
    SCOPED_TRACE(::testing::PrintToString(example.reply));
    ServicePeer peer({{example.request, example.reply}});
    std::string sessid = example.sessid;
    EXPECT_EQ(example.ops.OpenSession(peer.Link(), sessid, "12", example.code), example.result);
    EXPECT_EQ(sessid, example.sessidAfter);
    EXPECT_EQ(peer.Finish(), "");
  }
}

TEST(Session, TheFirstReplySettlesTheDialect) {
  const std::string granted = Second(0x8005, Wire("07 0001 02 A6 0001 's' FF"));
  const std::tuple<std::string, int, const ServiceOps*> cases[] = {
      {First(0x8006, "s"), result::kAuthentication, &FirstDialect()},
      {granted, 0, &SecondDialect()},
      {Second(0x8005, Wire("A6 0001 's' FF")), result::kAuthentication, &SecondDialect()},
  };
  for (const auto& [reply, result, ops] : cases) {
    FileService service;
    std::string sessid = "old";
    const auto negotiate = [&](const std::string& answer) {
      ServicePeer peer({{"", answer}});
      return service.NegotiateSession(peer.Link(), sessid, "12", 4352);
    };
    // None of these is a reply.
    EXPECT_EQ(negotiate(""), result::kConnection);
    EXPECT_EQ(negotiate(reply.substr(0, 9)), result::kConnection);
    EXPECT_EQ(negotiate(Wire("00000003 01 0009")), result::kNotDecodable);
    EXPECT_EQ(negotiate(reply), result);
    EXPECT_EQ(sessid, "s");
    // The dialect stays, whatever comes now.
    EXPECT_EQ(negotiate(granted), ops == &SecondDialect() ? 0 : result::kNoVersion);
    EXPECT_EQ(&service.Ops(), ops);
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
  const std::string shortNumber =
      Framed(Wire("10 0001 'x' 11 0004 00000001 12 0004 00000002 13 0004 5F000000 "
                  "14 0004 00010203 15 0001 04 16 0002 0008 FF"));
  const std::string end = Number(0);
  const struct {
    const char* name;
    std::string entries;
    int error;
    std::size_t count;
  } cases[] = {
      {"empty", end, 0, 0},
      {"two", dot + file + end, 0, 2},
      {"broken off", dot + file + file.substr(0, 20), result::kConnection, 0},
      {"without an end", dot + file, result::kConnection, 0},
      {"bad list", dot + Wire("00000003 110004") + file + end, result::kNotDecodable, 0},
      {"short number", dot + shortNumber + end, result::kNotDecodable, 0},
      {"longest", dot + Number(32764) + std::string(32764, '\0'), result::kNotDecodable, 0},
      {"too long", dot + Number(32765), result::kNotDecodable, 0},
  };
  for (const auto& [name, entries, error, count] : cases) {
    for (const bool second : {false, true}) {
      const std::string reply = second ? Second(4099, "200") : First(0x8000);
      ServicePeer peer({{Request(0x1003, "/d"), reply + entries}}, entries.size() < 300 ? 5 : 0);
      const ServiceOps& ops = second ? SecondDialect() : FirstDialect();
      const FolderListing listing = ops.ListFolder(peer.Link(), "/d");
      EXPECT_EQ(listing.error, error) << name;
      EXPECT_EQ(listing.entries.size(), count) << name;
      EXPECT_EQ(peer.Link().IsOpen(), error == 0) << name;
      if (count > 0) {
        EXPECT_EQ(listing.entries.front().type, kEntryFolder);
        const DirectoryEntry& last = listing.entries.back();
        EXPECT_EQ(std::tie(last.name, last.field17, last.field18, last.modificationTime, last.size,
                           last.field21, last.type),
                  std::tuple("caf\xC3\xA9", 1U, 2U, 0x5F000000U, 0x00010203U, 4U, kEntryFile));
      }
    }
  }
}

// Nobody's folder is that large.
TEST(Listing, ThatNeverEndsIsGivenUp) {
  const std::size_t most = kMostListingBytes / 30100;
  for (const std::size_t count : {most, most + 100}) {
    ServicePeer peer({{"", First(0x8000)},
                      {"", Entry(std::string(30000, 'n'), "0008"), count},
                      {"", Number(0)}});
    const FolderListing listing = FirstDialect().ListFolder(peer.Link(), "/");
    EXPECT_EQ(listing.error, count == most ? 0 : result::kConnection);
    EXPECT_EQ(listing.entries.size(), count == most ? most : 0);
  }
}

}  // namespace
}  // namespace updown
