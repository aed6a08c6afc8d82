// SPDX-License-Identifier: Apache-2.0
// The Android log, with the library's tag.
#pragma once

#include <android/log.h>

#define LOGE(...) static_cast<void>(__android_log_print(ANDROID_LOG_ERROR, "qmi_cci", __VA_ARGS__))
