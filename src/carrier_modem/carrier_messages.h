// SPDX-License-Identifier: Apache-2.0
// The vendor service's carrier messages. Their responses follow two conventions, depending on the
// message: a status word (0 is success), or an outcome word (1 is success) followed by an error
// code. The names of values whose meaning the service does not publish are neutral.
#pragma once

#include <stddef.h>
#include <stdint.h>

constexpr unsigned int kGetEngineeringInfo = 0x10;
constexpr unsigned int kFactoryReset = 0x11;
constexpr unsigned int kSetRoamingListSegment = 0x100;
constexpr unsigned int kReadBand = 0x101;
constexpr unsigned int kWriteBand = 0x102;
constexpr unsigned int kSwitchProfile = 0x103;
constexpr unsigned int kGetTotOrder = 0x104;
constexpr unsigned int kUpdateTotOrder = 0x105;
constexpr unsigned int kGetActiveEhrpdApn = 0x106;
constexpr unsigned int kGetLteServiceState = 0x107;
constexpr unsigned int kGetBsrTimer = 0x108;
constexpr unsigned int kSetBsrTimer = 0x109;
constexpr unsigned int kGetLteChannel = 0x10A;

constexpr uint32_t kStatusOk = 0;   // of a status word
constexpr uint32_t kOutcomeOk = 1;  // of an outcome word

struct WordMessage {
  uint32_t value;
};
static_assert(sizeof(WordMessage) == 4);

struct ByteMessage {
  uint8_t value;
};
static_assert(sizeof(ByteMessage) == 1);

struct OutcomeResponse {
  uint32_t outcome;
  uint32_t error;
};
static_assert(sizeof(OutcomeResponse) == 8);

// One segment of the preferred roaming list.
constexpr uint32_t kRoamingListSize = 16384;

struct RoamingListRequest {
  uint32_t length;
  uint8_t data[kRoamingListSize];
};
static_assert(sizeof(RoamingListRequest) == 16388);

// Hexadecimal text of a binary record; see engineering_text.h.
constexpr uint32_t kEngineeringTextSize = 1000;

struct EngineeringInfoResponse {
  uint32_t status;
  uint32_t unused;
  uint32_t length;
  uint8_t data[kEngineeringTextSize];
};
static_assert(sizeof(EngineeringInfoResponse) == 1012);
static_assert(offsetof(EngineeringInfoResponse, data) == 12);

struct BsrTimerResponse {
  uint32_t outcome;
  uint32_t error;
  uint32_t timer;
};
static_assert(sizeof(BsrTimerResponse) == 12);

struct ReadBandResponse {
  uint32_t status;
  uint32_t band;
};
static_assert(sizeof(ReadBandResponse) == 8);

// `selector` is the band class: 0 for BC10, 1 for BC14.
struct WriteBandRequest {
  uint32_t selector;
  uint32_t band;
};
static_assert(sizeof(WriteBandRequest) == 8);

struct LteServiceStateResponse {
  uint32_t outcome;
  uint32_t error;
  uint8_t state;
};
static_assert(sizeof(LteServiceStateResponse) == 12);

// Each value follows its validity byte.
struct LteChannelResponse {
  uint32_t outcome;
  uint32_t error;
  uint8_t second_valid;
  uint16_t second_value;
  uint8_t first_valid;
  uint16_t first_value;
  uint8_t third_valid;
  uint8_t third_value;
  uint8_t fourth_valid;
  uint8_t fourth_value;
};
static_assert(sizeof(LteChannelResponse) == 20);
static_assert(offsetof(LteChannelResponse, second_value) == 10);
static_assert(offsetof(LteChannelResponse, first_value) == 14);
static_assert(offsetof(LteChannelResponse, third_value) == 17);
static_assert(offsetof(LteChannelResponse, fourth_value) == 19);

constexpr uint32_t kTotEntries = 15;

// Reported to the parent as received, with any result and also after a failed exchange.
struct TotOrderResponse {
  uint32_t result;
  uint32_t error;
  uint8_t valid;
  uint8_t padding[3];
  uint16_t count;
  uint8_t more_padding[6];
  uint32_t entries[kTotEntries];
};
static_assert(sizeof(TotOrderResponse) == 80);
static_assert(offsetof(TotOrderResponse, count) == 12);
static_assert(offsetof(TotOrderResponse, entries) == 20);

struct TotOrderRequest {
  uint16_t count;
  uint8_t padding[6];
  uint32_t entries[kTotEntries];
};
static_assert(sizeof(TotOrderRequest) == 68);
static_assert(offsetof(TotOrderRequest, entries) == 8);

constexpr uint32_t kApnEntries = 8;
constexpr size_t kApnNameSize = 103;
constexpr size_t kApnRemainingSize = 16;

struct ApnEntry {
  uint32_t first_value;
  uint32_t second_value;
  uint8_t unused[12];
  uint8_t name[kApnNameSize];
  uint8_t padding[5];
  uint8_t remaining_bytes[kApnRemainingSize];
};
static_assert(sizeof(ApnEntry) == 144);
static_assert(offsetof(ApnEntry, name) == 20);
static_assert(offsetof(ApnEntry, remaining_bytes) == 128);

// Reported to the parent with any result, as long as the exchange succeeded. Entries are reported
// only when `count_high`, the high byte of the count, is not zero.
struct ActiveApnResponse {
  uint32_t result;
  uint32_t error;
  uint8_t count;
  uint8_t count_high;
  uint8_t padding[6];
  ApnEntry entries[kApnEntries];
};
static_assert(sizeof(ActiveApnResponse) == 1168);
static_assert(offsetof(ActiveApnResponse, count) == 8);
static_assert(offsetof(ActiveApnResponse, entries) == 16);
