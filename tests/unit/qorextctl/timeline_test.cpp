// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/trace/trace.h"

#include <gmock/gmock.h>

#include <map>

#include "tools/qorextctl/trace/trace_events.h"

namespace qorextctl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

enum { kParent = 1, kMain, kCallback, kHob, kModem };  // thread ids

// Times are microseconds here.
Json at(int64_t time, Json event) {
  event["time"] = time * 1000;
  return event;
}
Json frame(int64_t time, const char* kind, const char* name) {
  return at(time, {{"type", "frame"}, {"kind", kind}, {"name", name}, {"id", "0x1"}});
}
Json message(int64_t time, const char* direction, const char* name, int transaction,
             const Json& fields = Json::object()) {
  return at(time, {{"type", "message"},
                   {"service", "qorext"},
                   {"client", 1},
                   {"direction", direction},
                   {"name", name},
                   {"transaction", transaction},
                   {"fields", fields}});
}
Json log(int64_t time, int thread, const std::string& text) {
  std::string head = "RIL-QOREXT E 11-21 10:00:00 70 " + std::to_string(thread) + " ";
  return at(time, {{"type", "log"}, {"line", head + text}});
}

std::vector<Json> events(const Json& trace, const char* phase, int thread) {
  std::vector<Json> found;
  for (const Json& event : trace["traceEvents"]) {
    if (event["ph"] == phase && event["tid"] == thread) found.push_back(event);
  }
  return found;
}

// "name begin+duration" of slices, "name begin" of other events.
std::vector<std::string> texts(const Json& trace, const char* phase, int thread) {
  std::vector<std::string> result;
  for (const Json& event : events(trace, phase, thread)) {
    std::string text = event["name"].get<std::string>() + " " + event["ts"].dump();
    result.push_back(event.contains("dur") ? text + "+" + event["dur"].dump() : text);
  }
  return result;
}

TEST(Timeline, HasFiveNamedTracks) {
  std::map<int, std::string> names;
  Json trace = timeline({});
  for (const Json& event : trace["traceEvents"]) {
    if (event["name"] == "thread_name") names[event["tid"]] = event["args"]["name"];
  }
  EXPECT_THAT(names, ElementsAre(Pair(kParent, "parent"), Pair(kMain, "main thread"),
                                 Pair(kCallback, "callback thread"), Pair(kHob, "HOB thread"),
                                 Pair(kModem, "modem")));
}

TEST(Timeline, ShowsARequestOnAllTracksThatServeIt) {
  Json trace = timeline({frame(100, "request", "nv-read"), log(110, 70, "Read 34 bytes from pipe"),
                         message(120, "request", "element_read", 1),
                         message(130, "response", "element_read", 1),
                         frame(150, "reply", "nv-read"), frame(400, "request", "pfp")});
  EXPECT_THAT(
      texts(trace, "X", kParent),
      ElementsAre("nv-read 100.0+70.0", "reply nv-read 150.0+20.0", "pfp, no reply 400.0+0.0"));
  EXPECT_THAT(texts(trace, "X", kMain),
              ElementsAre("nv-read 110.0+40.0", "qorext element_read 120.0+10.0"));
  EXPECT_THAT(texts(trace, "X", kModem), ElementsAre("qorext element_read 120.0+10.0"));
  EXPECT_THAT(texts(trace, "i", kMain), ElementsAre("Read 34 bytes from pipe 110.0"));
}

TEST(Timeline, DrawsAnArrowFromTheRequestToEachReply) {
  Json trace = timeline({frame(100, "request", "tune"), log(110, 70, "Read"),
                         frame(150, "reply", "tune"), frame(160, "reply", "tune")});
  EXPECT_THAT(texts(trace, "s", kParent), ElementsAre("tune 100.0", "tune 100.0"));
  EXPECT_THAT(texts(trace, "t", kMain), ElementsAre("tune 110.0", "tune 110.0"));
  EXPECT_THAT(texts(trace, "f", kParent), ElementsAre("tune 150.0", "tune 160.0"));
  auto starts = events(trace, "s", kParent);
  auto ends = events(trace, "f", kParent);
  EXPECT_EQ(starts[0]["id"], ends[0]["id"]);
  EXPECT_NE(starts[0]["id"], starts[1]["id"]);
  EXPECT_EQ(ends[0]["bp"], "e");
}

