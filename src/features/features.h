// SPDX-License-Identifier: Apache-2.0
// Modem features that the parent asks for, and those that report by themselves.
#pragma once

#include <stdint.h>

#include "qmi_client.h"

// Requests. Each handler takes the whole request buffer, writes its own reply and returns the
// result of the modem exchange (0 is success), which the dispatch ignores. The argument of the
// table row is not used.

// 0x5001E: passes a one-byte filter on; the reply is a status byte.
int handleSysInfoFilter(const uint8_t* request, uint32_t argument);

// 0x50505: asks for the radio state at the end of a call; the reply is a status byte and 16 bytes.
int handleCallEndRadioState(const uint8_t* request, uint32_t argument);

// 0x50019: the reply is the modem's data as received, or the status byte 5.
int handleSilentReboot(const uint8_t* request, uint32_t argument);

// 0x50020 and 0x50029: send the modem a mode (0, or the payload's first byte) and a text; the reply
// is a status byte.
int handleSignalCoverage(const uint8_t* request, uint32_t argument);
int handleSignalCoverageWithMode(const uint8_t* request, uint32_t argument);

// 0x60001: the reply is the modem's 568-byte record without a header, all zero after a failure.
int handleDataPlmn(const uint8_t* request, uint32_t argument);

// 0xA0006: the short operator name of an MCC and MNC in UTF-8, or the status byte 5.
int handleOperatorName(const uint8_t* request, uint32_t argument);

// 0x5002A: passes up to 24 bytes on; the reply is the modem's data, or the status byte 5.
int qorext_hook_set_antenna_tuning(const uint8_t* request, uint32_t argument);

// CDMA-hook 0x0200001E: sends the payload as a utility request of any type; the reply carries the
// modem's data and always status 0.
int handleUtilsRequest(const uint8_t* request, uint32_t argument);

// Indications. Both handlers run on the client library's callback thread, take an encoded
// indication of `length` bytes and return 0.

// Vendor indication 0x0F: by its type an unsolicited message, a system property or a KPI packet.
int utilsIndHndlr(qmi_client_type client, unsigned int indication_id, void* buffer,
                  unsigned int length, void* callback_data);

// Vendor indication 0x10C: a 32-byte coverage report, forwarded unchanged.
int sigcovIndHndlr(qmi_client_type client, unsigned int indication_id, void* buffer,
                   unsigned int length, void* callback_data);
