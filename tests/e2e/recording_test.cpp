// SPDX-License-Identifier: Apache-2.0
// Recordings of real daemons and modems: recording, replay and timelines.

#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/handset.h"

namespace e2e {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using Json = nlohmann::ordered_json;

constexpr const char* kStoredRecordings[] = {"provisioning", "features", "trouble"};

std::string stored_recording(const std::string& name) {
  return std::string(QOREXT_RECORDINGS) + "/" + name + ".jsonl";
}

// Files in a folder of the test's own.
class Recordings : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return phone_.folder() + "/" + name; }

  CommandResult record(const std::string& options, const std::string& session) const {
    return run_tool(options + " record --output " + path("recording"), session);
  }

  static std::vector<Json> objects_of(const std::string& text) {
    std::vector<Json> objects;
    for (const std::string& line : lines_of(text)) objects.push_back(Json::parse(line));
    return objects;
  }

  void write(const std::vector<std::string>& lines) const {
    std::ofstream file(path("recording"));
    for (const std::string& line : lines) file << line << '\n';
  }

  // Writes a stored recording with one change in the first line that contains `in`. Returns the
  // line's number.
  size_t change(const std::string& name, const std::string& in, const std::string& from,
                const std::string& to) const {
    auto lines = lines_of(content_of(stored_recording(name)));
    size_t number = 0;
    while (number < lines.size() && lines[number].find(in) == std::string::npos) ++number;
    std::string& line = lines.at(number);
    line.replace(line.rfind(from), from.size(), to);
    write(lines);
    return number + 1;
  }

  // Returns the differences, then the summary.
  std::vector<Json> replayed(const std::string& options = "") const {
    return objects_of(run_tool("--json " + options + " replay " + path("recording")).output);
  }

  // Expects exactly one difference and returns it.
  Json only_difference(const std::string& options = "") const {
    auto objects = replayed(options);
    EXPECT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects.at(1)["differences"], 1);
    return objects.at(0);
  }

  PhoneRoot phone_;
};

TEST_F(Recordings, StoredOnesReplayWithoutADifference) {
  for (const char* name : kStoredRecordings) {
    CommandResult result = run_tool("replay " + stored_recording(name));
    EXPECT_EQ(result.status, 0) << name << '\n' << result.output << result.errors;
    EXPECT_THAT(lines_of(result.output), ElementsAre(EndsWith("compared, 0 differences")));
  }
}

TEST_F(Recordings, ReportADifferentFieldOfAReply) {
  size_t line =
      change("features", R"("kind":"reply","name":"get-bsr-timer")", "2C010000", "2B010000");
  CommandResult result = run_tool("replay " + path("recording"));
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(lines_of(result.output),
              ElementsAre(fmt::format("line {}: reply get-bsr-timer: fields.timer: expected 299, "
                                      "got 300",
                                      line),
                          EndsWith("compared, 1 difference")));
  EXPECT_EQ(only_difference().dump(),
            fmt::format(R"({{"type":"difference","line":{},"what":"reply get-bsr-timer",)"
                        R"("field":"fields.timer","expected":299,"got":300}})",
                        line));
}

TEST_F(Recordings, ReportADifferentFieldOfAMessage) {
  change("trouble", R"("direction":"request","name":"set_bsr_timer")", "0104004D000000",
         "0104004E000000");
  Json difference = only_difference();
  EXPECT_EQ(difference["what"], "qorext set_bsr_timer request");
  EXPECT_EQ(difference["field"], "fields.timer");
  EXPECT_EQ(difference["expected"], 78);
  EXPECT_EQ(difference["got"], 77);
}

TEST_F(Recordings, MaskPersonalValuesInTheirDifferences) {
  const std::string mdn = "393133353535303134323030303030";
  change("provisioning", R"("kind":"reply","name":"get-nam")", mdn, "38" + mdn.substr(2));
  Json hidden = only_difference();
  EXPECT_EQ(hidden["field"], "fields.mdn");
  EXPECT_EQ(hidden["expected"], "***");
  EXPECT_EQ(hidden["got"], "***");
  Json shown = only_difference("--show-personal");
  EXPECT_EQ(shown["expected"], "813555014200000");
  EXPECT_EQ(shown["got"], "913555014200000");
}

TEST_F(Recordings, ReportAnUnexpectedMessage) {
  auto lines = lines_of(content_of(stored_recording("features")));
  std::erase_if(lines, [](const std::string& line) {
    return line.find(R"("name":"tuner")") != std::string::npos;
  });
  write(lines);
  auto objects = replayed();
  ASSERT_GE(objects.size(), 3U);
  EXPECT_EQ(objects[0]["line"], nullptr);
  EXPECT_EQ(objects[0]["what"], "qorext tuner request");
  EXPECT_EQ(objects[0]["expected"], nullptr);
  EXPECT_EQ(objects[0]["got"]["fields"]["data"], "0a0b0c");
  // The replay refuses it, so the daemon refuses the parent's request.
  EXPECT_EQ(objects[1]["what"], "reply tune");
}