TEST(Timeline, LimitsAReplySliceToHalfTheTimeBeforeTheNextRequest) {
  Json trace = timeline({frame(100, "request", "a"), frame(110, "reply", "a"),
                         frame(114, "request", "b"), frame(120, "reply", "b")});
  EXPECT_THAT(texts(trace, "X", kParent),
              ElementsAre("a 100.0+12.0", "reply a 110.0+2.0", "b 114.0+6.0", "reply b 120.0+0.0"));
}

TEST(Timeline, DerivesThreadsFromTheLog) {
  Json trace = timeline({log(1, 70, "dhob_write: Sending ready"), log(2, 71, "Handling unsol msg"),
                         log(3, 72, "dhob_write: open"), log(9, 72, "dhob_write: done")});
  EXPECT_THAT(texts(trace, "i", kMain), ElementsAre("dhob_write: Sending ready 1.0"));
  EXPECT_THAT(texts(trace, "i", kCallback), ElementsAre("Handling unsol msg 2.0"));
  EXPECT_THAT(texts(trace, "i", kHob), ElementsAre("dhob_write: open 3.0", "dhob_write: done 9.0"));
}

TEST(Timeline, ShowsABlockSaveOnItsOwnThread) {
  Json trace = timeline({frame(1, "request", "tune"), log(3, 72, "dhob_write: open"),
                         message(5, "request", "hob", 1, {{"state", 1}}),
                         message(8, "response", "hob", 1), frame(9, "reply", "tune")});
  EXPECT_THAT(texts(trace, "X", kHob),
              ElementsAre("save the hand-off block 3.0+5.0", "qorext hob 5.0+3.0"));
  EXPECT_THAT(texts(trace, "X", kMain), ElementsAre("tune 1.0+8.0"));
}

TEST(Timeline, ShowsEventsBeforeTheFirstRequestAsStartUp) {
  Json trace = timeline({log(10, 70, "Starting"), message(20, "request", "element_read", 1),
                         message(30, "response", "element_read", 1), log(35, 71, "other"),
                         frame(100, "request", "tune")});
  EXPECT_THAT(texts(trace, "X", kMain),
              ElementsAre("start-up 10.0+20.0", "qorext element_read 20.0+10.0"));
}

TEST(Timeline, ShowsMessagesWithoutAnExchangeAsInstants) {
  Json trace =
      timeline({message(1, "indication", "pfp", 0), frame(2, "unsolicited", "pfp"),
                message(3, "response", "element_read", 7), message(4, "request", "element_read", 8),
                at(5, {{"type", "service"}, {"name", "nas"}, {"up", false}})});
  EXPECT_THAT(texts(trace, "i", kModem),
              ElementsAre("qorext pfp indication 1.0", "qorext element_read response, unasked 3.0",
                          "nas down 5.0"));
  EXPECT_THAT(texts(trace, "i", kParent), ElementsAre("unsolicited pfp 2.0"));
  EXPECT_THAT(texts(trace, "i", kMain),
              ElementsAre("qorext element_read request, not answered 4.0"));
}

TEST(Timeline, TreatsMembersOfTheWrongTypeAsMissing) {
  Json event = {{"type", "message"}, {"time", "soon"}, {"name", 7}, {"direction", "request"}};
  Json trace = timeline({event, Json{{"type", 1}}});
  EXPECT_THAT(texts(trace, "X", kMain), ElementsAre("start-up 0.0+0.0"));
  EXPECT_THAT(texts(trace, "X", kModem), IsEmpty());
}

TEST(TraceEvents, CutASliceAtTheEndOfTheEnclosingSlice) {
  TraceEvents made;
  made.slice(Track::modem, "late", 1000, 9000, {});
  made.slice(Track::modem, "outer", 0, 5000, {});
  made.slice(Track::modem, "next", 5000, 6000, {});
  made.slice(Track::main, "other", 0, 9000, {});
  EXPECT_THAT(texts(made.finish(), "X", kModem),
              ElementsAre("outer 0.0+5.0", "late 1.0+4.0", "next 5.0+1.0"));
}

}  // namespace
}  // namespace qorextctl
