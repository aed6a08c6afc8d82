// SPDX-License-Identifier: Apache-2.0
// The part of --help after the options.
#pragma once

namespace qorextctl {

constexpr const char* kExitStatuses = R"(exit status:
  0  success
  1  refused by the modem or the daemon: a reply has a failure status; or a frame is malformed, or a
     replay has found differences
  2  wrong usage: nothing was sent, nothing was started
  3  transport: no reply in time, the daemon ended, or the modem is not reachable
  4  the tool itself failed: its output could not be written
)";

constexpr const char* kExamples = R"(examples:
  qorextctl list                                      every request
  qorextctl list set-nam                              one request's arguments
  qorextctl request nv-read rde-id=28                 with a private modem
  qorextctl request get-nam --json > nam.json         edit it, then:
  qorextctl request set-nam spc=000000 json=nam.json
  qorextctl raw 07000002 0000000000000000 000000000000  raw bytes
  qorextctl decode 07000002 0000000000000000 000000000000
  adb logcat -d | qorextctl decode                    a log with its hex dumps decoded
  printf 'get-nam\nmodem indicate notify\nwait-unsol\n' | qorextctl session
  qorextctl shell                                     at a terminal, with completion
  qorextctl load --count 10000 --rate 500             latencies
  echo tune data=0A0B | qorextctl record --output tune.jsonl   records all frames and messages
  qorextctl replay tune.jsonl                         replays them and shows differences
  qorextctl trace tune.jsonl --output tune.trace.json a timeline
  qorextctl --modem unix:/run/m.sock --control /run/c.sock session
  qorextctl --control /run/c.sock modem nv 28 0A
  qorextctl --phone-root phone phone prepare          creates a phone root
  qorextctl --phone-root phone phone show             logs, properties, DropBox

)";

constexpr const char* kRequestExamples = R"(examples:
  qorextctl request nv-read rde-id=28
  qorextctl request nv-write rde-id=7000 data=C0FFEE --json
  qorextctl request set-nam spc=000000 json=nam.json sid=4139
  qorextctl request generic id=0x50506 data=AABB
)";

constexpr const char* kRawExamples = R"(examples:
  qorextctl raw 07000002 00000000 00000000 000000000000
  qorextctl raw 01:05:00:19:00:00:00:00
)";

constexpr const char* kSessionExamples = R"(
examples:
  printf 'set-bsr-timer timer=77\nget-bsr-timer\n' | qorextctl session
  qorextctl --json --log session < requests.txt
)";

constexpr const char* kRecordExamples = R"(The lines are those of a session.

examples:
  printf 'tune data=0A0B\nget-bsr-timer\n' | qorextctl record --output tune.jsonl
  qorextctl record --show-personal --output nam.jsonl < nam.session
  qorextctl --modem qrtr --control /run/c.sock record --output tune.jsonl < tune.session
)";

constexpr const char* kReplayExamples = R"(examples:
  qorextctl replay nam.jsonl
  qorextctl --daemon-program build/new/bin/qorext_client replay nam.jsonl --json
)";

constexpr const char* kTraceExamples = R"(examples:
  qorextctl trace nam.jsonl --output nam.trace.json    open it in https://ui.perfetto.dev
  qorextctl trace nam.jsonl | jq '.traceEvents | length'
)";

constexpr const char* kShellKeys = R"(keys:
  Tab                                     completes names, arguments and values, or lists them
  Up, Down, Ctrl-R                        earlier lines, also of earlier runs
  Ctrl-C                                  clears the line, or ends the current wait
  Ctrl-D                                  ends the daemon and the shell

)";

constexpr const char* kShellExamples = R"(
examples:
  qorextctl shell
  qorextctl --log --modem unix:/run/m.sock --control /run/c.sock shell
)";

constexpr const char* kLoadExamples = R"(examples:
  qorextctl load --count 10000 --rate 500 --mix nv-read:3,get-nam:1,unknown:2
  qorextctl load --count 10000 --mix-file mix.txt --seed 7 --json
)";

constexpr const char* kListExamples = R"(examples:
  qorextctl list
  qorextctl list set-nam
  qorextctl --json list | jq -r .name
)";

constexpr const char* kDecodeExamples = R"(examples:
  qorextctl decode 1600000210000000 00000000000000000000 1C000000 00000000 00000000 00000000
  qorextctl decode --as reply 0105001900000000
  qorextctl decode --input logcat.txt
  adb logcat -v threadtime | qorextctl decode --json
  qorextctl decode --show-personal < logcat.txt
)";

constexpr const char* kModemExamples = R"(examples:
  qorextctl --control /run/c.sock modem state
  qorextctl --control /run/c.sock modem nv 28 0A
  qorextctl --control /run/c.sock modem indicate notify --count 100 --interval-ms 10
)";

constexpr const char* kPhoneExamples = R"(examples:
  qorextctl --phone-root phone phone prepare --powerup-reason 0x00020000
  qorextctl --phone-root phone phone show --json
)";

}  // namespace qorextctl
