// SPDX-License-Identifier: Apache-2.0
// The Android log, under the one tag of this process. Ordinary lines are errors by priority, so
// that they stay in the logs of user builds.
#pragma once

#include <android/log.h>

#define QOREXT_LOG(priority, ...) \
  static_cast<void>(__android_log_print(priority, "RIL-QOREXT", __VA_ARGS__))

#define LOGE(...) QOREXT_LOG(ANDROID_LOG_ERROR, __VA_ARGS__)
#define LOGD(...) QOREXT_LOG(ANDROID_LOG_DEBUG, __VA_ARGS__)
