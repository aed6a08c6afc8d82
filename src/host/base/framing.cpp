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

// The two header formats of an unsolicited message.
struct UnsolForm {
  uint32_t format;
  uint32_t header_size;
  size_t data_at;
};
constexpr UnsolForm kCdmaForm = {0, kCdmaReplySize, kUnsolCdmaData};
constexpr UnsolForm kGenericForm = {1, kGenericHeaderSize, kUnsolGenericData};

// Copies the data into its frame; false when there was no memory for the frame.
bool fill(Frame& frame, size_t at, const void* data, uint32_t size) {
  if (!frame) return false;
  if (size != 0) memcpy(frame.at(at), data, size);
  return true;
}

bool send_unsolicited(const UnsolForm& form, uint32_t id, const void* data, uint32_t size) {
  Frame frame(size_t{size} + kUnsolOverhead);
  if (!fill(frame, form.data_at, data, size)) return false;
  store_le32(frame.at(kUnsolFormat), form.format);
  store_le32(frame.at(kUnsolHeaderSize), form.header_size);
  store_le32(frame.at(kUnsolHeader), id);
  store_le32(frame.at(kUnsolLength), size);
  writeUnsolToParent(frame.data(), frame.size());
  return true;
}

void store_cdma_header(uint8_t* frame, uint32_t id, uint32_t status, uint32_t data_length) {
  store_le32(frame + kCdmaId, id);
  store_le32(frame + kCdmaLength, data_length);
  store_le32(frame + kCdmaStatus, status);
}

}  // namespace

// A CDMA id is little-endian on the pipe: 0x02000016 is 16 00 00 02. Its bytes 1 to 3, read as a
// big-endian number, are 2.
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

bool send_cdma_reply(uint32_t id, uint32_t status, const void* data, uint32_t size) {
  Frame frame = cdma_reply(id, status, size);
  if (!fill(frame, kCdmaPayload, data, size)) return false;
  writeToParent(frame.data(), frame.size());
  return true;
}

bool send_generic_reply(const uint8_t* request, const void* data, uint32_t size) {
  Frame frame(size_t{size} + kGenericHeaderSize);
  if (!fill(frame, kGenericPayload, data, size)) return false;
  memcpy(frame.at(0), request, kGenericHeaderSize);
  store_le32(frame.at(kGenericLength), size);
  writeToParent(frame.data(), frame.size());
  return true;
}

bool send_unsolicited_cdma(uint32_t id, const void* data, uint32_t size) {
  return send_unsolicited(kCdmaForm, id, data, size);
}

bool send_unsolicited_generic(uint32_t id_bytes, const void* data, uint32_t size) {
  return send_unsolicited(kGenericForm, id_bytes, data, size);
}

// Built on the stack: a refusal must be possible without memory for a frame.
void send_cdma_status(uint32_t id, uint32_t status) {
  uint8_t reply[kCdmaReplySize] = {};
  store_cdma_header(reply, id, status, 0);
  writeToParent(reply, sizeof reply);
}

uint8_t send_generic_status(const uint8_t* request, uint32_t status) {
  auto byte = static_cast<uint8_t>(status);
  send_generic_reply(request, &byte, sizeof byte);
  return byte;
}

void send_generic_error(const uint8_t* request) {
  uint8_t reply[kGenericErrorSize];
  memcpy(reply, request, kGenericLength);
  store_le32(reply + kGenericLength, kGenericErrorMark);
  writeToParent(reply, sizeof reply);
}