TEST_F(Recordings, ReportAMissingMessage) {
  std::vector<std::string> lines;
  Json request;
  for (const std::string& line : lines_of(content_of(stored_recording("features")))) {
    lines.push_back(line);
    Json object = Json::parse(line);
    if (object["name"] != "tuner") continue;
    if (object["direction"] == "request") request = object;
    if (object["direction"] != "response") continue;
    request["time"] = object["time"];
    lines.push_back(request.dump());
  }
  write(lines);
  EXPECT_THAT(lines_of(run_tool("replay " + path("recording")).output),
              ElementsAre(EndsWith(": qorext tuner request: is missing"),
                          EndsWith("compared, 1 difference")));
}

TEST_F(Recordings, ReportTheEndOfTheDaemon) {
  CommandResult result =
      run_tool("--daemon-program /bin/true replay " + stored_recording("features"));
  EXPECT_EQ(result.status, 1);
  auto lines = lines_of(result.output);
  ASSERT_EQ(lines.size(), 2U) << result.output;
  EXPECT_EQ(lines[0],
            "line 2: qorext element_read request: daemon: expected runs, got exit status 0");
}

TEST_F(Recordings, AreRecordedReplayedAndTraced) {
  CommandResult made = record("--show-personal",
                              "nv-read rde-id=28\n"
                              "modem indicate pfp rat=3\n"
                              "wait-unsol\n"
                              "set-profile profile=4\n"
                              "modem hob-save\n");
  EXPECT_EQ(made.status, 0) << made.errors;
  EXPECT_THAT(lines_of(made.output), Contains(HasSubstr("events, with all personal data")));
  CommandResult played = run_tool("replay " + path("recording"));
  EXPECT_EQ(played.status, 0) << played.output << played.errors;

  CommandResult shown = run_tool("trace " + path("recording") + " --output " + path("trace"));
  EXPECT_EQ(shown.status, 0) << shown.errors;
  EXPECT_EQ(shown.output, "");
  Json trace = Json::parse(content_of(path("trace")));
  EXPECT_EQ(trace, Json::parse(run_tool("trace " + path("recording")).output));
}

// The timeline of a recording in the trace event format.
class Trace : public Recordings {
 protected:
  void SetUp() override {
    record("", "nv-read rde-id=28\nmodem indicate pfp\nwait-unsol\nmodem hob-save\ntune data=0A\n");
    trace_ = Json::parse(run_tool("trace " + path("recording")).output)["traceEvents"];
    for (const Json& event : trace_) {
      if (event["name"] == "thread_name") threads_[event["args"]["name"]] = event["tid"];
    }
  }

  std::vector<Json> events(const std::string& phase, const std::string& thread) {
    std::vector<Json> found;
    for (const Json& event : trace_) {
      if (event["ph"] == phase && event["tid"] == threads_[thread]) found.push_back(event);
    }
    return found;
  }
  std::vector<std::string> names(const std::string& phase, const std::string& thread) {
    std::vector<std::string> found;
    for (const Json& event : events(phase, thread)) found.push_back(event["name"]);
    return found;
  }
  Json slice(const std::string& thread, const std::string& name) {
    for (const Json& event : events("X", thread)) {
      if (event["name"] == name) return event;
    }
    ADD_FAILURE() << "no slice " << name;
    return {{"ts", 0}, {"dur", 0}};
  }
  static bool lies_in(const Json& inner, const Json& outer) {
    double begin = inner["ts"];
    double end = begin + inner.value("dur", 0.0);
    return begin >= outer["ts"].get<double>() &&
           end <= outer["ts"].get<double>() + outer["dur"].get<double>() + 1e-6;
  }

  Json trace_;
  std::map<std::string, int> threads_;
};

TEST_F(Trace, HasFiveTracksAndEventsInChronologicalOrder) {
  EXPECT_EQ(threads_.size(), 5U);
  double last = 0;
  for (const Json& event : trace_) {
    ASSERT_TRUE(event.contains("pid") && event.contains("tid"));
    if (event["ph"] == "M") continue;
    EXPECT_GE(event["ts"], last);
    last = event["ts"];
  }
}

