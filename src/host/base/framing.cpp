// SPDX-License-Identifier: Apache-2.0
#include "src/host/base/framing.h"

#include "src/host/base/log.h"
#include "src/host/base/parent.h"

namespace {

constexpr uint32_t kCdmaFamily = 2;
constexpr uint8_t kGenericTypes = 3;

constexpr size_t kGenericErrorSize = 8;
constexpr uint32_t kGenericErrorMark = 0xFFFFFFFF;

constexpr size_t kUnsolFormat = 0;
constexpr size_t kUnsolHeaderSize = 4;
constexpr size_t kUnsolHeader = 8;
constexpr size_t kUnsolLength = 12;  // in both formats
constexpr size_t kUnsolOverhead = 28;

enum UnsolFormat : uint32_t { kCdmaFormat = 0, kGenericFormat = 1 };

Frame unsolicited(UnsolFormat format, uint32_t header_size, uint32_t id, uint32_t data_length) {
  Frame frame(size_t{data_length} + kUnsolOverhead);
  if (!frame) return frame;
  store_le32(frame.at(kUnsolFormat), format);
  store_le32(frame.at(kUnsolHeaderSize), header_size);
  store_le32(frame.at(kUnsolHeader), id);
  store_le32(frame.at(kUnsolLength), data_length);
  return frame;
}

void store_cdma_header(uint8_t* frame, uint32_t id, uint32_t status, uint32_t data_length) {
  store_le32(frame + kCdmaId, id);
  store_le32(frame + kCdmaLength, data_length);
  store_le32(frame + kCdmaStatus, status);
}

}  // namespace

uint32_t getOemHook(const uint8_t* buffer, size_t length, uint32_t* type) {
  if (buffer == nullptr || length < kGenericHeaderSize) {
    LOGE("getOemHook: NULL DATA or check size");
    return kUnclassified;
  }
  uint32_t id24 = load_be24(buffer + kGenericId);
  if (id24 == kCdmaFamily) {
    *type = kCdmaHook;
    return cdma_id(buffer);
  }
  if (buffer[0] < kGenericTypes) {
    *type = kGenericHook;
    return id24;
  }
  LOGE("getOemHook: UNABLE TO IDENTIFY OEM_HOOK REQUEST!");
  return kUnclassified;
}

int ParOemGen(const uint8_t* buffer, size_t length, OemGenHeader* header) {
  if (header == nullptr) {
    LOGE("Oem gen header null");
    return 0;
  }
  if (buffer == nullptr || length < kGenericHeaderSize) {
    LOGE("ParOemGen INVALID DATA LEN OR NULL POINTER");
    return 0;
  }
  *header = {buffer[0], load_be24(buffer + kGenericId), generic_length(buffer)};
  return 1;
}

int32_t generic_id_for_log(const uint8_t* request) {
  return static_cast<int32_t>(load_le32(request)) >> 8;
}

Frame cdma_reply(uint32_t id, uint32_t status, uint32_t data_length) {
  Frame frame(size_t{data_length} + kCdmaReplySize);
  if (frame) store_cdma_header(frame.at(0), id, status, data_length);
  return frame;
}

Frame generic_reply(const uint8_t* request, uint32_t data_length) {
  Frame frame(size_t{data_length} + kGenericHeaderSize);
  if (!frame) return frame;
  memcpy(frame.at(0), request, kGenericHeaderSize);
  store_le32(frame.at(kGenericLength), data_length);
  return frame;
}

Frame unsolicited_cdma(uint32_t id, uint32_t data_length) {
  return unsolicited(kCdmaFormat, kCdmaReplySize, id, data_length);
}

Frame unsolicited_generic(uint32_t id_bytes, uint32_t data_length) {
  return unsolicited(kGenericFormat, kGenericHeaderSize, id_bytes, data_length);
}

void send_cdma_status(uint32_t id, uint32_t status) {
  uint8_t reply[kCdmaReplySize] = {};
  store_cdma_header(reply, id, status, 0);
  writeToParent(reply, sizeof reply);
}

void send_generic_error(const uint8_t* request) {
  uint8_t reply[kGenericErrorSize];
  memcpy(reply, request, kGenericLength);
  store_le32(reply + kGenericLength, kGenericErrorMark);
  writeToParent(reply, sizeof reply);
}
