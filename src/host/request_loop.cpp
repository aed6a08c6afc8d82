// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <string.h>
#include <sys/select.h>
#include <unistd.h>

#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/host.h"

namespace {

// A descriptor outside an fd_set would be written past its end; it fails like a closed one.
int select_readable(int fd, fd_set* readable) {
  if (fd < 0 || fd >= FD_SETSIZE) {
    errno = EBADF;
    return -1;
  }
  FD_ZERO(readable);
  FD_SET(fd, readable);
  return select(fd + 1, readable, nullptr, nullptr, nullptr);
}

bool wait_for_data(int fd) {
  fd_set readable;
  int ready = select_readable(fd, &readable);
  if (ready < 0) {
    if (errno == EINTR) {
      LOGE(" Got EINTR, ignoring");
    } else {
      LOGE("Select failed with errno = %d.", errno);
    }
    return false;
  }
  if (ready == 0) {
    LOGE("select returned zero");
    return false;
  }
  if (!FD_ISSET(fd, &readable)) {
    LOGE("select succeed, fd failed, should not happen");
    return false;
  }
  return true;
}

// Returns the number of bytes of the next request, 0 at the end of the pipe, or -1 after logging a
// failure. The buffer is zeroed first: handlers follow the lengths in a request as they come.
ssize_t read_request(int fd, uint8_t (&request)[kRequestSize]) {
  if (!wait_for_data(fd)) return -1;
  memset(request, 0, sizeof request);
  ssize_t size = read(fd, request, sizeof request);
  if (size < 0) LOGE("Dispatcher: read failed with errno %d", errno);
  return size;
}

void serve_generic(const uint8_t* request) {
  LOGE("Received Generic Hook request 0x%x", generic_id_for_log(request));
  OemGenHeader header = {};
  ParOemGen(request, kGenericHeaderSize, &header);
  LOGD("handle generic request, msgID 0x%x. msgLen %d, msgType %d", header.msgId, header.msgLen,
       header.msgType);
  dispatch_generic(request, header.msgId);
}

void serve_cdma(uint8_t* request, uint32_t id) {
  LOGE("Received CDMA Hook request 0x%x", id);
  dispatch_cdma(request, id);
}

// A request shorter than a header, or of neither family, gets the 8-byte error reply.
void serve(uint8_t* request, size_t size) {
  uint32_t type = kCdmaHook;
  uint32_t id = getOemHook(request, size, &type);
  LOGE("msg Id is 0x%x, type is %d. ", id, type);

  if (id == kUnclassified) {
    LOGE("Wrong msg Id");
    send_generic_error(request);
  } else if (type == kGenericHook) {
    serve_generic(request);
  } else if (type == kCdmaHook) {
    serve_cdma(request, id);
  } else {
    LOGE("Wrong header type");
  }
}

}  // namespace

void serve_requests(int read_fd) {
  static uint8_t request[kRequestSize];
  for (;;) {
    LOGE("Child process waiting for data");
    ssize_t size = read_request(read_fd, request);
    if (size < 0) {
      LOGE("Read failed");
      continue;
    }
    LOGE("Read %d bytes from pipe", static_cast<int>(size));
    if (size == 0) break;
    serve(request, static_cast<size_t>(size));
  }
  LOGE("Buffer length is zero..Exiting QOREXT");
}