TEST_F(Trace, ContainsRequestsWithTheirExchanges) {
  EXPECT_THAT(names("X", "parent"), ElementsAre("nv-read", "reply nv-read", "tune", "reply tune"));
  Json request = slice("main thread", "nv-read");
  EXPECT_TRUE(lies_in(request, slice("parent", "nv-read")));
  int inside = 0;
  for (const Json& exchange : events("X", "main thread")) {
    bool reads = exchange["name"] == "qorext element_read" && lies_in(exchange, request);
    if (reads && exchange["args"]["response"]["data"] == "06") ++inside;
  }
  EXPECT_EQ(inside, 1);
  EXPECT_THAT(names("X", "modem"), Contains("qorext tuner"));
}

TEST_F(Trace, ShowsTheLogOnTheThreadsThatWroteIt) {
  EXPECT_THAT(names("i", "main thread"), Contains("Read 34 bytes from pipe"));
  EXPECT_THAT(names("i", "callback thread"), Contains("Handling unsol msg 10"));
  EXPECT_THAT(names("i", "HOB thread"), Contains("dhob_write: Save RF to HOB successful"));
  EXPECT_THAT(names("X", "HOB thread"), ElementsAre("save the hand-off block", "qorext hob"));
  EXPECT_THAT(names("i", "modem"), Contains("qorext pfp indication"));
  EXPECT_THAT(names("i", "parent"), ElementsAre("unsolicited pfp"));
}

TEST_F(Trace, LinksRequestsAndRepliesWithArrows) {
  auto starts = events("s", "parent");
  auto steps = events("t", "main thread");
  auto ends = events("f", "parent");
  ASSERT_EQ(starts.size(), 2U);
  ASSERT_EQ(steps.size(), 2U);
  ASSERT_EQ(ends.size(), 2U);
  EXPECT_TRUE(lies_in(starts[0], slice("parent", "nv-read")));
  EXPECT_TRUE(lies_in(steps[0], slice("main thread", "nv-read")));
  EXPECT_TRUE(lies_in(ends[0], slice("parent", "reply nv-read")));
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(starts[i]["id"], steps[i]["id"]);
    EXPECT_EQ(starts[i]["id"], ends[i]["id"]);
  }
}

TEST_F(Trace, IsDrawnAsAPicture) {
  run_tool("trace " + path("recording") + " --output " + path("trace"));
  CommandResult drawn =
      run_command("python3 " QOREXT_DRAW_TRACE " " + path("trace") + " " + path("picture"));
  EXPECT_EQ(drawn.status, 0) << drawn.errors;
  std::string picture = content_of(path("picture"));
  EXPECT_THAT(picture, HasSubstr("<svg"));
  for (const char* shown : {"callback thread", "<title>tune</title>", "<title>qorext tuner</title>",
                            "<title>unsolicited pfp</title>", "marker-end"}) {
    EXPECT_THAT(picture, HasSubstr(shown));
  }
}

// Codes and numbers of a subscriber, as text and as bytes on the wire.
constexpr const char* kPersonal[] = {"271828", "323731383238", "9135550199",
                                     "39313335353530313939"};

TEST_F(Recordings, MaskPersonalDataByDefault) {
  const std::string session =
      "set-nam spc=000000 new-spc=271828 mdn=9135550199 min=9135550199\nget-nam\n";
  EXPECT_EQ(record("", session).status, 0);
  std::string masked = content_of(path("recording"));
  EXPECT_EQ(record("--show-personal", session).status, 0);
  std::string whole = content_of(path("recording"));
  std::string trace = run_tool("trace " + path("recording")).output;
  std::string whole_trace = run_tool("--show-personal trace " + path("recording")).output;
  for (const char* personal : kPersonal) {
    EXPECT_THAT(masked, Not(HasSubstr(personal)));
    EXPECT_THAT(whole, HasSubstr(personal));
    EXPECT_THAT(trace, Not(HasSubstr(personal)));
  }
  EXPECT_THAT(whole_trace, HasSubstr("9135550199"));
}

// Raw bytes, whose meaning the tool cannot know.
TEST_F(Recordings, MaskPossiblyPersonalBytes) {
  const std::string session =
      "utils type=9 data=323731383238\nraw 990000020600000000000000000000000000323731383238\n"
      "expect-failure cdma id=0x02000098 data=323731383238\nraw 3237313832383237\n"
      "expect-failure generic id=0x50599 data=323731383238\n";
  record("", session);
  std::string masked = content_of(path("recording"));
  EXPECT_THAT(masked, HasSubstr(R"("id":"0x02000099")"));
  EXPECT_THAT(masked, HasSubstr(R"("name":"utils")"));
  for (const char* secret : {"323731", "271828"}) EXPECT_THAT(masked, Not(HasSubstr(secret)));
  EXPECT_THAT(run_tool("trace " + path("recording")).output, Not(HasSubstr("323731")));
  record("--show-personal", session);
  EXPECT_THAT(run_tool("trace " + path("recording")).output, Not(HasSubstr("323731")));
  EXPECT_THAT(run_tool("--show-personal trace " + path("recording")).output,
              HasSubstr("323731383238"));
}

