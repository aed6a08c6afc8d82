// SPDX-License-Identifier: Apache-2.0
// Live data of the CDMA 1x link.
#include "src/carrier/carrier_handler.h"
#include "src/carrier/engineering_text.h"
#include "src/host/base/log.h"

namespace {

constexpr size_t kActiveSet = 6;
constexpr size_t kNeighborSet = 40;
constexpr size_t kRecordSize = 164;

// Field names are those of the log lines.
struct CallProcessingReply {
  uint32_t fer;
  uint32_t bestActivePilot;
  uint32_t bestActiveStrength;
  uint32_t bestNeighborPilot;
  uint32_t bestNeighborStrength;
  uint32_t sid;
  uint32_t nid;
  uint32_t channel;
  uint32_t serviceOption;
  uint32_t droppedCallCounter;
  uint32_t sCallCounter;
  uint32_t txPower;
  uint32_t band;
  uint32_t activePilotCount;
  uint32_t neighborPilotCount;
  uint32_t candPilotCount;
  uint32_t cpState;
  uint32_t lastCallIndicator;
  uint32_t lnaStatus;
  uint32_t rssi;
  uint32_t unused;
  uint32_t isPRevAbove5;
  uint32_t PRevInUse;
  uint32_t bid;
  uint32_t activeSetPn[kActiveSet];
  uint32_t activeSetStrength[kActiveSet];
  uint32_t neighborSetPn[kNeighborSet];
  uint32_t bsLat;
  uint32_t bsLong;
  uint32_t rate_redu;
};
static_assert(sizeof(CallProcessingReply) == 316);
static_assert(offsetof(CallProcessingReply, PRevInUse) == 88);
static_assert(offsetof(CallProcessingReply, activeSetStrength) == 120);
static_assert(offsetof(CallProcessingReply, bsLat) == 304);

#define TO(field) offsetof(CallProcessingReply, field)

// Offsets in the reply, in the modem's record, and the width there.
constexpr EngineeringField kFields[] = {
    {TO(fer),                  0,   4, kZero},
    {TO(bestActivePilot),      16,  2, kZero},
    {TO(bestActiveStrength),   18,  2, kZero},
    {TO(bestNeighborPilot),    20,  2, kZero},
    {TO(bestNeighborStrength), 22,  2, kZero},
    {TO(sid),                  24,  2, kZero},
    {TO(nid),                  26,  2, kZero},
    {TO(channel),              28,  2, kZero},
    {TO(serviceOption),        30,  2, kZero},
    {TO(droppedCallCounter),   158, 2, kZero},
    {TO(sCallCounter),         156, 2, kZero},
    {TO(txPower),              38,  2, kSign},
    {TO(band),                 33,  1, kZero},
    {TO(activePilotCount),     12,  1, kZero},
    {TO(neighborPilotCount),   13,  1, kZero},
    {TO(candPilotCount),       14,  1, kZero},
    {TO(cpState),              36,  2, kZero},
    {TO(lastCallIndicator),    160, 2, kZero},
    {TO(lnaStatus),            34,  1, kZero},
    {TO(rssi),                 40,  2, kZero},
    {TO(PRevInUse),            32,  1, kZero},
    {TO(bid),                  42,  2, kZero},
    {TO(bsLat),                44,  4, kZero},
    {TO(bsLong),               48,  4, kZero},
    {TO(rate_redu),            162, 2, kZero},
};

#undef TO

constexpr size_t kActiveSetPnAt = 52;
constexpr size_t kActiveSetStrengthAt = 64;
constexpr size_t kNeighborSetPnAt = 76;
constexpr uint32_t kLastPRevBefore = 5;

// Values of 16 bits become 32 bits.
void unpack_set(const uint8_t* from, uint32_t* to, size_t count) {
  for (size_t i = 0; i < count; ++i) to[i] = load_le16(from + 2 * i);
}

void log_reply(const CallProcessingReply& reply) {
  LOGE(
      "  CP status1: fer=%d,   activePilotCount=%d,   neighborPilotCount=%d,   candPilotCount=%d, "
      "  bestActivePilot=%d,   bestActiveStrength=%d,   bestNeighborPilot=%d,   "
      "bestNeighborStrength=%d, ",
      reply.fer, reply.activePilotCount, reply.neighborPilotCount, reply.candPilotCount,
      reply.bestActivePilot, reply.bestActiveStrength, reply.bestNeighborPilot,
      reply.bestNeighborStrength);
  LOGE(
      "CP status2: sid=%d,   nid=%d,   channel=%d,   serviceOption=%d,   droppedCallCounter=%d,   "
      "lastCallIndicator=%d,   sCallCounter=%d,   PRevInUse=%d, ",
      reply.sid, reply.nid, reply.channel, reply.serviceOption, reply.droppedCallCounter,
      reply.lastCallIndicator, reply.sCallCounter, reply.PRevInUse);
  // The second bsLat is the longitude; log filters know the label.
  LOGE(
      "CP status3: band=%d,   lnaStatus=%d,   cpState=%d,   txPower=%d,   rssi=%d   bid=%d   "
      "bsLat=%d   bsLat=%d ",
      reply.band, reply.lnaStatus, reply.cpState, reply.txPower, reply.rssi, reply.bid, reply.bsLat,
      reply.bsLong);
  for (size_t i = 0; i < kActiveSet; ++i) {
    LOGE("CP status4: activeSetPn %d = %d", static_cast<int>(i), reply.activeSetPn[i]);
    LOGE("CP status4: activeSetStrength %d = %d", static_cast<int>(i), reply.activeSetStrength[i]);
  }
  for (size_t i = 0; i < kNeighborSet; ++i) {
    LOGE("CP status5: neighborSetPn %d = %d", static_cast<int>(i), reply.neighborSetPn[i]);
  }
  LOGE("CP status6: rate_redu=%d ", reply.rate_redu);
}

}  // namespace

uint32_t get_call_processing_data(const uint8_t*, CarrierReply& reply) {
  LOGE("qorext_hook_sprint_get_call_processing_data:  ENTER FUNCTION  %d ", 0);
  uint8_t record[kRecordSize];
  read_engineering_record(kCallProcessing, "qorext_hook_sprint_get_call_processing_data()", record,
                          sizeof record);

  CallProcessingReply data = {};
  unpack_fields(kFields, record, &data);
  unpack_set(record + kActiveSetPnAt, data.activeSetPn, kActiveSet);
  unpack_set(record + kActiveSetStrengthAt, data.activeSetStrength, kActiveSet);
  unpack_set(record + kNeighborSetPnAt, data.neighborSetPn, kNeighborSet);
  data.isPRevAbove5 = data.PRevInUse > kLastPRevBefore;
  log_reply(data);
  put_bytes(reply, &data, sizeof data);
  return kStatusSuccess;
}
