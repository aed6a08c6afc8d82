// SPDX-License-Identifier: Apache-2.0
// Live data of the EVDO (HDR) link.
#include "src/carrier/carrier_handler.h"
#include "src/carrier/engineering_text.h"
#include "src/host/base/log.h"

namespace {

constexpr size_t kSectorIds = 16;
constexpr size_t kRecordSize = 52;

// Field names are those of the log lines.
struct EvdoReply {
  uint32_t hdrChanNum;
  uint32_t uatiColorCode;
  uint32_t txUati;
  uint32_t pilotPn;
  uint32_t hdrRssi;
  uint32_t rxPwrRx0Dbm;
  uint32_t rxPwrRx1Dbm;
  uint32_t measPkts;
  uint32_t errPkts;
  uint32_t sessionState;
  uint32_t atState;
  uint32_t unused;
  uint32_t userCount;
  uint32_t hybridMode;
  uint32_t dropCount;  // always 0
  uint32_t macIndex;
  uint32_t sectorIds[kSectorIds];
  uint32_t pilotEnergy;
  uint32_t drcCover;
  uint32_t sinr;
  uint32_t anAuthStatus;
};
static_assert(sizeof(EvdoReply) == 144);
static_assert(offsetof(EvdoReply, userCount) == 48);
static_assert(offsetof(EvdoReply, sectorIds) == 64);
static_assert(offsetof(EvdoReply, pilotEnergy) == 128);

#define TO(field) offsetof(EvdoReply, field)

// Offsets in the reply, in the modem's record, and the width there.
constexpr EngineeringField kFields[] = {
    {TO(hdrChanNum),    0,  2, kZero},
    {TO(uatiColorCode), 2,  1, kZero},
    {TO(txUati),        4,  4, kZero},
    {TO(pilotPn),       8,  2, kZero},
 // A signed level that is extended with zeros: deliberate.
    {TO(hdrRssi),       10, 2, kZero},
    {TO(rxPwrRx0Dbm),   12, 4, kZero},
    {TO(rxPwrRx1Dbm),   16, 4, kZero},
    {TO(measPkts),      20, 2, kZero},
    {TO(errPkts),       22, 2, kZero},
    {TO(sessionState),  24, 1, kZero},
    {TO(atState),       25, 1, kZero},
    {TO(userCount),     26, 1, kZero},
    {TO(hybridMode),    27, 1, kZero},
    {TO(macIndex),      28, 1, kZero},
    {TO(pilotEnergy),   46, 2, kSign},
    {TO(drcCover),      48, 1, kZero},
    {TO(sinr),          49, 1, kZero},
    {TO(anAuthStatus),  50, 1, kZero},
};

#undef TO

constexpr size_t kSectorIdsAt = 29;

void log_reply(const EvdoReply& reply) {
  LOGE(
      "EVDO status1: hdrChanNum=%d,  uatiColorCode=%d,  txUati=0x%X,  pilotPn=%d,  hdrRssi=%d,  "
      "rxPwrRx0Dbm=%d  rxPwrRx1Dbm=%d,  measPkts=%d,  errPkts=%d,  sessionState=%d,",
      reply.hdrChanNum, reply.uatiColorCode, reply.txUati, reply.pilotPn, reply.hdrRssi,
      reply.rxPwrRx0Dbm, reply.rxPwrRx1Dbm, reply.measPkts, reply.errPkts, reply.sessionState);
  LOGE(
      "EVDO status2: atState=%d,  userCount=%d   dropCount=%d,  hybridMode=%d   macIndex=%d,  "
      "pilotEnergy=%d,  drcCover=%d   sinr=%d,  anAuthStatus=%d ",
      reply.atState, reply.userCount, reply.dropCount, reply.hybridMode, reply.macIndex,
      reply.pilotEnergy, reply.drcCover, reply.sinr, reply.anAuthStatus);
  for (size_t i = 0; i < kSectorIds; ++i) {
    LOGE("EVDO status3: sectorIds %d = %d", static_cast<int>(i), reply.sectorIds[i]);
  }
}

}  // namespace

uint32_t get_evdo_data(const uint8_t*, CarrierReply& reply) {
  LOGE("qorext_hook_sprint_get_evdo_data:  ENTER FUNCTION  %d ", 0);
  uint8_t record[kRecordSize];
  read_engineering_record(kEvdo, "qorext_hook_sprint_get_evdo_data()", record, sizeof record);

  EvdoReply data = {};
  unpack_fields(kFields, record, &data);
  for (size_t i = 0; i < kSectorIds; ++i) data.sectorIds[i] = record[kSectorIdsAt + i];
  log_reply(data);
  put_bytes(reply, &data, sizeof data);
  return kStatusSuccess;
}