TEST_F(Recordings, MaskPossiblyPersonalBytesInTheirDifferences) {
  record("--show-personal", "utils type=9 data=323731383238\n");
  auto lines = lines_of(content_of(path("recording")));
  for (std::string& line : lines) {
    size_t place = line.find(R"("direction":"request")") != std::string::npos
                       ? line.rfind("323731383238")
                       : std::string::npos;
    if (place != std::string::npos) line.replace(place, 2, "33");
  }
  write(lines);
  Json hidden = only_difference();
  EXPECT_EQ(hidden["expected"], "***");
  EXPECT_EQ(hidden["got"], "***");
  EXPECT_EQ(only_difference("--show-personal")["got"], "323731383238");
}

TEST_F(Recordings, AreReadableOnlyByTheirOwnerIfTheyContainPersonalData) {
  namespace fs = std::filesystem;
  constexpr fs::perms kOwners = fs::perms::owner_read | fs::perms::owner_write;
  std::ofstream(path("recording")) << "readable by all";
  std::ofstream(path("trace")) << "readable by all";
  fs::permissions(path("recording"), fs::perms(0644));
  fs::permissions(path("trace"), fs::perms(0644));
  EXPECT_EQ(record("", "get-ddtm\n").status, 0);
  EXPECT_EQ(fs::status(path("recording")).permissions(), fs::perms(0644));
  EXPECT_EQ(record("--show-personal", "get-ddtm\n").status, 0);
  EXPECT_EQ(fs::status(path("recording")).permissions(), kOwners);
  EXPECT_EQ(
      run_tool("--show-personal trace --output " + path("trace") + " " + path("recording")).status,
      0);
  EXPECT_EQ(fs::status(path("trace")).permissions(), kOwners);
  EXPECT_EQ(
      run_tool("--show-personal trace --output " + path("new") + " " + path("recording")).status,
      0);
  EXPECT_EQ(fs::status(path("new")).permissions(), kOwners);
}

TEST_F(Recordings, AreNotReplayedIfValuesAreMasked) {
  record("", "nv-read rde-id=28\nget-nam\n");
  CommandResult result = run_tool("replay " + path("recording"));
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(lines_of(result.errors), ElementsAre(AllOf(HasSubstr("personal data is masked"),
                                                         HasSubstr("--show-personal"))));
}

TEST_F(Recordings, AreReplayedIfNoValueHadToBeMasked) {
  record("", "nv-read rde-id=28\n");
  EXPECT_THAT(content_of(path("recording")), HasSubstr(R"("masked":true)"));
  EXPECT_EQ(run_tool("replay " + path("recording")).status, 0);
}

TEST_F(Recordings, OfACorruptFileAreRefusedWithOneLine) {
  std::ofstream(path("recording")) << R"({"type":"recording","version":9})" << '\n';
  for (const char* verb : {"replay ", "trace "}) {
    CommandResult result = run_tool(verb + path("recording"));
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(lines_of(result.errors),
                ElementsAre(EndsWith("recording: line 1: version 9 is not supported, expected 1")));
  }
}

TEST_F(Recordings, AreNotMadeIfTheFileOrTheModemIsNotAccessible) {
  CommandResult unwritable = run_tool("record --output /nonexistent/recording");
  EXPECT_EQ(unwritable.status, 2);
  EXPECT_THAT(unwritable.errors, HasSubstr("cannot write '/nonexistent/recording'"));
  CommandResult unwatched = record("--modem unix:" + path("modem"), "");
  EXPECT_EQ(unwatched.status, 2);
  EXPECT_THAT(unwatched.errors, HasSubstr("--control PATH is missing"));
}

TEST(RecordingOf, ARunningModemContainsItsMessages) {
  Handset handset{Handset::off};
  handset.start_modem();
  std::string path = handset.phone().folder() + "/recording";
  CommandResult made = run_tool("--modem " + handset.phone().modem() + " --control " +
                                    handset.phone().control_socket() + " record --output " + path,
                                "tune data=0A0B");
  EXPECT_EQ(made.status, 0) << made.errors;
  EXPECT_THAT(content_of(path), HasSubstr(R"("direction":"request","name":"tuner")"));
  EXPECT_EQ(run_tool("replay " + path).status, 0);
}

}  // namespace
}  // namespace e2e
