// SPDX-License-Identifier: Apache-2.0
// The words of a recording's lines.
#pragma once

namespace qorextctl {

constexpr int kRecordingVersion = 1;

constexpr const char* kHead = "recording";
constexpr const char* kFrame = "frame";
constexpr const char* kMessage = "message";
constexpr const char* kService = "service";
constexpr const char* kLog = "log";
constexpr const char* kExit = "exit";

}  // namespace qorextctl
